// Part of tessel. The commands that read one element.
#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/OptionParts.h"
#include "tools/inspector/OptionText.h"
#include "tools/shared/CommandLine.h"

namespace {

// Adds the texts to the report in the form that the option --find takes, so that the user can copy
// them. So the backslashes of a printable text are not doubled as in other lines. Adds nothing if
// all texts are empty, because --find would then match every element.
void AddFindText(Report& report, const SearchTexts& texts) {
  const std::string text = TextOf(texts);
  if (text == ",,") return;
  std::string withoutBackslashes = text;
  std::erase(withoutBackslashes, '\\');
  const bool isPrintable = tessel::Printable(withoutBackslashes) == withoutBackslashes;
  report.SetField("find", text);
  report.AddLine("find: " + (isPrintable ? text : tessel::Printable(text)));
}

Report ReportIdentity(Inspection& inspection) {
  tessel::Element element = inspection.FindElement();
  std::optional<tessel::Element> ancestor;
  if (const int steps = inspection.Options().relativeSteps) {
    ancestor = inspection.AncestorOf(element, steps);
  }
  const tessel::Identity identity =
      inspection.Do("read the identification of " + NameOf(element),
                    [&] { return ancestor ? element.Identify(*ancestor) : element.Identify(); });
  Report report(element);
  report.Add("text1", tessel::Narrow(identity.text1));
  report.Add("text2", tessel::Narrow(identity.text2));
  report.Add("text3", tessel::Narrow(identity.text3));
  report.Add("number", identity.number);
  AddFindText(report, {tessel::Narrow(identity.text1), tessel::Narrow(identity.text2),
                       tessel::Narrow(identity.text3)});
  return report;
}

Report ReportAttribute(Inspection& inspection) {
  tessel::Element element = inspection.FindElement();
  const std::string& name = inspection.Options().text;
  const std::string text = tessel::Narrow(inspection.Require(inspection.Attribute(element, name)));
  Report report(element);
  report.SetField("name", name);
  report.SetField("text", text);
  report.AddLine(tessel::Printable(name) + ": " + tessel::Printable(text));
  return report;
}

Report ReportItems(Inspection& inspection) {
  tessel::Element element = inspection.FindElement();
  Report report(element);
  report.AddTexts("items", inspection.Require(inspection.Items(element)));
  return report;
}

Report ReportRectangle(Inspection& inspection) {
  tessel::Element element = inspection.FindElement();
  const RECT rect = inspection.Do("read the rectangle of " + NameOf(element),
                                  [&] { return element.Rectangle(); });
  Report report(element);
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
      ->check(tools::RefuseEmpty);
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
