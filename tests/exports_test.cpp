// Tests the exported names, the imports, the hardening flags and the version of both DLLs.
#include <windows.h>
// winver.h needs windows.h before it
#include <winver.h>

#include <gmock/gmock.h>

#include <regex>
#include <set>

#include "support/ChildProcess.h"
#include "support/Text.h"

namespace {

// A DLL. The tests read its headers and tables. They load the DLL without running any of its code.
struct Dll {
  const wchar_t* name;
  const char* list;     // a file that contains the names of the DLL's exports
  const char* pattern;  // the regular expression that finds these names in the file
};

class Exports : public testing::TestWithParam<Dll> {
 protected:
  void SetUp() override { ASSERT_NE(module_, nullptr); }
  void TearDown() override { ::FreeLibrary(module_); }

  template <class T>
  const T* At(DWORD offset) const {
    return reinterpret_cast<const T*>(reinterpret_cast<const BYTE*>(module_) + offset);
  }
  const IMAGE_NT_HEADERS64& Headers() const {
    return *At<IMAGE_NT_HEADERS64>(At<IMAGE_DOS_HEADER>(0)->e_lfanew);
  }
  DWORD Directory(int index) const {
    return Headers().OptionalHeader.DataDirectory[index].VirtualAddress;
  }

  const std::wstring path_ = TestFolder() + GetParam().name;
  const HMODULE module_ = ::LoadLibraryExW(path_.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
};

// exports.txt repeats the names of TesselSLB.def on purpose. Clients find the functions by these
// names, so a build that changes, adds or loses a name must fail.
TEST_P(Exports, AreTheListAndNothingElse) {
  const std::string list = FileText(GetParam().list);
  const std::regex name(GetParam().pattern);
  std::set<std::string> expected;
  for (std::sregex_iterator next(list.begin(), list.end(), name), end; next != end; ++next) {
    expected.insert(next->str(1));
  }
  std::set<std::string> names;
  const auto& table = *At<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
  for (DWORD i = 0; i < table.NumberOfNames; ++i) {
    names.insert(At<char>(At<DWORD>(table.AddressOfNames)[i]));
  }
  const auto without = [](const auto& all, const auto& others) {
    std::vector<std::string> rest;
    std::ranges::set_difference(all, others, std::back_inserter(rest));
    return rest;
  };
  EXPECT_THAT(without(expected, names), testing::IsEmpty()) << "missing in the DLL";
  EXPECT_THAT(without(names, expected), testing::IsEmpty()) << "missing in the list";
  EXPECT_EQ(table.NumberOfFunctions, table.NumberOfNames) << "exported only by ordinal";
}

TEST_P(Exports, NeedsOnlyWindowsAndTheModule) {
  std::vector<std::string> names;
  const auto* entry = At<IMAGE_IMPORT_DESCRIPTOR>(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
  for (; entry->Name != 0; ++entry) names.push_back(At<char>(entry->Name));
  EXPECT_FALSE(names.empty());
  EXPECT_THAT(names, testing::IsSubsetOf({"ADVAPI32.dll", "dbghelp.dll", "KERNEL32.dll",
                                          "msvcrt.dll", "OLEAUT32.dll", "SHELL32.dll",
                                          "SHLWAPI.dll", "USER32.dll", "TesselSLB_x64.dll"}));
  EXPECT_EQ(Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT), 0u);
}

TEST_P(Exports, IsHardened) {
  constexpr WORD kWanted = IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA |
                           IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE |
                           IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
  EXPECT_EQ(Headers().OptionalHeader.DllCharacteristics & kWanted, kWanted);
  EXPECT_NE(Directory(IMAGE_DIRECTORY_ENTRY_BASERELOC), 0u) << "no relocations";
  constexpr DWORD kBoth = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
  const auto* section = IMAGE_FIRST_SECTION(&Headers());
  for (WORD i = 0; i < Headers().FileHeader.NumberOfSections; ++i) {
    EXPECT_NE(section[i].Characteristics & kBoth, kBoth) << "section " << i;
  }
}

TEST_P(Exports, CarriesItsVersion) {
  std::vector<char> resource(::GetFileVersionInfoSizeW(path_.c_str(), nullptr));
  ASSERT_TRUE(::GetFileVersionInfoW(path_.c_str(), 0, static_cast<DWORD>(resource.size()),
                                    resource.data()));
  void* found = nullptr;
  UINT length = 0;
  for (const std::wstring name : {L"FileVersion", L"ProductVersion"}) {
    const std::wstring key = L"\\StringFileInfo\\040904b0\\" + name;
    ASSERT_TRUE(::VerQueryValueW(resource.data(), key.c_str(), &found, &length));
    EXPECT_STREQ(static_cast<const wchar_t*>(found), L"1, 0, 0, 0");
  }
  ASSERT_TRUE(::VerQueryValueW(resource.data(), L"\\", &found, &length));
  EXPECT_EQ(static_cast<const VS_FIXEDFILEINFO*>(found)->dwProductVersionMS, 0x10000u);
}

INSTANTIATE_TEST_SUITE_P(
    Dlls, Exports,
    testing::Values(Dll{L"TesselSLB_x64.dll", TESSEL_SOURCE "/tests/exports.txt", "(\\S+)"},
                    Dll{L"TesselSLB_c.dll", TESSEL_SOURCE "/clients/c/tesselslb.h",
                        "TESSEL_C_API \\w+ (\\w+)\\("}));

}  // namespace
