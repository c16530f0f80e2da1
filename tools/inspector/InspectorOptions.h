// tessel. What the command line asks for.
#pragma once

#include <windows.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

struct InspectorCommand;

// The texts of A,B,C; an empty one matches everything.
using SearchTexts = std::array<std::string, 3>;

struct InspectorOptions {
  const InspectorCommand* command = nullptr;
  bool json = false;

  std::string window;
  std::string address;
  std::string scheme;  // empty: search

  // What names the element: one of these, or none where a command looks at the whole content.
  std::optional<POINT> at;
  bool focus = false;
  std::optional<SearchTexts> find;
  int option = 0;  // goes with the point
  int parentSteps = 0;

  bool NamesElement() const { return at || focus || find; }

  // Of single commands.
  std::string text;  // get: the attribute's name; set, select: the new value
  std::optional<SearchTexts> search;
  int levels = 0;
  bool containing = false;
  int relativeSteps = 0;
  bool off = false;
  std::vector<std::string> attributes = {"name", "type"};
};

// A value is the exit code with which to end at once.
std::optional<int> ReadInspectorOptions(InspectorOptions& options);
