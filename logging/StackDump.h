// Runs in the client and in the broker. Writes the call stack to a log line of the level FATAL.
#pragma once

#include "logging/LogFormat.h"

namespace logging {

// Appends one line for each stack frame, with the name of the function if the system finds its
// symbol.
void AppendStackDump(TextBuffer& out);

}  // namespace logging
