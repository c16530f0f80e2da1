// tessel. The window that shows the content, by handle or by title.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

// Says why there is no one such window, and the cure.
class WindowError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// `text` is a handle ("0x...") or the exact title of one top-level window. Throws WindowError.
HWND FindTargetWindow(const std::string& text);

std::wstring TitleOf(HWND window);
