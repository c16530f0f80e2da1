// Part of tessel. Options that several commands share.
#pragma once

#include <CLI/CLI.hpp>
#include <climits>
#include <optional>
#include <string>

#include "tools/inspector/InspectorOptions.h"

// The greatest value of --parent and --relative, which are numbers of levels to go up the tree.
inline constexpr int kMostSteps = INT_MAX;

// Adds --stats.
void AddStatsOption(CLI::App& command, InspectorOptions& options);

// These functions add an option whose value is "X,Y" or "A,B,C". Any other value is a usage error.
CLI::Option* AddPoint(CLI::App& app, const std::string& name, std::optional<POINT>& point);
CLI::Option* AddSearchTexts(CLI::App& app, const std::string& name,
                            std::optional<SearchTexts>& texts);

// Adds --option, an integer that is sent to the broker with a point.
CLI::Option* AddPointOption(CLI::App& app, InspectorOptions& options);

// Adds the options that name the content: --window, --address and --scheme.
void AddContentOptions(CLI::App& command, InspectorOptions& options);

// These functions add the options that select an element, and --parent, which selects an ancestor
// of this element.
void AddElementOptions(CLI::App& command, InspectorOptions& options, bool isRequired);
void AddParentOption(CLI::App& command, InspectorOptions& options);
