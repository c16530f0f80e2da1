// Part of tessel. Finds the title of a process's window.
#pragma once

#include <windows.h>

#include <string>

// Returns the title of the first visible window of the process that has a title. Returns an empty
// text if there is none.
std::wstring TitleOfProcess(DWORD process);
