// tessel. The commands that read one element.
#include "tools/inspector/ElementTexts.h"
#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/OptionParts.h"
#include "tools/shared/ConsoleText.h"

namespace {

using tools::Printable;

Report ReportIdentity(const Content& content) {
  const ElementOwner element = content.FindElement();
  const int steps = content.Options().relativeSteps;
  const ElementOwner parent = steps == 0 ? ElementOwner() : content.AncestorOf(*element, steps);
  CComBSTR texts[3];
  int number = 0;
  content.Do("read the identification of " + NameOf(*element), [&] {
    return TesselSilverlight::GetIdInfo(parent.get(), *element, &texts[0], &texts[1], &texts[2],
                                        &number);
  });
  Report report(*element);
  for (int i = 0; i < 3; ++i) report.Add("text" + std::to_string(i + 1), TextOf(texts[i]));
  report.Add("number", number);
  return report;
}

Report ReportAttribute(const Content& content) {
  const ElementOwner element = content.FindElement();
  const std::string& name = content.Options().text;
  const std::string text = ReadAttribute(content, *element, name);
  Report report(*element);
  report.SetField("name", name);
  report.SetField("text", text);
  report.AddLine(Printable(name) + ": " + Printable(text));
  return report;
}

Report ReportItems(const Content& content) {
  const ElementOwner element = content.FindElement();
  Report report(*element);
  report.AddTexts("items", ReadItems(content, *element));
  return report;
}

Report ReportRectangle(const Content& content) {
  const ElementOwner element = content.FindElement();
  RECT rect = {};
  content.Do("read the rectangle of " + NameOf(*element),
             [&] { return TesselSilverlight::GetElemRectangle(*element, rect); });
  Report report(*element);
  report.Add("left", rect.left);
  report.Add("top", rect.top);
  report.Add("right", rect.right);
  report.Add("bottom", rect.bottom);
  return report;
}

void AddAttributeName(CLI::App& command, InspectorOptions& options) {
  command.add_option("name", options.text, "The attribute's name")
      ->required()
      ->type_name("NAME")
      ->check(RefuseEmpty);
}

void AddRelative(CLI::App& command, InspectorOptions& options) {
  command
      .add_option("--relative", options.relativeSteps,
                  "Relative to the ancestor N steps up, not to the whole content")
      ->type_name("N")
      ->check(CLI::Range(1, kMostSteps));
}

using enum InspectorCommand::Target;

constexpr InspectorCommand kCommands[] = {
    {"id", "Three texts and a number that identify an element", kByOptions, &ReportIdentity,
     &AddRelative},
    {"get", "An attribute or a state of an element", kByOptions, &ReportAttribute,
     &AddAttributeName},
    {"items", "The items of an element that is a list", kByOptions, &ReportItems},
    {"rect", "The rectangle of an element", kByOptions, &ReportRectangle},
};

}  // namespace

std::span<const InspectorCommand> ElementCommands() { return kCommands; }
