// Both processes. The call stack as text, for lines that report a broken invariant.
#pragma once

#include "logging/LogFormat.h"

namespace logging {

// One line a frame, with symbol names where the system can resolve them.
void AppendStackDump(TextBuffer& out);

}  // namespace logging
