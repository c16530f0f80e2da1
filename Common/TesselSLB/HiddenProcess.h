// Runs in the client. Starts a helper program without a visible window.
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

// Returns nothing if the program cannot be started. `directory` is the current directory of the new
// process. Null means the caller's current directory.
std::optional<HiddenProcess> StartHidden(const std::wstring& program, std::wstring commandLine,
                                         const wchar_t* directory);
