// Part of tessel. The commands that act on an element.
#include "tools/inspector/InspectorCommand.h"

namespace {

// `what`, for example "click", is a part of the error message: cannot WHAT element "ID".
template <class Action>
Report Act(Inspection& inspection, const std::string& what, Action action) {
  tessel::Element element = inspection.FindElement();
  inspection.Do(what + ' ' + NameOf(element), [&] { action(element); });
  Report report(element);
  report.Add("done", inspection.Options().command->name);
  return report;
}

std::wstring GivenText(const Inspection& inspection) {
  return tessel::Wide(inspection.Options().text);
}

Report Click(Inspection& inspection) {
  return Act(inspection, "click", [](tessel::Element& element) { element.Click(); });
}

Report SetText(Inspection& inspection) {
  return Act(inspection, "set the value of",
             [text = GivenText(inspection)](tessel::Element& element) { element.SetValue(text); });
}

Report GiveFocus(Inspection& inspection) {
  return Act(inspection, "give the focus to", [](tessel::Element& element) { element.SetFocus(); });
}

Report Check(Inspection& inspection) {
  const bool on = !inspection.Options().off;
  return Act(inspection, on ? "check" : "uncheck",
             [on](tessel::Element& element) { element.Check(on); });
}

Report Select(Inspection& inspection) {
  return Act(inspection, "select " + tessel::Quoted(inspection.Options().text) + " in",
             [text = GivenText(inspection)](tessel::Element& element) { element.Select(text); });
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

using enum InspectorCommand::Target;

constexpr InspectorCommand kCommands[] = {
    {"click", "Click an element", kByOptions, &Click},
    {"set", "Set the value of an element", kByOptions, &SetText, &AddText},
    {"setfocus", "Give an element the focus", kByOptions, &GiveFocus},
    {"check", "Check an element, or uncheck it", kByOptions, &Check, &AddOff},
    {"select", "Select an item of an element that is a list", kByOptions, &Select, &AddItem},
};

}  // namespace

std::span<const InspectorCommand> ActionCommands() { return kCommands; }
