// Part of tessel. The commands that find elements.
#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/OptionParts.h"
#include "tools/shared/CommandLine.h"

namespace {

std::string IdOf(const tessel::Element& element) { return tessel::Narrow(element.Id()); }

Report PlaceOf(const tessel::Element& element) {
  const SLElemData& record = element.Record();
  Report report(element);
  report.Add("window", tessel::HandleText(record.hwnd));
  report.Add("process", record.processId);
  report.Add("scheme", tools::NameOfScheme(record.uriScheme));
  return report;
}

Report::Entry FoundEntry(const tessel::Element& element) {
  Report::Entry entry;
  entry.json["id"] = IdOf(element);
  entry.json["rect"] = RectJson(element.Record().rect);
  entry.text = RectText(entry.json["rect"]) + ' ' + tessel::Printable(IdOf(element));
  return entry;
}

Report::Entry AncestorEntry(const tessel::Ancestor& ancestor) {
  const std::string id = IdOf(ancestor.element);
  return {{{"id", id}, {"number", ancestor.number}},
          std::to_string(ancestor.number) + ' ' + tessel::Printable(id)};
}

template <class Item, class MakeEntry>
std::vector<Report::Entry> EntriesOf(const std::vector<Item>& items, MakeEntry makeEntry) {
  std::vector<Report::Entry> entries;
  for (const Item& item : items) entries.push_back(makeEntry(item));
  return entries;
}

Report ReportElement(Inspection& inspection) { return PlaceOf(inspection.FindElement()); }

Report ReportParent(Inspection& inspection) {
  tessel::Element element = inspection.FindElement();
  return PlaceOf(inspection.AncestorOf(element, 1));
}

Report ReportAncestors(Inspection& inspection) {
  tessel::Element element = inspection.FindElement();
  const auto ancestors = inspection.Do("read the ancestors of " + NameOf(element),
                                       [&] { return element.Ancestors(); });
  Report report(element);
  report.AddList("ancestors", EntriesOf(ancestors, &AncestorEntry));
  return report;
}

Report ReportSelector(Inspection& inspection) {
  tessel::Element element = inspection.FindElement();
  const auto chain =
      inspection.Do("read the selector of " + NameOf(element), [&] { return element.Selector(); });
  std::vector<std::wstring> ids;
  for (const tessel::Element& link : chain) ids.push_back(link.Id());
  Report report(element);
  report.AddTexts("selector", ids);
  return report;
}

std::vector<tessel::Element> FindAsked(Inspection& inspection, const tessel::Search& search) {
  if (!inspection.Options().NamesElement()) {
    return inspection.Find("find elements of the content", search);
  }
  tessel::Element root = inspection.FindElement();
  return inspection.Do("find elements below " + NameOf(root), [&] { return root.Find(search); });
}

Report ReportFound(Inspection& inspection) {
  const InspectorOptions& options = inspection.Options();
  tessel::Search search = SearchFor(*options.search);
  search.option1 = options.levels;
  search.option2 = options.containing;
  Report report;
  report.AddList("found", EntriesOf(FindAsked(inspection, search), &FoundEntry));
  return report;
}

void AddPointArgument(CLI::App& command, InspectorOptions& options) {
  AddPoint(command, "point", options.at)->required();
  AddPointOption(command, options);
}

void AddFocus(CLI::App& command, InspectorOptions& options) {
  command.preparse_callback([&options](std::size_t) { options.focus = true; });
}

void AddSearch(CLI::App& command, InspectorOptions& options) {
  AddSearchTexts(command, "texts", options.search)->required();
  command.add_option("--levels", options.levels, "How many levels to search; 0: all")
      ->type_name("N")
      ->capture_default_str();
  command.add_flag("--containing", options.containing,
                   "A text matches if an element's text contains it");
}

using enum InspectorCommand::Target;

constexpr InspectorCommand kCommands[] = {
    {"at", "The element at a point", kByItself, &ReportElement, &AddPointArgument},
    {"focus", "The element that has the focus", kByItself, &ReportElement, &AddFocus},
    {"parent", "The parent of an element", kByOptions, &ReportParent},
    {"ancestors", "From the parent up to the root, with a number for each", kByOptions,
     &ReportAncestors},
    {"selector", "The elements of an element's default selector", kByOptions, &ReportSelector},
    {"find", "All elements that match three texts, below an element or in the whole content",
     kByOptionsOrWhole, &ReportFound, &AddSearch},
};

}  // namespace

std::span<const InspectorCommand> LookupCommands() { return kCommands; }
