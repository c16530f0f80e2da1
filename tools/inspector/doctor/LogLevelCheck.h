// Part of tessel. Says which log level the module uses, and where it is set.
#pragma once

#include "tools/inspector/doctor/Step.h"

// The step is broken if a variable is set in a way that the module cannot use, and kNote if only
// fatal lines appear because no variable is set.
Step CheckLogLevel();
