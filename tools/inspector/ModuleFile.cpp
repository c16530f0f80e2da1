#include "tools/inspector/ModuleFile.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <vector>

#include "generated/ProductVersion.h"
#include "tools/inspector/InspectorError.h"
#include "tools/shared/ModulePath.h"

namespace {

std::string Dotted(const std::array<int, 4>& numbers) {
  std::string text;
  for (const int number : numbers) text += (text.empty() ? "" : ".") + std::to_string(number);
  return text;
}

InspectorError NotLoaded(DWORD error) {
  const std::string name = tessel::Narrow(tools::kModuleName);
  const std::wstring program = tools::PathOfModule(nullptr);
  const std::string folder = tessel::Narrow(program.substr(0, program.rfind(L'\\')));
  const std::string reason = error == ERROR_MOD_NOT_FOUND
                                 ? "there is no such file"
                                 : "the system refuses it (error " + std::to_string(error) + ")";
  const std::string meaning = "cannot load " + name + ": " + reason;
  const std::string cure = "put it beside tessel.exe";
  return {ExitCode::kFailed,
          meaning + "; " + cure + "\n  looked in: " + folder +
              ", the system's folders, and the folders of PATH",
          Failure{.meaning = meaning, .cure = cure + ", into " + folder}};
}

}  // namespace

std::wstring LoadModule() {
  const HMODULE module = ::LoadLibraryW(tools::kModuleName);  // never unloaded
  if (module == nullptr) throw NotLoaded(::GetLastError());
  return tools::PathOfModule(module);
}

std::optional<std::string> VersionOf(const std::wstring& path) {
  DWORD ignored = 0;
  std::vector<std::byte> resource(::GetFileVersionInfoSizeW(path.c_str(), &ignored));
  VS_FIXEDFILEINFO* info = nullptr;
  UINT size = 0;
  if (!::GetFileVersionInfoW(path.c_str(), 0 /*ignored*/, static_cast<DWORD>(resource.size()),
                             resource.data()) ||
      !::VerQueryValueW(resource.data(), L"\\", reinterpret_cast<void**>(&info), &size)) {
    return std::nullopt;
  }
  return Dotted({HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
                 HIWORD(info->dwFileVersionLS), LOWORD(info->dwFileVersionLS)});
}

std::string VersionText() {
  const std::string tool = "tessel " + Dotted({TESSEL_PRODUCT_VERSION_NUMBERS}) + '\n';
  try {
    const std::wstring module = LoadModule();
    return tool + tessel::Narrow(tools::kModuleName) + ' ' +
           VersionOf(module).value_or("of unknown version") + " (" + tessel::Narrow(module) + ')';
  } catch (const InspectorError& error) {
    return tool + error.failure.meaning;
  }
}
