// Part of tessel. The commands of the tool. Each file that carries out commands has a table of
// them.
#pragma once

#include <CLI/CLI.hpp>
#include <span>

#include "tools/inspector/Inspection.h"
#include "tools/inspector/InspectorOptions.h"
#include "tools/inspector/Report.h"

struct InspectorCommand {
  // How the user selects the element of a command. Commands of all kinds except kWhole also have
  // --parent.
  enum class Target {
    kByOptions,         // by the options --at, --focus or --find
    kByOptionsOrWhole,  // by --at, --focus or --find; without them it reads the whole content
    kByItself,          // by the command's name and arguments, without --at, --focus and --find
    kWhole,             // not at all: the command always reads the whole content
  };

  const char* name;
  const char* description;
  Target target;
  Report (*run)(Inspection& inspection);
  // Adds the options that only this command has. Null if the command has no such options.
  void (*addOptions)(CLI::App& command, InspectorOptions& options) = nullptr;
};

std::span<const InspectorCommand> LookupCommands();   // defined in LookupReports.cpp
std::span<const InspectorCommand> ElementCommands();  // defined in ElementReports.cpp
std::span<const InspectorCommand> ActionCommands();   // defined in ActionReports.cpp
std::span<const InspectorCommand> TreeCommands();     // defined in TreeReport.cpp
std::span<const InspectorCommand> WaitCommands();     // defined in WaitReport.cpp
