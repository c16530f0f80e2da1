// tessel. Finds the window that shows the content, by its handle or its title.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

// The message says why no window, or more than one, was found, and how to solve it.
class WindowError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// `text` is a handle ("0x...") or the exact title of a top-level window. Throws WindowError.
HWND FindTargetWindow(const std::string& text);

std::wstring TitleOf(HWND window);
