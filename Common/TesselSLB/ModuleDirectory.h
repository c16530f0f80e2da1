// Both processes. Where the module lies, and the files beside it.
#pragma once

#include <windows.h>

#include <string>

HINSTANCE GetModuleInstance();

// Ends in a backslash. Found once, for the life of the process; callable from any thread.
const std::wstring& GetModuleDirectory();

// The path of a file in that folder. Throws ATL's exception when it does not fit MAX_PATH.
std::wstring PathBesideModule(const wchar_t* file);
