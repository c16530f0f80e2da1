// Client process. Starts a helper program without a visible window.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "internal/SafeObject.h"

struct HiddenProcess {
  SafeHandle process;
  SafeHandle thread;
  DWORD id;
};

// `directory`: the program's current directory; null takes the caller's.
std::optional<HiddenProcess> StartHidden(const std::wstring& program, std::wstring commandLine,
                                         const wchar_t* directory);
