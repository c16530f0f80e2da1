#include "tools/inspector/Inspection.h"

#include <utility>

#include "tools/inspector/OptionText.h"
#include "tools/inspector/WindowList.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"
#include "wire/SearchOrder.h"

namespace {

// Returns a name for messages, such as "the focused element". It names the element that the
// options select, or the content if they select no element.
std::string TargetName(const InspectorOptions& options) {
  if (options.at) return "the element at " + TextOf(*options.at);
  if (options.focus) return "the focused element";
  if (options.find) return "the element that matches " + tessel::Quoted(TextOf(*options.find));
  return "the content";
}

// Adds titles that the user may have meant, if no window has the given title.
tessel::Error WithSimilarTitles(tessel::Error error, const InspectorOptions& options) {
  const bool isTitle = tools::HandleFromText(options.window) == nullptr;
  if (isTitle && tessel::WindowsWithTitle(tessel::Wide(options.window)).empty()) {
    error.cure += SimilarTitles(options.window);
  }
  return error;
}

tessel::Content OpenContent(const InspectorOptions& options) {
  const std::wstring address = tessel::Wide(options.address);
  const SLUriScheme scheme = tools::SchemeFromName(options.scheme);
  const HWND window = tools::HandleFromText(options.window);
  try {
    if (window != nullptr) return {window, address, scheme};
    return {tessel::Wide(options.window), address, scheme};
  } catch (const tessel::Error& error) {
    throw MakeCallFailure("find " + TargetName(options), WithSimilarTitles(error, options), scheme);
  }
}

}  // namespace

Inspection::Inspection(const InspectorOptions& options)
    : options_(options),
      watch_(!options.json),
      content_(OpenContent(options)),
      scheme_(content_.Scheme()) {
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
  throw NothingThere("find the focused element", "no element has the focus",
                     "name one with --at or --find");
}

tessel::Element Inspection::FindAt(POINT point) {
  const std::string what = "find " + TargetName(options_);
  auto found = Search(what, content_.Scheme(), [&] { return content_.At(point, options_.option); });
  if (!found) throw NothingThere(what, "there is none", "try another point");
  Remember(*found);
  return std::move(*found);
}

tessel::Element Inspection::FindOnly(const SearchTexts& texts) {
  const std::string what = "find " + TargetName(options_);
  std::vector<tessel::Element> found = Find(what, SearchFor(texts));
  if (found.size() == 1) return std::move(found.front());
  throw NothingThere(what, std::to_string(found.size()) + " elements match",
                     found.empty() ? "see what there is with tessel tree"
                                   : "see them with tessel find, and add texts until one is left");
}

std::optional<tessel::Element> Inspection::FindFocused() {
  const std::string what = "find the focused element";
  auto found = Search(what, SL_NO_URI, [&] { return content_.Focused(); });
  if (found) Remember(*found);
  return found;
}

tessel::Element Inspection::AncestorOf(tessel::Element& element, int steps) {
  std::optional<tessel::Element> ancestor = ParentOf(element);
  for (int step = 1; step < steps && ancestor; ++step) ancestor = ParentOf(*ancestor);
  if (ancestor) return std::move(*ancestor);
  const std::string name =
      steps == 1 ? "parent" : "ancestor " + std::to_string(steps) + " steps up";
  throw NothingThere("find the " + name + " of " + NameOf(element), "it has none",
                     "take fewer steps");
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
  auto found = Search(what, content_.Scheme(), [&] { return content_.Find(search); });
  if (!found.empty()) Remember(found.front());
  return found;
}

// If no broker shows the content, a search injects a broker and asks all brokers again.
std::uint32_t Inspection::LongestCall() const {
  if (scheme_ != SL_NO_URI) return wire::kLongestRoundTripMilliseconds;
  const auto count =
      static_cast<std::uint32_t>(wire::SchemesToTry(tessel::Wide(options_.address)).size());
  const std::uint32_t brokers = count * wire::kLongestRoundTripMilliseconds;
  return brokers + wire::kLongestInjectionMilliseconds + brokers;
}

InspectorError Inspection::NothingThere(const std::string& what, const std::string& reason,
                                        const std::string& cure) const {
  return MakeRefusal(ExitCode::kNothingThere, what, reason, cure, options_.address);
}

std::string NameOf(const tessel::Element& element) {
  return "element " + tessel::Quoted(element.Id());
}

tessel::Search SearchFor(const SearchTexts& texts) {
  return {tessel::Wide(texts[0]), tessel::Wide(texts[1]), tessel::Wide(texts[2])};
}
