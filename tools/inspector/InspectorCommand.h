// tessel. Its commands.
#pragma once

#include <CLI/CLI.hpp>
#include <span>

#include "tools/inspector/Content.h"
#include "tools/inspector/InspectorOptions.h"
#include "tools/inspector/Report.h"

struct InspectorCommand {
  // Whether --at, --focus, --find and --parent say what it is about.
  enum class Target { kByOptions, kByOptionsOrWhole, kByItself, kWhole };

  const char* name;
  const char* description;
  Target target;
  void (*addOptions)(CLI::App& command, InspectorOptions& options);
  Report (*run)(const Content& content);
};

std::span<const InspectorCommand> AllCommands();
