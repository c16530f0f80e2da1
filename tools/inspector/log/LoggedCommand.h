// Part of tessel. Starts the command that `tessel log` runs.
#pragma once

#include <string>
#include <vector>

#include "tools/shared/Handle.h"

// Starts the program `arguments[0]` with the other arguments. CreateProcess searches for it, for
// example in the folders of PATH. The program uses the console and the standard handles of this
// process. Throws InspectorError if the program cannot be started.
tools::Handle StartCommand(const std::vector<std::string>& arguments);
