#include "tools/shared/ModulePath.h"

namespace tools {

std::wstring PathOfModule(HMODULE module) {
  std::wstring path(32768, L'\0');  // no path is longer
  path.resize(::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

std::wstring PathBesideProgram() {
  const std::wstring program = PathOfModule(nullptr);
  return program.substr(0, program.rfind(L'\\') + 1) + kModuleName;
}

}  // namespace tools
