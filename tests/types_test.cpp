// Tests the types of the public headers, and the table of result codes.
#include <gmock/gmock.h>

#include <map>
#include <regex>

#include "StringW.h"
#include "TesselSilverlight.h"
#include "clients/c/tesselslb.h"
#include "support/Text.h"
#include "tessel/ResultCodes.h"

namespace {

wchar_t*& Units(CStringW& text) { return reinterpret_cast<wchar_t*&>(text); }
auto* HeaderOf(CStringW& text) { return reinterpret_cast<ATL::StringHeader*>(Units(text)) - 1; }

TEST(StringW, SharesUnlockedTextsAndCopiesLockedOnes) {
  CStringW text(L"abc"), copy(text), target(L"old"), old(target);
  target = text;
  EXPECT_TRUE(Units(copy) == Units(text) && Units(target) == Units(text));
  EXPECT_EQ(HeaderOf(old)->references, 1) << "the assignment released the other reference";
  old = old.GetString();
  EXPECT_STREQ(old, L"old");
  HeaderOf(text)->references = -1;
  CStringW unlocked(text);
  EXPECT_NE(Units(unlocked), Units(text));
  HeaderOf(text)->references = 3;
}

TEST(StringW, TreatsANullPointerAsEmpty) {
  wchar_t* zeroed = nullptr;
  auto& text = reinterpret_cast<CStringW&>(zeroed);
  CStringW copy(text), target(L"old");
  target = text;
  text.Empty();
  EXPECT_TRUE(copy.IsEmpty() && target.IsEmpty() && zeroed == nullptr);
}

TEST(StringW, HasAManagerThatOthersCanUse) {
  ATL::StringManager& manager = *ATL::HeapStringManager::Instance();
  for (const int units : {-1, INT_MAX}) EXPECT_EQ(manager.Allocate(units, 2), nullptr) << units;
  ATL::StringHeader* const header = manager.Reallocate(manager.Allocate(2, 2), 5000, 2);
  EXPECT_EQ(header->capacity, 5000);
  manager.Free(header);
  const long references = manager.GetNilString()->references;
  EXPECT_EQ(manager.GetNilString()->references, references + 1);
}

TEST(ComBstr, OwnsItsText) {
  CComBSTR text, null;
  text.Attach(::SysAllocStringLen(L"a\0b", 3));
  CComBSTR copy(text);
  EXPECT_NE(copy.m_str, text.m_str);
  copy = *std::addressof(copy);
  text.Attach(text.m_str);
  EXPECT_NE(CComBSTR(L"new").m_str, text.m_str) << "attaching its own text does not free it";
  EXPECT_EQ(std::wstring(copy, copy.Length()), std::wstring(L"a\0b", 3));
  CComBSTR moved(std::move(text));
  EXPECT_TRUE(!text && !(copy = null));
  EXPECT_NE(CComBSTR(L"").m_str, nullptr);
}

TEST(HeapAllocator, RefusesCountsThatOverflow) {
  for (std::size_t count : {SIZE_MAX / 4 + 2, SIZE_MAX / 4}) {
    EXPECT_THROW((void)HeapAllocator<long>().allocate(count), std::bad_alloc) << count;
  }
}

TEST(ResultCodes, AreExactlyThoseOfThePublicHeader) {
  std::map<std::string, int> declared = {{"E_NOTIMPL", E_NOTIMPL},
                                         {"TESSEL_OUT_OF_MEMORY", TESSEL_OUT_OF_MEMORY},
                                         {"TESSEL_BAD_HANDLE", TESSEL_BAD_HANDLE},
                                         {"TESSEL_TIMED_OUT", TESSEL_TIMED_OUT},
                                         {"BROKER_UNKNOWN_COMMAND", wire::kUnknownCommand},
                                         {"BROKER_UNKNOWN_ELEMENT", wire::kUnknownElement},
                                         {"BROKER_NOT_SUPPORTED", wire::kNotSupported},
                                         {"BROKER_MALFORMED_REQUEST", wire::kMalformedRequest},
                                         {"BROKER_NOT_RECORDED", wire::kNotRecorded}};
  const std::string header = FileText(TESSEL_SOURCE "/Common/include/TesselCodes.h");
  const std::regex code("\\n\\s*(SL_\\w+)(?: = (-?\\d+))?");
  for (std::sregex_iterator next(header.begin() + header.find("enum SLResult"), header.end(), code);
       next != std::sregex_iterator(); ++next) {
    declared[next->str(1)] = std::stoi(next->str(2));
  }
  std::map<std::string, int> described;
  for (const auto& result : tessel::kResultCodes) described.emplace(result.name, result.number);
  EXPECT_EQ(described, declared);
  EXPECT_EQ(described.size(), std::size(tessel::kResultCodes));
}

}  // namespace
