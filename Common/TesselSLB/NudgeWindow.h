// Runs in the client. Keeps a window active and visible while the injector works in the window's
// process.
#pragma once

#include <windows.h>

// Posts a mouse move to the window, and shrinks and restores its top-level window by one pixel. A
// minimised top-level window is restored first. If `handleMaximised` is true, a maximised one is
// restored and maximised again instead of being shrunk.
void NudgeWindow(HWND window, bool handleMaximised);
