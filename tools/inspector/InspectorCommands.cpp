#include "tools/inspector/ActionReports.h"
#include "tools/inspector/ElementReports.h"
#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/InspectorOptions.h"
#include "tools/inspector/OptionParts.h"
#include "tools/inspector/TreeReport.h"

namespace {

void AddNothing(CLI::App& /*command*/, InspectorOptions& /*options*/) {}

void AddPointArgument(CLI::App& command, InspectorOptions& options) {
  AddPoint(command, "point", options.at)->required();
  AddPointOption(command, options);
}

void AddFocus(CLI::App& command, InspectorOptions& options) {
  command.preparse_callback([&options](std::size_t) { options.focus = true; });
}

void AddSearch(CLI::App& command, InspectorOptions& options) {
  AddSearchTexts(command, "texts", options.search)->required();
  command.add_option("--levels", options.levels, "Look so many levels deep; 0: all")
      ->type_name("N")
      ->capture_default_str();
  command.add_flag("--containing", options.containing,
                   "The texts need not be equal: parts of an element's are enough");
}

void AddAttributeName(CLI::App& command, InspectorOptions& options) {
  command.add_option("name", options.text, "The attribute's name")
      ->required()
      ->type_name("NAME")
      ->check(RefuseEmpty);
}

void AddText(CLI::App& command, InspectorOptions& options) {
  command.add_option("text", options.text, "The text; may be empty")->required()->type_name("TEXT");
}

void AddItem(CLI::App& command, InspectorOptions& options) {
  command.add_option("item", options.text, "The item's text")->required()->type_name("ITEM");
}

void AddOff(CLI::App& command, InspectorOptions& options) {
  command.add_flag("--off", options.off, "Uncheck it");
}

void AddRelative(CLI::App& command, InspectorOptions& options) {
  command
      .add_option("--relative", options.relativeSteps,
                  "Relative to the ancestor so many steps further up, not to the whole content")
      ->type_name("N")
      ->check(CLI::Range(1, kMostSteps));
}

constexpr auto kByOptions = InspectorCommand::Target::kByOptions;
constexpr auto kByItself = InspectorCommand::Target::kByItself;

constexpr InspectorCommand kCommands[] = {
    {"at", "The element at a point", kByItself, &AddPointArgument, &ReportElement},
    {"focus", "The element that has the focus", kByItself, &AddFocus, &ReportElement},
    {"parent", "The parent of an element", kByOptions, &AddNothing, &ReportParent},
    {"ancestors", "From the parent up to the root, with a number for each", kByOptions, &AddNothing,
     &ReportAncestors},
    {"selector", "The elements of an element's default selector", kByOptions, &AddNothing,
     &ReportSelector},
    {"find", "All elements that match three texts, below an element or in the whole content",
     InspectorCommand::Target::kByOptionsOrWhole, &AddSearch, &ReportFound},
    {"id", "What identifies an element: three texts and a number", kByOptions, &AddRelative,
     &ReportIdentity},
    {"get", "An attribute or a state of an element", kByOptions, &AddAttributeName,
     &ReportAttribute},
    {"items", "The items of an element that is a list", kByOptions, &AddNothing, &ReportItems},
    {"rect", "The rectangle of an element", kByOptions, &AddNothing, &ReportRectangle},
    {"click", "Click an element", kByOptions, &AddNothing, &Click},
    {"set", "Set the value of an element", kByOptions, &AddText, &SetText},
    {"setfocus", "Give an element the focus", kByOptions, &AddNothing, &GiveFocus},
    {"check", "Check an element, or uncheck it", kByOptions, &AddOff, &Check},
    {"select", "Select an item of an element that is a list", kByOptions, &AddItem, &Select},
    {"tree", "All elements; with --json a scene file that SceneBroker serves again",
     InspectorCommand::Target::kWhole, &AddTreeOptions, &ReportTree},
};

}  // namespace

std::span<const InspectorCommand> AllCommands() { return kCommands; }
