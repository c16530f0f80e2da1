// tessel. The commands that find elements.
#include "tools/inspector/ElementTexts.h"
#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/OptionParts.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"

namespace {

using tools::Printable;

Report PlaceOf(const SLElemData& element) {
  Report report(element);
  report.Add("window", tools::HandleText(element.hwnd));
  report.Add("process", element.processId);
  report.Add("scheme", tools::NameOfScheme(element.uriScheme));
  return report;
}

Report::Entry FoundEntry(const SLElemData& element) {
  Report::Entry entry;
  entry.json["id"] = IdOf(element);
  entry.json["rect"] = RectJson(element.rect);
  entry.text = RectText(entry.json["rect"]) + ' ' + Printable(IdOf(element));
  return entry;
}

// Refuses an answer that does not hold exactly one number for each ancestor.
std::vector<Report::Entry> AncestorEntries(const Content& content, const SLElemData& element) {
  ElementList ancestors;
  std::vector<long, HeapAllocator<long>> numbers;
  const std::string what = "read the ancestors of " + NameOf(element);
  content.Do(what, [&] {
    return TesselSilverlight::GetAncestryInfo(element, ancestors.records, numbers);
  });
  if (numbers.size() != ancestors.records.size()) {
    throw content.MakeRefusal(ExitCode::kUnexpectedAnswer, what,
                              "the broker gave " + std::to_string(ancestors.records.size()) +
                                  " elements and " + std::to_string(numbers.size()) +
                                  " numbers; look whether it is of this version");
  }
  std::vector<Report::Entry> entries;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const std::string id = IdOf(ancestors.records[i]);
    entries.push_back(
        {{{"id", id}, {"number", numbers[i]}}, std::to_string(numbers[i]) + ' ' + Printable(id)});
  }
  return entries;
}

Report ReportElement(const Content& content) { return PlaceOf(*content.FindElement()); }

Report ReportParent(const Content& content) {
  const ElementOwner element = content.FindElement();
  return PlaceOf(*content.AncestorOf(*element, 1));
}

Report ReportAncestors(const Content& content) {
  const ElementOwner element = content.FindElement();
  Report report(*element);
  report.AddList("ancestors", AncestorEntries(content, *element));
  return report;
}

Report ReportSelector(const Content& content) {
  const ElementOwner element = content.FindElement();
  ElementList chain;
  content.Do("read the selector of " + NameOf(*element), [&] {
    return TesselSilverlight::GetDefaultSelectorHierarchy(*element, chain.records);
  });
  Report report(*element);
  report.AddTexts("selector", chain.Ids());
  return report;
}

Report ReportFound(const Content& content) {
  const InspectorOptions& options = content.Options();
  const ElementOwner root = options.NamesElement() ? content.FindElement()
                                                   : ElementOwner(new SLElemData(content.Whole()));
  const std::string what =
      "find elements " + (options.NamesElement() ? "below " + NameOf(*root) : "of the content");
  const ElementList found =
      content.FindBelow(*root, what, *options.search, options.levels, options.containing);
  std::vector<Report::Entry> entries;
  for (const SLElemData& element : found.records) entries.push_back(FoundEntry(element));
  Report report;
  report.AddList("found", entries);
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
