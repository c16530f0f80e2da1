#include "tools/inspector/Inspection.h"

#include <utility>

#include "tools/inspector/OptionText.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"
#include "wire/SearchOrder.h"

namespace {

// Returns the longest duration of a search for the broker, in milliseconds. If no broker shows the
// content, the search injects a broker and asks all of them again.
std::uint32_t LongestSearch(const std::string& address) {
  const auto count = static_cast<std::uint32_t>(wire::SchemesToTry(tessel::Wide(address)).size());
  const std::uint32_t brokers = count * wire::kLongestRoundTripMilliseconds;
  return brokers + wire::kLongestInjectionMilliseconds + brokers;
}

// Returns the text by which messages name what the options select.
std::string TargetName(const InspectorOptions& options) {
  if (options.at) return "the element at " + TextOf(*options.at);
  if (options.focus) return "the focused element";
  if (options.find) return "the element that matches " + tessel::Quoted(TextOf(*options.find));
  return "the content";
}

tessel::Content OpenContent(const InspectorOptions& options) {
  const std::wstring address = tessel::Wide(options.address);
  const SLUriScheme scheme = tools::SchemeFromName(options.scheme);
  const HWND window = tools::HandleFromText(options.window);
  try {
    if (window != nullptr) return {window, address, scheme};
    return {tessel::Wide(options.window), address, scheme};
  } catch (const tessel::Error& error) {
    throw MakeCallFailure("find " + TargetName(options), error);
  }
}

}  // namespace

Inspection::Inspection(const InspectorOptions& options)
    : options_(options), content_(OpenContent(options)) {
  content_.Observe(&watch_);
}

tessel::Element Inspection::FindElement() {
  tessel::Element element = FindNamed();
  return options_.parentSteps == 0 ? std::move(element) : AncestorOf(element, options_.parentSteps);
}

tessel::Element Inspection::FindNamed() {
  if (options_.at) return FindAt(*options_.at);
  if (options_.find) return FindOnly(*options_.find);
  if (std::optional<tessel::Element> found = FindFocused()) return std::move(*found);
  throw NothingThere("find the focused element",
                     "no element has the focus; name one with --at or --find");
}

tessel::Element Inspection::FindAt(POINT point) {
  const std::string what = "find " + TargetName(options_);
  AnnounceSearch(what, content_.Scheme());
  auto found = Explained(what, [&] { return content_.At(point, options_.option); });
  if (found) return std::move(*found);
  throw NothingThere(what, "there is none; try another point");
}

tessel::Element Inspection::FindOnly(const SearchTexts& texts) {
  const std::string what = "find " + TargetName(options_);
  std::vector<tessel::Element> found = Find(what, SearchFor(texts));
  if (found.size() == 1) return std::move(found.front());
  throw NothingThere(
      what, std::to_string(found.size()) + " elements match; " +
                (found.empty() ? "see what there is with tessel tree"
                               : "see them with tessel find, and add texts until one is left"));
}

// Uses a Content without a scheme, because Content::Focused() refuses some schemes.
std::optional<tessel::Element> Inspection::FindFocused() {
  const std::string what = "find the focused element";
  AnnounceSearch(what, SL_NO_URI);
  return Explained(what, [&] {
    tessel::Content content(content_.Window(), tessel::Wide(options_.address));
    content.Observe(&watch_);
    return content.Focused();
  });
}

tessel::Element Inspection::AncestorOf(tessel::Element& element, int steps) {
  std::optional<tessel::Element> ancestor = ParentOf(element);
  for (int step = 1; step < steps && ancestor; ++step) ancestor = ParentOf(*ancestor);
  if (ancestor) return std::move(*ancestor);
  const std::string name =
      steps == 1 ? "parent" : "ancestor " + std::to_string(steps) + " steps up";
  throw NothingThere("find the " + name + " of " + NameOf(element),
                     "it has none; take fewer steps");
}

std::optional<tessel::Element> Inspection::ParentOf(tessel::Element& child) {
  return Do("find the parent of " + NameOf(child), [&] { return child.Parent(); });
}

std::optional<std::wstring> Inspection::Attribute(tessel::Element& element,
                                                  const std::string& name) {
  return Do("read the attribute " + tessel::Quoted(name) + " of " + NameOf(element),
            [&] { return element.Attribute(tessel::Wide(name)); });
}

std::optional<std::vector<std::wstring>> Inspection::Items(tessel::Element& element) {
  return Do("read the items of " + NameOf(element), [&] { return element.Items(); });
}

std::vector<tessel::Element> Inspection::Find(const std::string& what,
                                              const tessel::Search& search) {
  AnnounceSearch(what, content_.Scheme());
  return Explained(what, [&] { return content_.Find(search); });
}

void Inspection::AnnounceSearch(const std::string& what, SLUriScheme scheme) {
  watch_.Announce(what, scheme == SL_NO_URI ? LongestSearch(options_.address)
                                            : wire::kLongestRoundTripMilliseconds);
}

InspectorError Inspection::NothingThere(const std::string& what,
                                        const std::string& reasonAndCure) const {
  return MakeRefusal(ExitCode::kNothingThere, what, reasonAndCure, options_.address);
}

std::string NameOf(const tessel::Element& element) {
  return "element " + tessel::Quoted(element.Id());
}

tessel::Search SearchFor(const SearchTexts& texts) {
  return {tessel::Wide(texts[0]), tessel::Wide(texts[1]), tessel::Wide(texts[2])};
}
