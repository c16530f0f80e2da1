// Part of tessel. Names the mistyped word of a command line. CLI11 reports a missing option before
// it reports a mistyped one, and it takes an option for the missing value of another option.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

// Throws InspectorError if the command or an option does not exist, or if an option lacks its
// value. `arguments` are in their order on the command line.
void CheckWords(const CLI::App& app, const std::vector<std::string>& arguments);

// Returns whether the arguments before "--" contain --json. Usage errors need this before the
// command line is parsed.
bool AskForJson(const std::vector<std::string>& arguments);
