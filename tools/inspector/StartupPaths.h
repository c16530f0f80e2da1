// Part of tessel. Where the module looks for the files that start a broker.
#pragma once

#include <string>

// Returns the path of Silverlight's launcher, whether it exists or not. Returns an empty text if
// the system does not know the folder of 32-bit programs.
std::wstring LauncherPath();

bool FileExists(const std::wstring& path);
