#include "tools/inspector/ActionReports.h"

#include "tools/inspector/InspectorCommand.h"
#include "tools/shared/ConsoleText.h"

namespace {

// `what` completes "cannot ... element ...".
template <class Action>
Report Act(const Content& content, const std::string& what, Action action) {
  const ElementOwner element = content.FindElement();
  content.Do(what + ' ' + NameOf(*element), [&] { return action(*element); });
  Report report(*element);
  report.Add("done", content.Options().command->name);
  return report;
}

CComBSTR GivenText(const Content& content) { return tools::Wide(content.Options().text).c_str(); }

}  // namespace

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
