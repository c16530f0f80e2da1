// Part of tessel and SceneBroker. Finds the file of a loaded DLL or of the program, and the place
// of TesselSLB_x64.dll beside the program.
#pragma once

#include <windows.h>

#include <string>

namespace tools {

inline constexpr wchar_t kModuleName[] = L"TesselSLB_x64.dll";

// Returns the path of a loaded module's file. Null stands for this program.
std::wstring PathOfModule(HMODULE module);

// Returns the path of TesselSLB_x64.dll in the folder of this program, whether it exists or not.
std::wstring PathBesideProgram();

}  // namespace tools
