// Part of tessel. The visible top-level windows of this desktop, and their processes.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct ListedWindow {
  HWND window;
  DWORD process;
  std::string title;  // in UTF-8
};

// These functions return the windows in their Z order, beginning with the one in front.
std::vector<ListedWindow> VisibleWindows();
std::vector<ListedWindow> VisibleWindowsOf(DWORD process);

// Returns 0 if there is no such window.
DWORD ProcessOfWindow(HWND window);

// Returns the title of the first visible window of the process that has a title. Returns an empty
// text if there is none.
std::wstring TitleOfProcess(DWORD process);

// Returns the file name of the process's program. Returns an empty text if the system does not tell
// it, for example because the process belongs to another user.
std::string ImageNameOf(DWORD process);

// Returns "; similar titles: ..." with at most five titles of visible windows. Returns an empty
// text if no title is similar.
std::string SimilarTitles(const std::string& title);
