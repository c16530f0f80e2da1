// Part of tessel. Loads the module, TesselSLB_x64.dll, before its first use. The commands that need
// no module then also work where it is missing.
#pragma once

#include <optional>
#include <string>

// Loads the module if it is not loaded yet, and returns its path. Throws InspectorError, which
// names the file and the folders, if it cannot be loaded.
std::wstring LoadModule();

// Returns the version in the resources of a file, for example "1.2.3.0", or nothing if the file has
// none.
std::optional<std::string> VersionOf(const std::wstring& path);

// Returns the text of --version: the versions of tessel and of the module.
std::string VersionText();
