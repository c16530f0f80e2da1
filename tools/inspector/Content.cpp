#include "tools/inspector/Content.h"

#include <utility>

#include "tools/inspector/CallNotice.h"
#include "tools/inspector/OptionText.h"
#include "tools/inspector/TargetWindow.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"
#include "wire/Addresses.h"
#include "wire/Timeouts.h"

namespace {

// A search asks the tailored broker and, if the address has a scheme, the broker of that scheme.
// If neither shows the content, it injects a broker and asks again.
std::uint32_t LongestSearch(const std::string& address) {
  const bool hasOwnScheme = wire::GetUriScheme(tools::Wide(address)).has_value();
  const std::uint32_t brokers = (hasOwnScheme ? 2 : 1) * wire::kLongestRoundTripMilliseconds;
  return brokers + wire::kLongestInjectionMilliseconds + brokers;
}

// Names the target of the search in messages.
std::string TargetName(const InspectorOptions& options) {
  if (options.at) return "the element at " + TextOf(*options.at);
  if (options.focus) return "the focused element";
  if (options.find) return "the element that matches " + tools::Quoted(TextOf(*options.find));
  return "the content";
}

HWND FindWindowOf(const InspectorOptions& options) {
  try {
    return FindTargetWindow(options.window);
  } catch (const WindowError& error) {
    throw MakeRefusal(ExitCode::kUsage, "find " + TargetName(options), error.what(),
                      options.address);
  }
}

// Returns the code of the call. Prints a notice if the call takes long.
int Watched(const std::string& what, std::uint32_t longestMilliseconds,
            const std::function<int()>& call) {
  const CallNotice notice(what, longestMilliseconds);
  return call();
}

bool NamesElement(const ElementOwner& element) { return ::SysStringLen(element->objectId) > 0; }

ElementOwner OrNone(ElementOwner element) {
  return NamesElement(element) ? std::move(element) : ElementOwner();
}

}  // namespace

Content::Content(const InspectorOptions& options)
    : options_(options), window_(FindWindowOf(options)) {}

ElementOwner Content::FindElement() const {
  ElementOwner element = FindNamed();
  return options_.parentSteps == 0 ? std::move(element)
                                   : AncestorOf(*element, options_.parentSteps);
}

ElementOwner Content::FindNamed() const {
  if (options_.at) return FindAt(*options_.at);
  if (options_.find) return FindOnly(*options_.find);
  ElementOwner found = FindFocused();
  if (found) return found;
  throw MakeRefusal(ExitCode::kNothingThere, "find the focused element",
                    "no element has the focus; name one with --at or --find");
}

ElementOwner Content::FindAt(POINT point) const {
  SLElemData content = Whole();
  ElementOwner found(new SLElemData);
  const std::string what = "find " + TargetName(options_);
  Search(what, content.uriScheme, [&] {
    return TesselSilverlight::GetElemFromPoint(content, point, options_.option, *found);
  });
  if (NamesElement(found)) return found;
  throw MakeRefusal(ExitCode::kNothingThere, what, "there is none; try another point");
}

ElementOwner Content::FindOnly(const SearchTexts& texts) const {
  SLElemData content = Whole();
  const std::string what = "find " + TargetName(options_);
  ElementList found = FindBelow(content, what, texts, 0 /*all levels*/, false /*containing*/);
  const std::size_t count = found.records.size();
  if (count == 1) return ElementOwner(new SLElemData(std::move(found.records.front())));
  throw MakeRefusal(
      ExitCode::kNothingThere, what,
      std::to_string(count) + " elements match; " +
          (count == 0 ? "see what there is with tessel tree"
                      : "see them with tessel find, and add texts until one is left"));
}

ElementOwner Content::FindFocused() const {
  ElementOwner found(new SLElemData);
  found->sourceUri = tools::Wide(options_.address).c_str();
  Search("find the focused element", SL_NO_URI,
         [&] { return TesselSilverlight::GetFocusedElement(window_, *found); });
  return OrNone(std::move(found));
}

ElementOwner Content::ParentOf(const SLElemData& child) const {
  ElementOwner parent(new SLElemData);
  Do("find the parent of " + NameOf(child),
     [&] { return TesselSilverlight::GetParentElement(child, *parent); });
  return OrNone(std::move(parent));
}

ElementOwner Content::AncestorOf(const SLElemData& element, int steps) const {
  ElementOwner ancestor = ParentOf(element);
  for (int step = 1; step < steps && ancestor; ++step) ancestor = ParentOf(*ancestor);
  if (ancestor) return ancestor;
  const std::string name =
      steps == 1 ? "parent" : "ancestor " + std::to_string(steps) + " steps up";
  throw MakeRefusal(ExitCode::kNothingThere, "find the " + name + " of " + NameOf(element),
                    "it has none; take fewer steps");
}

ElementList Content::FindBelow(SLElemData& root, const std::string& what, const SearchTexts& texts,
                               int levels, bool containing) const {
  std::array<std::wstring, 3> wide;
  for (std::size_t i = 0; i < wide.size(); ++i) wide[i] = tools::Wide(texts[i]);
  ElementList found;
  Search(what, root.uriScheme, [&] {
    return TesselSilverlight::FindCollection(root, wide[0].data(), wide[1].data(), wide[2].data(),
                                             levels, containing, found.records);
  });
  return found;
}

SLElemData Content::Whole() const {
  SLElemData content;
  content.hwnd = window_;
  content.sourceUri = tools::Wide(options_.address).c_str();
  content.uriScheme = tools::SchemeFromName(options_.scheme);
  return content;
}

void Content::Do(const std::string& what, const std::function<int()>& call) const {
  Try(what, SL_SUCCESS, call);
}

bool Content::Try(const std::string& what, int refusal, const std::function<int()>& call) const {
  const int code = Watched(what, wire::kLongestRoundTripMilliseconds, call);
  if (code != SL_SUCCESS && code != refusal) throw MakeCallFailure(what, options_.address, code);
  return code == SL_SUCCESS;
}

void Content::Search(const std::string& what, DWORD scheme,
                     const std::function<int()>& call) const {
  const std::uint32_t longest =
      scheme == SL_NO_URI ? LongestSearch(options_.address) : wire::kLongestRoundTripMilliseconds;
  const int code = Watched(what, longest, call);
  if (code != SL_SUCCESS) throw MakeCallFailure(what, options_.address, code);
}

InspectorError Content::MakeRefusal(ExitCode exitCode, const std::string& what,
                                    const std::string& reasonAndCure) const {
  return ::MakeRefusal(exitCode, what, reasonAndCure, options_.address);
}
