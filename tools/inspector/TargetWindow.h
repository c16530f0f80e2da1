// tessel. The window that shows the content, by handle or by title.
#pragma once

#include <windows.h>

#include <string>

// `text` is a handle ("0x...") or the exact title of one top-level window. Throws InspectorError.
HWND FindTargetWindow(const std::string& text);
