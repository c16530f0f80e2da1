#include "tools/inspector/ElementReports.h"

#include "tools/inspector/ElementTexts.h"
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

// Exactly one number for each ancestor, or the answer is none.
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

}  // namespace

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
