// Runs in the client. Keeps a window active and visible while the injector works in the window's
// process.
#pragma once

#include <windows.h>

// Posts a mouse move to the window. Makes the top-level window that contains `window` one pixel
// smaller, and then as large as before. Restores a minimised top-level window first. If
// `handleMaximised` is true, restores a maximised top-level window and maximises it again, instead
// of changing its size.
void NudgeWindow(HWND window, bool handleMaximised);
