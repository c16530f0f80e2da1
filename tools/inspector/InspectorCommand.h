// Part of tessel. The tables of its commands. Each table is in the file that carries out its
// commands.
#pragma once

#include <CLI/CLI.hpp>
#include <span>

#include "tools/inspector/Inspection.h"
#include "tools/inspector/InspectorOptions.h"
#include "tools/inspector/Report.h"

struct InspectorCommand {
  // How the user names the element. All except kWhole also have --parent.
  enum class Target {
    kByOptions,         // by --at, --focus or --find
    kByOptionsOrWhole,  // by the same, or the command looks at the whole content
    kByItself,          // the command's name and arguments say it
    kWhole,             // the command always looks at the whole content
  };

  const char* name;
  const char* description;
  Target target;
  Report (*run)(Inspection& inspection);
  // Adds the options that only this command has. Null if it has none.
  void (*addOptions)(CLI::App& command, InspectorOptions& options) = nullptr;
};

std::span<const InspectorCommand> LookupCommands();   // LookupReports.cpp
std::span<const InspectorCommand> ElementCommands();  // ElementReports.cpp
std::span<const InspectorCommand> ActionCommands();   // ActionReports.cpp
std::span<const InspectorCommand> TreeCommands();     // TreeReport.cpp
