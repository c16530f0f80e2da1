// Part of tessel and SceneBroker. Parses the command line as UTF-8, and adds the options that both
// tools have.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "TesselSilverlight.h"

namespace tools {

inline constexpr int kUsageError = 2;

// Returns this process's arguments in UTF-8, without the name of the program.
std::vector<std::string> Arguments();

// Parses the arguments. Throws CLI::Error for a mistake, and for --help and --version.
void Parse(CLI::App& app, std::vector<std::string> arguments);

// Parses this process's arguments. If this function returns a value, it has printed the help text
// or an error, and the tool must end with that exit code.
std::optional<int> ParseCommandLine(CLI::App& app);

// A check for CLI11. Returns an error message if `text` is empty, otherwise an empty text.
std::string RefuseEmpty(const std::string& text);

// Adds --scheme. Its value is one of tailored, http, https and file.
CLI::Option* AddSchemeOption(CLI::App& app, std::string& scheme, const std::string& description);

// Returns the scheme that --scheme names. Returns SL_NO_URI for an empty name.
SLUriScheme SchemeFromName(const std::string& name);
std::string NameOfScheme(DWORD scheme);

}  // namespace tools
