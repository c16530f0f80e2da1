#include "tools/inspector/StartupPaths.h"

#include <windows.h>

#include <shlobj.h>

#include "wire/StartupFiles.h"

std::wstring LauncherPath() {
  wchar_t folder[MAX_PATH] = {};
  if (FAILED(::SHGetFolderPathW(nullptr /*window*/, CSIDL_PROGRAM_FILESX86, nullptr /*token*/,
                                SHGFP_TYPE_CURRENT, folder))) {
    return {};
  }
  return std::wstring(folder) + L'\\' + wire::kLauncherInProgramFiles;
}

bool FileExists(const std::wstring& path) {
  return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}
