// Client process. Keeps a window active and visible while the injector works in its process.
#pragma once

#include <windows.h>

void NudgeWindow(HWND window, bool handleMaximised);
