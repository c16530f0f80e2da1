// tessel. The command that reads all elements. It reports them as text, indented by depth, or as a
// scene file of version 1.
#include <algorithm>
#include <map>

#include "tools/inspector/ElementTexts.h"
#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/TargetWindow.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"

namespace {

using tools::Quoted;

constexpr int kSceneVersion = 1;

// States are read in the same way as attributes.
constexpr const char* kStates[] = {"checked", "selected", "value"};

std::string RefuseState(const std::string& name) {
  if (name.empty()) return "must not be empty";
  if (std::ranges::find(kStates, name) == std::end(kStates)) return "";
  return Quoted(name) + " is a state; states are always read";
}

Json ReadAttributes(const Content& content, const SLElemData& element) {
  Json attributes;
  for (const std::string& name : content.Options().attributes) {
    if (const auto text = TryAttribute(content, element, name)) attributes[name] = *text;
  }
  return attributes;
}

// Returns the state "checked" as a boolean, as scene files store it. Any text other than "true" and
// "false" stays a text.
Json StateJson(const std::string& name, const std::string& text) {
  if (name == "checked" && (text == "true" || text == "false")) return text == "true";
  return text;
}

Json ReadStates(const Content& content, const SLElemData& element) {
  Json states;
  for (const char* name : kStates) {
    if (const auto text = TryAttribute(content, element, name)) {
      states[name] = StateJson(name, *text);
    }
  }
  return states;
}

Json ReadSceneElement(const Content& content, const SLElemData& element) {
  Json json;
  json["id"] = IdOf(element);
  if (const ElementOwner parent = content.ParentOf(element)) json["parent"] = IdOf(*parent);
  json["rect"] = RectJson(element.rect);
  const Json attributes = ReadAttributes(content, element);
  if (!attributes.empty()) json["attributes"] = attributes;
  if (const auto items = TryItems(content, element)) json["items"] = *items;
  const Json states = ReadStates(content, element);
  if (!states.empty()) json["states"] = states;
  return json;
}

// The search for the focus asks the tailored broker first. If the user named another broker, the
// search might find other content or none, so the focus is left out.
std::string ReadFocus(const Content& content) {
  const DWORD scheme = tools::SchemeFromName(content.Options().scheme);
  if (scheme != SL_NO_URI && scheme != SL_TAILORED_URI) return "";
  const ElementOwner focused = content.FindFocused();
  return focused ? IdOf(*focused) : "";
}

Json ReadElements(const Content& content) {
  SLElemData whole = content.Whole();
  const ElementList all = content.FindBelow(whole, "find the elements of the content", {},
                                            0 /*all levels*/, false /*containing*/);
  Json elements = Json::array();
  for (const SLElemData& element : all.records) {
    elements.push_back(ReadSceneElement(content, element));
  }
  return elements;
}

std::string PairsText(const Json& pairs) {
  std::string text;
  for (const auto& [name, value] : pairs.items()) {
    text += ' ' + tools::Printable(name) + '=' +
            (value.is_string() ? Quoted(value.get<std::string>()) : value.dump());
  }
  return text;
}

std::string ElementLine(const Json& element) {
  std::string line = Quoted(element["id"].get<std::string>()) + ' ' + RectText(element["rect"]);
  if (element.contains("attributes")) line += PairsText(element["attributes"]);
  if (element.contains("items")) line += " items=" + std::to_string(element["items"].size());
  if (element.contains("states")) line += PairsText(element["states"]);
  return line;
}

// `elements` must list every parent before its children.
void AddElementLines(Report& report, const Json& elements) {
  std::map<std::string, std::size_t> depths;
  for (const Json& element : elements) {
    const auto parent = depths.find(element.value("parent", ""));
    const std::size_t depth = parent == depths.end() ? 1 : parent->second + 1;
    depths[element["id"].get<std::string>()] = depth;
    report.AddLine(std::string(2 * depth, ' ') + ElementLine(element));
  }
}

void AddTreeOptions(CLI::App& command, InspectorOptions& options) {
  command
      .add_option(
          "--attr", options.attributes,
          "An attribute to read instead of these; repeat the option for more. The states checked, "
          "selected and value are always read")
      ->type_name("NAME")
      ->capture_default_str()
      ->allow_extra_args(false)
      ->check(RefuseState);
}

Report ReportTree(const Content& content) {
  Report report;
  report.SetField("version", kSceneVersion);
  report.Add("address", content.Options().address);
  report.Add("title", tools::Narrow(TitleOf(content.Window())));
  if (const std::string focus = ReadFocus(content); !focus.empty()) report.Add("focus", focus);
  const Json elements = ReadElements(content);
  report.SetField("elements", elements);
  report.AddLine("elements: " + std::to_string(elements.size()));
  AddElementLines(report, elements);
  return report;
}

constexpr InspectorCommand kCommands[] = {
    {"tree", "All elements; with --json a scene file that SceneBroker serves again",
     InspectorCommand::Target::kWhole, &ReportTree, &AddTreeOptions},
};

}  // namespace

std::span<const InspectorCommand> TreeCommands() { return kCommands; }
