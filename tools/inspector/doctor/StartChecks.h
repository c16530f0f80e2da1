// Part of tessel. Checks the files and the lock that a call needs to load the module and to start a
// broker. Starts nothing.
#pragma once

#include <filesystem>

#include "tools/inspector/doctor/Step.h"

// The step is broken if the file is missing or has no version.
Step CheckModule(const std::filesystem::path& module);

// The first three steps are broken if their file is missing. The last one is broken if another
// client holds the lock. The package and the injector must be in the module's folder.
Step CheckLauncher();
Step CheckPackage(const std::filesystem::path& module);
Step CheckInjector(const std::filesystem::path& module);
Step CheckInjectionLock();
