// tessel. Options that several commands share.
#pragma once

#include <CLI/CLI.hpp>
#include <climits>
#include <optional>
#include <string>

#include "tools/inspector/InspectorOptions.h"

// Up the tree.
inline constexpr int kMostSteps = INT_MAX;

std::string RefuseEmpty(const std::string& text);

// "X,Y" and "A,B,C"; what is none ends the parsing with an error.
CLI::Option* AddPoint(CLI::App& app, const std::string& name, std::optional<POINT>& point);
CLI::Option* AddSearchTexts(CLI::App& app, const std::string& name,
                            std::optional<SearchTexts>& texts);

// What goes to the broker with a point.
CLI::Option* AddPointOption(CLI::App& app, InspectorOptions& options);

// The options of every command.
void AddContentOptions(CLI::App& command, InspectorOptions& options);

// Those that name an element, and the steps up from it.
void AddElementOptions(CLI::App& command, InspectorOptions& options, bool isRequired);
void AddParentOption(CLI::App& command, InspectorOptions& options);
