// Part of tessel. The commands that do not work on the elements of one content. Such a command
// does not use the class Inspection, prints its own report, and chooses its own exit code. Each
// file that carries out such commands has a table of them.
#pragma once

#include <CLI/CLI.hpp>
#include <span>

#include "tools/inspector/InspectorOptions.h"

struct ToolCommand {
  const char* name;
  const char* description;
  // Returns the exit code. May throw InspectorError. Every command has the option --json.
  int (*run)(const InspectorOptions& options);
  // Adds the options that only this command has. Null if the command has no such options.
  void (*addOptions)(CLI::App& command, InspectorOptions& options) = nullptr;
};

std::span<const ToolCommand> ExplainCommands();  // defined in ExplainCommand.cpp
std::span<const ToolCommand> WindowsCommands();  // defined in WindowsCommand.cpp
std::span<const ToolCommand> DoctorCommands();   // defined in doctor/DoctorCommand.cpp
std::span<const ToolCommand> LogCommands();      // defined in log/LogCommand.cpp
std::span<const ToolCommand> TapCommands();      // defined in TapCommand.cpp
