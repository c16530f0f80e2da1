// tessel. What the command line asks for.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

enum class Report { kElement, kRectangle, kAttribute, kItems };

struct InspectorOptions {
  std::string window;
  std::string address;
  std::string scheme;       // empty: search
  std::optional<POINT> at;  // none: the element that has the focus
  int option = 0;           // goes with the point
  int parentSteps = 0;      // up from there
  Report report = Report::kElement;
  std::string attribute;
};

// A value is the exit code with which to end at once.
std::optional<int> ReadInspectorOptions(InspectorOptions& options);
