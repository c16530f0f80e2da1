// Part of tessel. The visible top-level windows of this desktop.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct ListedWindow {
  HWND window;
  DWORD process;
  std::string title;  // in UTF-8
};

// Returns the windows from the top down.
std::vector<ListedWindow> VisibleWindows();

// Returns the file name of the process's program. Returns an empty text if the system does not tell
// it, for example because the process belongs to another user.
std::string ImageNameOf(DWORD process);

// Returns "; similar titles: ..." with at most five titles of visible windows. Returns an empty
// text if no title is similar.
std::string SimilarTitles(const std::string& title);
