// tessel. The command "tree", which reads all elements.
#pragma once

#include <CLI/CLI.hpp>

#include "tools/inspector/Content.h"
#include "tools/inspector/Report.h"

void AddTreeOptions(CLI::App& command, InspectorOptions& options);

// The lines are indented by depth. The JSON is a scene file of version 1.
Report ReportTree(const Content& content);
