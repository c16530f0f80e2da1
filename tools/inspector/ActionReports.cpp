// tessel. The commands that act on an element.
#include "tools/inspector/InspectorCommand.h"
#include "tools/shared/ConsoleText.h"

namespace {

// `what` goes into the error text "cannot WHAT element ID", for example "click".
template <class Action>
Report Act(const Content& content, const std::string& what, Action action) {
  const ElementOwner element = content.FindElement();
  content.Do(what + ' ' + NameOf(*element), [&] { return action(*element); });
  Report report(*element);
  report.Add("done", content.Options().command->name);
  return report;
}

CComBSTR GivenText(const Content& content) { return tools::Wide(content.Options().text).c_str(); }

Report Click(const Content& content) {
  return Act(content, "click", [](const SLElemData& element) {
    return TesselSilverlight::ClickElem(element, 0, 0 /*reserved*/);
  });
}

Report SetText(const Content& content) {
  return Act(content, "set the value of", [text = GivenText(content)](const SLElemData& element) {
    return TesselSilverlight::SetValue(element, text);
  });
}

Report GiveFocus(const Content& content) {
  return Act(content, "give the focus to",
             [](const SLElemData& element) { return TesselSilverlight::SetFocus(element); });
}

Report Check(const Content& content) {
  const bool off = content.Options().off;
  return Act(content, off ? "uncheck" : "check", [off](const SLElemData& element) {
    return TesselSilverlight::CheckElem(element, off ? 0 : 1);
  });
}

Report Select(const Content& content) {
  return Act(content, "select " + tools::Quoted(content.Options().text) + " in",
             [text = GivenText(content)](const SLElemData& element) {
               return TesselSilverlight::SelectItem(element, text);
             });
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
