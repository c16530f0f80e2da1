// Runs in the client. Defines the functions that tessel/Client.h declares. Programs include
// tessel/Client.h, which includes this file.
#pragma once

#include "tessel/Client.h"
#include "tessel/Session.h"

namespace tessel {
namespace detail {

inline std::string Describe(int code, const std::string& name, const std::string& meaning,
                            const std::string& cure, const Call& call) {
  std::string text = call.function;
  if (!call.elementId.empty()) text += " of element " + Quoted(call.elementId);
  text += " failed with " + std::to_string(code) + " (" + name + "): " + meaning +
          ". To do: " + cure + '.';
  return call.address.empty() ? text : text + " Address: " + Printable(Narrow(call.address));
}

inline std::wstring WideQuoted(std::wstring_view text) { return Wide(Quoted(text)); }

inline std::wstring TextOf(const Search& search) {
  return WideQuoted(search.text1) + L", " + WideQuoted(search.text2) + L", " +
         WideQuoted(search.text3);
}

// Returns the value of `met` if `met` is an optional. Returns void if `met` is a bool.
template <class Met>
auto ValueOf(Met met) {
  if constexpr (requires { met.has_value(); }) return std::move(*met);
}

inline Error TimedOut(const std::wstring& what, std::chrono::milliseconds timeout,
                      const std::wstring& seen, const std::wstring& elementId,
                      const std::wstring& address) {
  return {kTimedOut,
          "waited " + std::to_string(timeout.count()) + " ms until " + Narrow(what) +
              "; seen last: " + Narrow(seen),
          DescribeResult(kTimedOut).cure,
          {"WaitUntil", elementId, address}};
}

inline HWND CheckedWindow(HWND window, std::wstring_view address) {
  if (::IsWindow(window)) return window;
  throw Error(SL_INVALID_ARGUMENT, "there is no window " + HandleText(window),
              "take the handle that the broker prints, or give the title",
              {"Content", L"", std::wstring(address)});
}

inline std::wstring_view CheckedAddress(std::wstring_view address) {
  if (!address.empty() && address.find(L'\0') == address.npos) return address;
  throw Error(SL_INVALID_ARGUMENT, "the address is empty or holds U+0000",
              "give the address that the broker prints", {"Content", L"", L""});
}

inline HWND OnlyWindowWithTitle(std::wstring_view title, std::wstring_view address) {
  const std::vector<HWND> found = WindowsWithTitle(title);
  const Call call = {"Content", L"", std::wstring(address)};
  if (found.empty()) {
    throw Error(SL_INVALID_ARGUMENT, "no top-level window has the title " + Quoted(title),
                "start the program that shows the window, write its title exactly, or give its "
                "handle (0x...)",
                call);
  }
  if (found.size() == 1) return found.front();
  std::string handles;
  for (HWND window : found) handles += ' ' + HandleText(window);
  throw Error(SL_INVALID_ARGUMENT,
              std::to_string(found.size()) + " windows have the title " + Quoted(title),
              "give one of their handles:" + handles, call);
}

}  // namespace detail

inline Error::Error(int number, const Call& call)
    : Error(number, DescribeResult(number).meaning, DescribeResult(number).cure, call) {}

inline Error::Error(int number, const std::string& explanation, const std::string& advice,
                    const Call& call)
    : std::runtime_error(
          detail::Describe(number, DescribeResult(number).name, explanation, advice, call)),
      code(number),
      name(DescribeResult(number).name),
      meaning(explanation),
      cure(advice),
      function(call.function),
      elementId(call.elementId),
      address(call.address) {}

inline bool Error::BrokerIsLost() const { return detail::MeansLost(code); }

// Functions of Element.

inline Element::Element(std::shared_ptr<Session> session, SLElemData&& record) noexcept
    : session_(std::move(session)), record_(std::move(record)) {}

// Copies `session_` and does not move it: the functions of `other` still need it to throw an
// Error.
inline Element::Element(Element&& other) noexcept
    : session_(other.session_), record_(std::move(other.record_)) {}

inline Element& Element::operator=(Element&& other) noexcept {
  if (this == &other) return *this;
  session_->LetGo(record_);
  session_ = other.session_;
  record_ = std::move(other.record_);
  return *this;
}

inline Element::~Element() { session_->LetGo(record_); }

inline std::wstring Element::Id() const {
  return {record_.objectId, ::SysStringLen(record_.objectId)};
}

inline std::optional<Element> Element::Parent() {
  SLElemData parent;
  session_->Do("GetParentElement", record_,
               [&] { return TesselSilverlight::GetParentElement(record_, parent); });
  return session_->OwnIfThere(std::move(parent));
}

inline std::vector<Ancestor> Element::Ancestors() {
  Session::Owned found(*session_);
  std::vector<long, HeapAllocator<long>> numbers;
  const char* const function = "GetAncestryInfo";
  session_->Do(function, record_,
               [&] { return TesselSilverlight::GetAncestryInfo(record_, found.records, numbers); });
  if (numbers.size() != found.records.size()) {
    throw Error(SL_ARCHIVE_FAILURE,
                "the broker gave " + std::to_string(found.records.size()) + " elements and " +
                    std::to_string(numbers.size()) + " numbers",
                "look whether it is of this version", session_->CallOf(function, record_));
  }
  std::vector<Ancestor> ancestors;
  ancestors.reserve(numbers.size());
  for (Element& element : found.Take()) {
    ancestors.push_back({std::move(element), numbers[ancestors.size()]});
  }
  return ancestors;
}

inline std::vector<Element> Element::Selector() {
  Session::Owned chain(*session_);
  session_->Do("GetDefaultSelectorHierarchy", record_, [&] {
    return TesselSilverlight::GetDefaultSelectorHierarchy(record_, chain.records);
  });
  return chain.Take();
}

inline std::vector<Element> Element::Find(const Search& search) {
  // Refuses an Element without an id, because without an id the module searches the whole content.
  if (Id().empty()) throw session_->Failure(SL_INVALID_OBJECT, "FindCollection", record_);
  return session_->Collect(record_, search);
}

inline Identity Element::Identify() { return session_->Identify(nullptr, record_); }

inline Identity Element::Identify(const Element& ancestor) {
  return session_->Identify(&ancestor.record_, record_);
}

inline RECT Element::Rectangle() {
  RECT rect = {};
  session_->Do("GetElemRectangle", record_,
               [&] { return TesselSilverlight::GetElemRectangle(record_, rect); });
  return rect;
}

inline std::optional<std::wstring> Element::Attribute(std::wstring_view name) {
  const char* const function = "GetAttribute";
  std::wstring terminated = session_->Checked(name, function, record_);
  CComBSTR text;
  if (!session_->Try(function, record_, [&] {
        return TesselSilverlight::GetAttribute(record_, terminated.data(), &text);
      })) {
    return std::nullopt;
  }
  return detail::TextOf(text);
}

inline std::optional<std::vector<std::wstring>> Element::Items() {
  std::vector<CComBSTR, HeapAllocator<CComBSTR>> items;
  if (!session_->Try("GetItems", record_,
                     [&] { return TesselSilverlight::GetItems(record_, 0 /*flag*/, items); })) {
    return std::nullopt;
  }
  std::vector<std::wstring> texts;
  texts.reserve(items.size());
  for (const CComBSTR& item : items) texts.push_back(detail::TextOf(item));
  return texts;
}

inline void Element::Click() {
  session_->Do("ClickElem", record_,
               [&] { return TesselSilverlight::ClickElem(record_, 0, 0 /*reserved*/); });
}

inline void Element::SetValue(std::wstring_view text) {
  const std::wstring terminated = session_->Checked(text, "SetValue", record_);
  session_->Do("SetValue", record_,
               [&] { return TesselSilverlight::SetValue(record_, CComBSTR(terminated.c_str())); });
}

inline void Element::SetFocus() {
  session_->Do("SetFocus", record_, [&] { return TesselSilverlight::SetFocus(record_); });
}

inline void Element::Check(bool on) {
  session_->Do("CheckElem", record_, [&] { return TesselSilverlight::CheckElem(record_, on); });
}

inline void Element::Select(std::wstring_view item) {
  const std::wstring terminated = session_->Checked(item, "SelectItem", record_);
  session_->Do("SelectItem", record_, [&] {
    return TesselSilverlight::SelectItem(record_, CComBSTR(terminated.c_str()));
  });
}

inline void Element::Release() {
  const Session::Forgetting forgetting(record_);
  session_->Release(record_);
}

inline void Element::Abandon() noexcept { Session::Forget(record_); }

// Functions of Content.

inline Content::Content(HWND window, std::wstring_view address, SLUriScheme scheme)
    : session_(std::make_shared<Session>(detail::CheckedWindow(window, address),
                                         detail::CheckedAddress(address), scheme)) {}

inline Content::Content(std::wstring_view title, std::wstring_view address, SLUriScheme scheme)
    : Content(detail::OnlyWindowWithTitle(title, address), address, scheme) {}

inline HWND Content::Window() const { return session_->window; }

inline SLUriScheme Content::Scheme() const { return session_->scheme; }

inline void Content::Observe(CallObserver* observer) { session_->observer = observer; }

inline std::optional<Element> Content::At(POINT point, int option) {
  SLElemData window = session_->Whole(), found;
  session_->Find("GetElemFromPoint", window,
                 [&] { return TesselSilverlight::GetElemFromPoint(window, point, option, found); });
  return session_->OwnIfThere(std::move(found));
}

inline std::optional<Element> Content::Focused() {
  SLElemData found = session_->Whole();
  found.uriScheme = SL_NO_URI;
  const char* const function = "GetFocusedElement";
  if (session_->scheme != SL_NO_URI && session_->scheme != SL_TAILORED_URI) {
    throw Error(SL_INVALID_ARGUMENT,
                "the search for the focus asks the tailored broker first, not the one of the "
                "content's scheme",
                "use a content without a scheme, or with SL_TAILORED_URI",
                session_->CallOf(function, found));
  }
  session_->Find(function, found,
                 [&] { return TesselSilverlight::GetFocusedElement(session_->window, found); });
  return session_->OwnIfThere(std::move(found));
}

inline std::vector<Element> Content::Find(const Search& search) {
  SLElemData whole = session_->Whole();
  return session_->Collect(whole, search);
}

inline std::optional<Element> Content::FindFirst(const Search& search) {
  std::vector<Element> found = Find(search);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

// The conditions and WaitUntil.

inline auto IsThere(const Content& content, const Search& search) {
  return Condition(content, L"an element is there that matches " + detail::TextOf(search),
                   [content, search](std::wstring& seen) {
                     seen = L"no element matches";
                     return Content(content).FindFirst(search);
                   });
}

inline auto IsGone(const Content& content, const Search& search) {
  return Condition(content, L"no element is there that matches " + detail::TextOf(search),
                   [content, search](std::wstring& seen) {
                     const std::size_t count = Content(content).Find(search).size();
                     seen = L"matching elements: " + std::to_wstring(count);
                     return count == 0;
                   });
}

inline auto AttributeIs(Element& element, std::wstring_view name, std::wstring_view text) {
  return Condition(
      element,
      L"the attribute " + detail::WideQuoted(name) + L" of element " +
          detail::WideQuoted(element.Id()) + L" is " + detail::WideQuoted(text),
      [&element, name = std::wstring(name), text = std::wstring(text)](std::wstring& seen) {
        const std::optional<std::wstring> actual = element.Attribute(name);
        seen = actual ? detail::WideQuoted(*actual) : L"no such attribute";
        return actual == text;
      });
}

template <IsLook Look>
auto WaitUntil(Condition<Look> condition, std::chrono::milliseconds timeout,
               std::chrono::milliseconds interval) {
  using std::chrono::milliseconds;
  using Clock = std::chrono::steady_clock;
  // Sleep takes a 32-bit number of milliseconds, and 0xffffffff means for ever. A limit of one day
  // keeps each pause below that.
  constexpr milliseconds kLongestSleep = std::chrono::hours(24);
  const auto begin = Clock::now();
  std::wstring seen;
  for (bool isFirst = true;; isFirst = false) {
    {
      const Session::Look look(*condition.session_, isFirst);
      if (auto met = condition.Look(seen)) return detail::ValueOf(std::move(met));
    }
    const auto left = timeout - std::chrono::floor<milliseconds>(Clock::now() - begin);
    if (left <= milliseconds::zero()) {
      throw detail::TimedOut(condition.What(), timeout, seen, condition.elementId_,
                             condition.session_->address);
    }
    const milliseconds pause = (std::min)({left, interval, kLongestSleep});
    ::Sleep(static_cast<DWORD>((std::max)(pause, milliseconds::zero()).count()));
  }
}

}  // namespace tessel
