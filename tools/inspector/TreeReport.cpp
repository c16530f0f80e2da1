// Part of tessel. The command `tree`, which reads all elements. It reports them as text, indented
// by depth, or in JSON as a scene file of version 1, which SceneBroker can read.
#include <algorithm>
#include <map>

#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/OptionParts.h"
#include "tools/inspector/TreePicture.h"
#include "tools/inspector/TreeReading.h"
#include "tools/shared/CommandLine.h"

namespace {

using tessel::Quoted;

constexpr int kSceneVersion = 1;

std::string RefuseState(const std::string& name) {
  if (name.empty()) return "must not be empty";
  if (std::ranges::find(kStates, name) == std::end(kStates)) return "";
  return Quoted(name) + " is a state; --read says whether states are read";
}

std::string RefusePart(const std::string& name) {
  std::string allowed;
  for (const char* part : kParts) {
    if (name == part) return "";
    allowed += (allowed.empty() ? "" : ", ") + std::string(part);
  }
  return Quoted(name) + " is not one of " + allowed;
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

CLI::Option* AddReadOption(CLI::App& command, InspectorOptions& options) {
  return command
      .add_option("--read", options.read,
                  "What to read besides ids and rectangles; each part takes calls. The state "
                  "selected is read only together with the items")
      ->type_name("LIST")
      ->delimiter(',')
      ->capture_default_str()
      ->allow_extra_args(false)
      ->check(RefusePart);
}

CLI::Option* AddAttributeOption(CLI::App& command, InspectorOptions& options) {
  return command
      .add_option("--attr", options.attributes,
                  "An attribute to read instead of these; repeat the option for more. The states "
                  "checked, selected and value are read as states")
      ->type_name("NAME")
      ->capture_default_str()
      ->allow_extra_args(false)
      ->check(RefuseState);
}

void AddTreeOptions(CLI::App& command, InspectorOptions& options) {
  CLI::Option* const read = AddReadOption(command, options);
  CLI::Option* const attribute = AddAttributeOption(command, options);
  command
      .add_option("--svg", options.svgFile,
                  "Draw the elements into this file instead of printing them")
      ->type_name("FILE")
      ->check(tools::RefuseEmpty)
      ->excludes(read)
      ->excludes(attribute);
  command.parse_complete_callback([attribute, &options] {
    if (attribute->count() > 0 && !options.Reads(kAttributesPart)) {
      throw CLI::RequiresError("--attr", "attributes in the list of --read");
    }
  });
}

Report ReportTree(Inspection& inspection) {
  if (!inspection.Options().svgFile.empty()) return ReportPicture(inspection);
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
