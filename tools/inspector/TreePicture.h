// Part of tessel. The command `tree --svg FILE`, which draws all elements.
#pragma once

#include "tools/inspector/Inspection.h"
#include "tools/inspector/Report.h"

// Writes the picture to the file that the options name, and reports what it has written.
Report ReportPicture(Inspection& inspection);
