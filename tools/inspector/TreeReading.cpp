#include "tools/inspector/TreeReading.h"

#include "tools/inspector/Progress.h"
#include "tools/inspector/TreeParents.h"
#include "tools/shared/CommandLine.h"

namespace {

std::optional<std::string> ReadText(Inspection& inspection, tessel::Element& element,
                                    const std::string& name) {
  const auto text = inspection.Attribute(element, name);
  if (!text) return std::nullopt;
  return tessel::Narrow(*text);
}

Json ReadAttributes(Inspection& inspection, tessel::Element& element) {
  Json attributes;
  for (const std::string& name : inspection.Options().attributes) {
    if (const auto text = ReadText(inspection, element, name)) attributes[name] = *text;
  }
  return attributes;
}

// Returns the state "checked" as a boolean, as scene files store it. Any text other than "true" and
// "false" stays a text.
Json StateJson(const std::string& name, const std::string& text) {
  if (name == "checked" && (text == "true" || text == "false")) return text == "true";
  return text;
}

// Saves a call for each element: only an element with items has a selected item, and such an
// element is rarely a box that can be checked.
Json ReadStates(Inspection& inspection, tessel::Element& element, bool hasItems) {
  const std::string needless = hasItems ? "checked" : "selected";
  Json states;
  for (const std::string name : kStates) {
    if (name == needless) continue;
    if (const auto text = ReadText(inspection, element, name)) {
      states[name] = StateJson(name, *text);
    }
  }
  return states;
}

Json ReadItems(Inspection& inspection, tessel::Element& element) {
  const auto items = inspection.Items(element);
  if (!items) return {};
  Json json = Json::array();
  for (const std::wstring& item : *items) json.push_back(tessel::Narrow(item));
  return json;
}

// `parent` is empty if the element is a root.
Json ReadSceneElement(Inspection& inspection, tessel::Element& element,
                      const std::wstring& parent) {
  Json attributes, items, states;
  const InspectorOptions& options = inspection.Options();
  if (options.Reads(kAttributesPart)) attributes = ReadAttributes(inspection, element);
  if (options.Reads(kItemsPart)) items = ReadItems(inspection, element);
  if (options.Reads(kStatesPart)) states = ReadStates(inspection, element, !items.empty());
  Json json;
  json["id"] = tessel::Narrow(element.Id());
  if (!parent.empty()) json["parent"] = tessel::Narrow(parent);
  json["rect"] = RectJson(element.Record().rect);
  if (!attributes.empty()) json["attributes"] = attributes;
  if (!items.is_null()) json["items"] = items;
  if (!states.empty()) json["states"] = states;
  return json;
}

}  // namespace

// The search for the focus asks the tailored broker first. If the user named another broker, the
// search might find other content or none, so the report leaves the focus out.
std::string ReadFocus(Inspection& inspection) {
  const SLUriScheme scheme = tools::SchemeFromName(inspection.Options().scheme);
  if (scheme != SL_NO_URI && scheme != SL_TAILORED_URI) return "";
  const auto focused = inspection.FindFocused();
  return focused ? tessel::Narrow(focused->Id()) : "";
}

std::vector<tessel::Element> FindAllElements(Inspection& inspection) {
  return inspection.Find("find the elements of the content", {});
}

Json ReadElements(Inspection& inspection) {
  auto all = FindAllElements(inspection);
  Parents parents;
  if (inspection.Options().Reads(kParentsPart)) parents = FindParents(inspection, all);
  Progress progress(inspection, "elements", all.size());
  Json elements = Json::array();
  for (tessel::Element& element : all) {
    tessel::Element held = std::move(element);  // released before the next element is read
    elements.push_back(ReadSceneElement(inspection, held, parents[held.Id()]));
    progress.Show(elements.size());
  }
  return elements;
}
