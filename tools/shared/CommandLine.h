// Both tools. The command line: arguments in UTF-8, the options that both have, one exit code for
// a wrong one.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "TesselSilverlight.h"

namespace tools {

inline constexpr int kUsageError = 2;

// Parses this process's arguments. A value is the exit code with which the tool has to end: what
// there is to say (the help, or what is wrong) has been printed.
std::optional<int> ParseCommandLine(CLI::App& app);

// --scheme, one of tailored, http, https and file.
CLI::Option* AddSchemeOption(CLI::App& app, std::string& scheme, const std::string& description);

// SL_NO_URI for an empty name.
SLUriScheme SchemeFromName(const std::string& name);
std::string NameOfScheme(DWORD scheme);

}  // namespace tools
