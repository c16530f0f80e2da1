// Part of tessel. Starts the command that `tessel log` runs.
#pragma once

#include <string>
#include <vector>

#include "tools/shared/Handle.h"

// Starts the program `arguments[0]`, which is looked up as in a console, with the console and the
// standard handles of this process. Throws InspectorError if it cannot be started.
tools::Handle StartCommand(const std::vector<std::string>& arguments);
