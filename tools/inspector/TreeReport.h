// tessel. The command that reads all elements: a scene.
#pragma once

#include <CLI/CLI.hpp>

#include "tools/inspector/Content.h"
#include "tools/inspector/Report.h"

void AddTreeOptions(CLI::App& command, InspectorOptions& options);

// Text, indented by depth, and a scene file of version 1.
Report ReportTree(const Content& content);
