#include "tools/inspector/Inspection.h"

#include <memory>
#include <utility>
#include <vector>

#include "TesselSilverlight.h"
#include "tools/inspector/CallNotice.h"
#include "tools/inspector/ResultText.h"
#include "tools/inspector/TargetWindow.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"

namespace {

using tools::Narrow;
using tools::Printable;
using tools::PrintLine;
using tools::Wide;

// What the module may wait for: a broker's start; connecting, writing and reading; injection.
constexpr int kRoundTripSeconds = 16 + 3 * 18;
constexpr int kInjectionSeconds = 30 + 11;

int SearchSeconds(const std::string& address) {
  const bool hasOwnScheme =
      address.starts_with("http:") || address.starts_with("https:") || address.starts_with("file:");
  const int search = (hasOwnScheme ? 2 : 1) * kRoundTripSeconds;
  return search + kInjectionSeconds + search;
}

std::string IdOf(const SLElemData& element) {
  return Narrow({element.objectId, ::SysStringLen(element.objectId)});
}

std::string NameOf(const SLElemData& element) { return "element " + tools::Quoted(IdOf(element)); }

struct Releaser {
  void operator()(SLElemData* element) const {
    const CallNotice notice("release " + NameOf(*element), kRoundTripSeconds);
    delete element;
  }
};
using ElementOwner = std::unique_ptr<SLElemData, Releaser>;

class Inspection {
 public:
  explicit Inspection(const InspectorOptions& options)
      : options_(options), window_(FindTargetWindow(options.window)) {}

  void Run() const {
    ElementOwner element = options_.at ? FindAtPoint(*options_.at) : FindFocused();
    for (int step = 0; step < options_.parentSteps; ++step) element = ParentOf(*element);
    switch (options_.report) {
      case Report::kElement:
        return ReportElement(*element);
      case Report::kRectangle:
        return ReportRectangle(*element);
      case Report::kAttribute:
        return ReportAttribute(*element);
      case Report::kItems:
        return ReportItems(*element);
    }
  }

 private:
  // `what` names the work: "find the element at 1,2".
  template <class Call>
  void Do(const std::string& what, int longestSeconds, Call call) const {
    int code = 0;
    {
      const CallNotice notice(what, longestSeconds);
      code = call();
    }
    if (code != SL_SUCCESS) throw CallError(what, options_.address, code);
  }

  ElementOwner FindAtPoint(POINT point) const {
    SLElemData content;
    content.hwnd = window_;
    content.sourceUri = Wide(options_.address).c_str();
    content.uriScheme = tools::SchemeFromName(options_.scheme);
    ElementOwner found(new SLElemData);
    const std::string name =
        "the element at " + std::to_string(point.x) + ',' + std::to_string(point.y);
    const int seconds =
        content.uriScheme == SL_NO_URI ? SearchSeconds(options_.address) : kRoundTripSeconds;
    Do("find " + name, seconds, [&] {
      return TesselSilverlight::GetElemFromPoint(content, point, options_.option, *found);
    });
    return Existing(std::move(found), "cannot find " + name + ": there is none; try another point");
  }

  ElementOwner FindFocused() const {
    ElementOwner found(new SLElemData);
    found->sourceUri = Wide(options_.address).c_str();
    Do("find the focused element", SearchSeconds(options_.address),
       [&] { return TesselSilverlight::GetFocusedElement(window_, *found); });
    return Existing(
        std::move(found),
        "cannot find the focused element: no element has the focus; name one with --at X,Y");
  }

  ElementOwner ParentOf(const SLElemData& child) const {
    ElementOwner parent(new SLElemData);
    Do("find the parent of " + NameOf(child), kRoundTripSeconds,
       [&] { return TesselSilverlight::GetParentElement(child, *parent); });
    return Existing(std::move(parent), "cannot find the parent of " + NameOf(child) +
                                           ": it has none; take fewer steps");
  }

  ElementOwner Existing(ElementOwner element, const std::string& absence) const {
    if (::SysStringLen(element->objectId) > 0) return element;
    throw InspectorError(ExitCode::kNothingThere,
                         absence + "\n  address: " + Printable(options_.address));
  }

  static void PrintId(const SLElemData& element) {
    PrintLine("element: " + Printable(IdOf(element)));
  }

  static void ReportElement(const SLElemData& element) {
    PrintId(element);
    PrintLine("window: " + tools::HandleText(element.hwnd));
    PrintLine("process: " + std::to_string(element.processId));
    PrintLine("scheme: " + tools::NameOfScheme(element.uriScheme));
  }

  void ReportRectangle(const SLElemData& element) const {
    RECT rect = {};
    Do("read the rectangle of " + NameOf(element), kRoundTripSeconds,
       [&] { return TesselSilverlight::GetElemRectangle(element, rect); });
    PrintId(element);
    PrintLine("left: " + std::to_string(rect.left));
    PrintLine("top: " + std::to_string(rect.top));
    PrintLine("right: " + std::to_string(rect.right));
    PrintLine("bottom: " + std::to_string(rect.bottom));
  }

  void ReportAttribute(const SLElemData& element) const {
    std::wstring name = Wide(options_.attribute);
    CComBSTR text;
    Do("read the attribute " + tools::Quoted(options_.attribute) + " of " + NameOf(element),
       kRoundTripSeconds,
       [&] { return TesselSilverlight::GetAttribute(element, name.data(), &text); });
    PrintId(element);
    PrintLine(Printable(options_.attribute) + ": " +
              Printable(Narrow({text.m_str, text.Length()})));
  }

  void ReportItems(const SLElemData& element) const {
    std::vector<CComBSTR, HeapAllocator<CComBSTR>> items;
    Do("read the items of " + NameOf(element), kRoundTripSeconds,
       [&] { return TesselSilverlight::GetItems(element, 0 /*flag*/, items); });
    PrintId(element);
    PrintLine("items: " + std::to_string(items.size()));
    for (const CComBSTR& item : items) {
      PrintLine("  " + Printable(Narrow({item.m_str, item.Length()})));
    }
  }

  const InspectorOptions& options_;
  const HWND window_;
};

}  // namespace

void Inspect(const InspectorOptions& options) { Inspection(options).Run(); }
