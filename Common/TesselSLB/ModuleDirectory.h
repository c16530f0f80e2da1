// Runs in the client and in the broker. The folder that contains TesselSLB_x64.dll (the module),
// and the paths of files in this folder.
#pragma once

#include <windows.h>

#include <string>

HINSTANCE GetModuleInstance();

// Returns the module's folder with a backslash at the end. Looks the folder up once per process.
// Any thread may call this function.
const std::wstring& GetModuleDirectory();

// Returns the path of a file in the module's folder. Throws ATL's exception if the path does not
// fit into MAX_PATH characters.
std::wstring PathBesideModule(const wchar_t* file);
