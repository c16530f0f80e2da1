// tessel. One inspection: finds the element anew, reports on it, releases all that it was given.
#pragma once

#include "tools/inspector/InspectorOptions.h"

// Prints the report. Throws InspectorError.
void Inspect(const InspectorOptions& options);
