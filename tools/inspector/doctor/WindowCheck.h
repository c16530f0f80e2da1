// Part of tessel. Finds the window that --window names, and describes it and its process.
#pragma once

#include <windows.h>

#include <string>

#include "tools/inspector/doctor/Step.h"

struct WindowFinding {
  DWORD process = 0;  // 0 if there is no such window, or more than one
  Step step;
};

// `handleOrTitle` is the handle (0x...) of any window, or the exact title of a top-level window.
WindowFinding CheckWindow(const std::string& handleOrTitle);

// Returns a text that lists the first visible top-level windows of the process.
std::string WindowsText(DWORD process);
