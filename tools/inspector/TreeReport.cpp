// Part of tessel. The command `tree`, which reads all elements. It reports them as text, indented
// by depth, or in JSON as a scene file of version 1, which SceneBroker can read.
#include <algorithm>
#include <map>

#include "tools/inspector/InspectorCommand.h"
#include "tools/shared/CommandLine.h"

namespace {

using tessel::Quoted;

constexpr int kSceneVersion = 1;

// The names of the states. The broker returns states in the same way as attributes.
constexpr const char* kStates[] = {"checked", "selected", "value"};

std::string RefuseState(const std::string& name) {
  if (name.empty()) return "must not be empty";
  if (std::ranges::find(kStates, name) == std::end(kStates)) return "";
  return Quoted(name) + " is a state; states are always read";
}

std::optional<std::string> ReadText(Inspection& inspection, tessel::Element& element,
                                    const std::string& name) {
  const auto text = inspection.Attribute(element, name);
  if (!text) return std::nullopt;
  return tessel::Narrow(*text);
}

Json ReadAttributes(Inspection& inspection, tessel::Element& element) {
  Json attributes;
  for (const std::string& name : inspection.Options().attributes) {
    if (const auto text = ReadText(inspection, element, name)) attributes[name] = *text;
  }
  return attributes;
}

// Returns the state "checked" as a boolean, as scene files store it. Any text other than "true" and
// "false" stays a text.
Json StateJson(const std::string& name, const std::string& text) {
  if (name == "checked" && (text == "true" || text == "false")) return text == "true";
  return text;
}

Json ReadStates(Inspection& inspection, tessel::Element& element) {
  Json states;
  for (const char* name : kStates) {
    if (const auto text = ReadText(inspection, element, name)) {
      states[name] = StateJson(name, *text);
    }
  }
  return states;
}

Json ItemsJson(const std::vector<std::wstring>& items) {
  Json json = Json::array();
  for (const std::wstring& item : items) json.push_back(tessel::Narrow(item));
  return json;
}

Json ReadSceneElement(Inspection& inspection, tessel::Element& element) {
  Json json;
  json["id"] = tessel::Narrow(element.Id());
  if (const auto parent = inspection.ParentOf(element)) {
    json["parent"] = tessel::Narrow(parent->Id());
  }
  json["rect"] = RectJson(element.Record().rect);
  const Json attributes = ReadAttributes(inspection, element);
  if (!attributes.empty()) json["attributes"] = attributes;
  if (const auto items = inspection.Items(element)) json["items"] = ItemsJson(*items);
  const Json states = ReadStates(inspection, element);
  if (!states.empty()) json["states"] = states;
  return json;
}

// The search for the focus asks the tailored broker first. If the user named another broker, the
// search might find other content or none, so the report leaves the focus out.
std::string ReadFocus(Inspection& inspection) {
  const SLUriScheme scheme = tools::SchemeFromName(inspection.Options().scheme);
  if (scheme != SL_NO_URI && scheme != SL_TAILORED_URI) return "";
  const auto focused = inspection.FindFocused();
  return focused ? tessel::Narrow(focused->Id()) : "";
}

Json ReadElements(Inspection& inspection) {
  Json elements = Json::array();
  auto all = inspection.Find("find the elements of the content", {});
  for (tessel::Element& element : all) elements.push_back(ReadSceneElement(inspection, element));
  return elements;
}

std::string PairsText(const Json& pairs) {
  std::string text;
  for (const auto& [name, value] : pairs.items()) {
    text += ' ' + tessel::Printable(name) + '=' +
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

Report ReportTree(Inspection& inspection) {
  Report report;
  report.SetField("version", kSceneVersion);
  report.Add("address", inspection.Options().address);
  report.Add("title", tessel::Narrow(tessel::WindowTitle(inspection.Window())));
  if (const std::string focus = ReadFocus(inspection); !focus.empty()) report.Add("focus", focus);
  const Json elements = ReadElements(inspection);
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
