// Part of tessel. The options that were given on the command line.
#pragma once

#include <windows.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

struct InspectorCommand;
struct ToolCommand;

// The three texts of the argument "A,B,C". An empty text matches everything.
using SearchTexts = std::array<std::string, 3>;

// The parts of an element that --read selects.
inline constexpr char kParentsPart[] = "parents";
inline constexpr char kAttributesPart[] = "attributes";
inline constexpr char kItemsPart[] = "items";
inline constexpr char kStatesPart[] = "states";
inline constexpr const char* kParts[] = {kParentsPart, kAttributesPart, kItemsPart, kStatesPart};

struct InspectorOptions {
  // The user's command is in `command` or in `toolCommand`. The other pointer is null.
  const InspectorCommand* command = nullptr;
  const ToolCommand* toolCommand = nullptr;
  bool json = false;
  bool stats = false;

  std::string window;
  std::string address;
  std::string scheme;  // empty if the call must search for the broker

  // `at`, `focus` and `find` select the element. At most one of them is given. If none is given,
  // the command is about the whole content.
  std::optional<POINT> at;
  bool focus = false;
  std::optional<SearchTexts> find;
  int option = 0;       // --option: a number for the broker, sent with the point `at`
  int parentSteps = 0;  // how many levels to go up from the selected element

  bool NamesElement() const { return at || focus || find; }

  // Options that only some commands have.
  // get, wait: the attribute's name; set: the new value; select: the item's text; explain: the code
  std::string text;
  std::optional<SearchTexts> search;  // find: the texts to search for
  int levels = 0;                     // find: how many levels to search; 0 means all
  bool containing = false;            // find: a text matches if it is a part of the element's text
  int relativeSteps = 0;              // id: how far above the element the ancestor is; 0 means none
  bool gone = false;                  // wait: until no element matches `find`
  std::string equals;                 // wait: the text that the attribute must equal
  double timeoutSeconds = 10;         // wait: the longest wait
  bool off = false;                   // check: uncheck the element
  // tree
  std::vector<std::string> attributes = {"name", "type"};
  std::vector<std::string> read = {std::begin(kParts), std::end(kParts)};
  bool Reads(const std::string& part) const { return std::ranges::count(read, part) > 0; }
  std::string svgFile;  // empty: prints the tree instead of drawing it

  std::string module;  // doctor: the module's path; empty for the one beside this program

  // log
  std::string logLevel;                 // the level to set; empty if the level stays as it is
  unsigned long logProcess = 0;         // only lines of the process with this id; 0 means all
  std::string logFile;                  // empty if the lines are only printed
  std::vector<std::string> logCommand;  // the program to run; empty: shows lines until Ctrl-C

  std::string record;  // tap: the file to create
};

// If this function returns a value, the tool must end at once with that exit code. Throws
// InspectorError if the command line is wrong.
std::optional<int> ReadInspectorOptions(InspectorOptions& options);
