#include "TesselSLB/ModuleDirectory.h"

#include <shlwapi.h>

#include <iterator>

#include "AtlTypes.h"

// The linker defines this symbol. Its address is the start of the module, which is the module's
// handle.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace {

std::wstring FindModuleDirectory() {
  wchar_t path[MAX_PATH] = {};
  const DWORD length = ::GetModuleFileNameW(GetModuleInstance(), path, MAX_PATH);
  std::wstring directory(path, length);
  const std::size_t backslash = directory.rfind(L'\\');
  if (backslash != std::wstring::npos) directory.resize(backslash + 1);
  return directory;
}

}  // namespace

HINSTANCE GetModuleInstance() { return reinterpret_cast<HINSTANCE>(&__ImageBase); }

const std::wstring& GetModuleDirectory() {
  static const std::wstring directory = FindModuleDirectory();
  return directory;
}

std::wstring PathBesideModule(const wchar_t* file) {
  wchar_t path[MAX_PATH] = {};
  const std::wstring& directory = GetModuleDirectory();
  if (directory.size() >= std::size(path)) ATL::AtlThrow(E_INVALIDARG);
  directory.copy(path, directory.size());
  if (!::PathAppendW(path, file)) ATL::AtlThrow(E_FAIL);
  return path;
}
