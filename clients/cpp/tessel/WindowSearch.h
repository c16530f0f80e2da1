// Runs in the client. Finds the window that shows the content.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

namespace tessel {

// Returns the title of a window of any process.
inline std::wstring WindowTitle(HWND window) {
  std::wstring title(static_cast<std::size_t>(::GetWindowTextLengthW(window)) + 1, L'\0');
  title.resize(static_cast<std::size_t>(
      ::GetWindowTextW(window, title.data(), static_cast<int>(title.size()))));
  return title;
}

// Returns the top-level windows with exactly this title.
inline std::vector<HWND> WindowsWithTitle(std::wstring_view title) {
  struct Query {
    std::wstring_view title;
    std::vector<HWND> found;
  } query = {title, {}};
  ::EnumWindows(
      [](HWND window, LPARAM parameter) -> BOOL {
        auto& [wanted, found] = *reinterpret_cast<Query*>(parameter);
        if (WindowTitle(window) == wanted) found.push_back(window);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&query));
  return query.found;
}

}  // namespace tessel
