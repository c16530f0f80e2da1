// Runs in the client. Finds the elements of Silverlight content, reads and drives them. C++20,
// headers only. A program includes this header and links TesselSLB_x64.dll (CMake:
// TesselSLB::Client).
//
//     tessel::Content content(L"Order form", L"http://shop.example/orders.html");
//     std::optional<tessel::Element> user = content.FindFirst({.text3 = L"user"});
//     if (user) user->SetValue(L"Ada");
//
// How it works: content runs inside a window, and a broker answers for it. Each function below that
// says "calls" sends one request through a pipe to that broker and waits for the answer. A broker
// that does not run yet is started or injected, which can take minutes.
// A call to a running broker ends after at most 54 s (18 s each for connecting, writing and
// reading), a call that starts a broker after 70 s, a search that injects a broker after 320 s.
// With a scheme (see Content) no function injects a broker, except for Focused().
//
// Elements: the broker keeps an object for each element that it hands out, until the client
// releases it. An Element owns this object and releases it by one call when it is destroyed.
//
// Failures: "not there" is not a failure. These functions return std::nullopt or an empty list
// then. Every other failure throws Error. Exhausted memory passes as std::bad_alloc.
//
// A lost broker: after SL_CANNOT_READ (-6), SL_CANNOT_CONNECT (-7) and SL_BROKER_NOT_STARTED (-9)
// the content counts as lost (Error::BrokerIsLost), because each further call to a broker that has
// ended or hangs can take a minute. Which of the three comes is chance. While the content is lost,
// elements are released without a call. Other functions still call, and the next answer of the
// broker ends this state. If the window has gone with its broker, the Content and its elements
// never work again: make a new Content.
//
// Texts are UTF-16 without U+0000: a text that holds one is refused with -5, because the bridge
// cannot carry it. Narrow() and Wide() of tessel/Text.h convert from and to UTF-8.
//
// Threads: one thread at a time uses a Content, its copies and its elements. Different contents can
// be used by different threads at the same time.
#pragma once

#if __cplusplus < 202002L && (!defined(_MSVC_LANG) || _MSVC_LANG < 202002L)
#error "tessel/Client.h needs C++20"
#endif

#include <chrono>
#include <concepts>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TesselSilverlight.h"
#include "tessel/ResultCodes.h"
#include "tessel/Text.h"
#include "tessel/WindowSearch.h"

namespace tessel {

class Session;

// One call to the module.
struct Call {
  const char* function = "";  // the name of the module's function, for example "GetAttribute"
  std::wstring elementId;     // empty if the call is not about one element
  std::wstring address;       // of the content
};

// Any failure except exhausted memory. what() returns all of it as UTF-8 text.
class Error : public std::runtime_error {
 public:
  // Takes name, meaning and cure from the table of result codes.
  Error(int code, const Call& call);
  Error(int code, const std::string& meaning, const std::string& cure, const Call& call);

  bool BrokerIsLost() const;

  int code;             // an SLResult, kTimedOut (-103), or the broker's own status
  std::string name;     // of the code, for example "SL_CANNOT_READ"
  std::string meaning;  // UTF-8
  std::string cure;     // UTF-8
  std::string function;
  std::wstring elementId;  // empty if the call was not about one element
  std::wstring address;
};

// Three texts and two options that select elements. The broker defines their meaning. For
// SceneBroker the texts are name, type and id, and an empty text matches everything. option1 is the
// number of levels to search: 1 means only the roots of a Content, or only the children of an
// Element, and 0 means all. With option2 a text needs to be only a part.
struct Search {
  std::wstring text1 = {}, text2 = {}, text3 = {};
  int option1 = 0;
  bool option2 = false;
};

// Three texts and a number that identify an element. The broker defines their meaning.
struct Identity {
  std::wstring text1, text2, text3;
  int number = 0;
};

// A look at the content, for a Condition: a function that makes calls and returns whether the
// condition is met, as a bool or as an optional value. It stores a text in `seen` that says what it
// found instead.
template <class Look>
concept IsLook = requires(Look look, std::wstring& seen) {
  static_cast<bool>(look(seen));
};

struct Ancestor;

// One element of the content. It can be moved and not copied: store it with std::move, and loop
// over elements with auto&. It may outlive its Content. Functions that call are not const.
//
// After Release(), Abandon() or a move the Element names no element. Its Id() is empty, and all
// functions that call, Release() too, throw Error with -13 and send nothing.
class Element {
 public:
  Element(Element&& other) noexcept;
  Element& operator=(Element&& other) noexcept;  // lets go of the element that it had
  ~Element();                                    // calls once; ignores failures

  [[nodiscard]] std::wstring Id() const;

  // The module's own record, for example for its window and scheme. It stays the element's. `rect`
  // is set only by Find() and FindFirst().
  const SLElemData& Record() const { return record_; }

  // Each of these functions calls once. The broker defines the order of lists. For SceneBroker
  // ancestors go from the parent up to the root, and the selector from the root down to the
  // element.
  [[nodiscard]] std::optional<Element> Parent();
  [[nodiscard]] std::vector<Ancestor> Ancestors();  // -12 if elements and numbers differ in count
  [[nodiscard]] std::vector<Element> Selector();    // the elements of the default selector
  [[nodiscard]] std::vector<Element> Find(const Search& search);  // all matches below this element
  [[nodiscard]] Identity Identify();
  [[nodiscard]] Identity Identify(const Element& ancestor);  // relative to that element
  [[nodiscard]] RECT Rectangle();  // in the broker's coordinates, as all points and rectangles

  // An attribute or a state. SceneBroker has the states "value", "checked" and "selected". Returns
  // nothing if the broker answers with any positive status: the element has no such attribute, or
  // it is gone. To tell these two apart, find the element again.
  [[nodiscard]] std::optional<std::wstring> Attribute(std::wstring_view name);

  // The texts of the items of a list. Returns nothing if the broker answers with any positive
  // status: the element is no list, or it is gone. Store the result before you loop over it:
  // for (... : *element.Items()) would use a destroyed optional.
  [[nodiscard]] std::optional<std::vector<std::wstring>> Items();

  // Success means that the broker has accepted the command. The content may change later: wait with
  // AttributeIs().
  void Click();
  void SetValue(std::wstring_view text);
  void SetFocus();
  void Check(bool on = true);
  void Select(std::wstring_view item);

  // Releases the element now, by one call, and never again. While the content is lost, it makes no
  // call. Lets go of the element even if it throws.
  void Release();

  // Lets go of the element without a call. The broker keeps its object until it ends.
  void Abandon() noexcept;

 private:
  friend class Session;
  template <IsLook Look>
  friend class Condition;
  Element(std::shared_ptr<Session> session, SLElemData&& record) noexcept;

  std::shared_ptr<Session> session_;
  SLElemData record_;
};

struct Ancestor {
  Element element;
  long number;  // the broker defines its meaning
};

// Is told of each call to the module, for example to show progress or to measure. A call that fails
// before anything is sent is one too.
class CallObserver {
 public:
  virtual void Begin(const Call& call) = 0;
  virtual void End(const Call& call, int code) noexcept = 0;  // also after a call that threw

 protected:
  ~CallObserver() = default;
};

// The content of one window at one address. Copies are the same content.
class Content {
 public:
  // Makes no call. Throws Error with -5 if the window does not exist, or if not exactly one
  // top-level window has exactly this title. The title is looked up only here. Of the address, the
  // scheme and the host with its port select the broker; write them as the broker prints them.
  //
  // `scheme` selects the broker: SL_TAILORED_URI, SL_HTTP_URI, SL_HTTPS_URI or SL_FILE_URI (see
  // TesselCodes.h). Without it, each function of this class searches for the broker: first for the
  // tailored one, then for the one of the address's scheme. If neither shows the content, a broker
  // is injected into the window's process.
  Content(HWND window, std::wstring_view address, SLUriScheme scheme = SL_NO_URI);
  Content(std::wstring_view title, std::wstring_view address, SLUriScheme scheme = SL_NO_URI);

  HWND Window() const;
  SLUriScheme Scheme() const;  // the one that was given

  // Each of these functions calls once, or once for each broker that a search asks.

  // The element at a point. `option` is passed on to the broker.
  [[nodiscard]] std::optional<Element> At(POINT point, int option = 0);

  // The element that has the focus. This always searches. So a Content with a scheme other than
  // SL_TAILORED_URI is refused with -5.
  [[nodiscard]] std::optional<Element> Focused();

  // All matching elements, or the first one of them. FindFirst asks for all of them too, and
  // releases the others by one call each, so a narrow search is faster.
  [[nodiscard]] std::vector<Element> Find(const Search& search);
  [[nodiscard]] std::optional<Element> FindFirst(const Search& search);

  // The observer must live as long as the content and its elements. Null: none.
  void Observe(CallObserver* observer);

 private:
  template <IsLook Look>
  friend class Condition;

  std::shared_ptr<Session> session_;
};

// What to wait for. `what` completes the sentence "waited until ...".
//
//     tessel::Condition hasItems(content, L"the list has items", [&](std::wstring& seen) {
//       seen = L"an empty list";
//       return !list.Items().value_or(std::vector<std::wstring>()).empty();
//     });
template <IsLook Look>
class Condition {
 public:
  Condition(const Content& content, std::wstring what, Look look)
      : session_(content.session_), what_(std::move(what)), look_(std::move(look)) {}
  Condition(const Element& element, std::wstring what, Look look)
      : session_(element.session_), what_(std::move(what)), look_(std::move(look)) {}

 private:
  template <IsLook AnyLook>
  friend auto WaitUntil(Condition<AnyLook> condition, std::chrono::milliseconds timeout,
                        std::chrono::milliseconds interval);

  std::shared_ptr<Session> session_;
  std::wstring what_;
  Look look_;
};

// Ready conditions. WaitUntil(IsThere(...)) returns the first matching element, as FindFirst.
// AttributeIs compares the whole text, and `element` must live until the wait has ended.
auto IsThere(const Content& content, const Search& search);
auto IsGone(const Content& content, const Search& search);
auto AttributeIs(Element& element, std::wstring_view name, std::wstring_view text);

// Looks at once, and again after each interval, until the condition is met. Returns the value of an
// optional, else nothing.
//
// Only the first look may start or inject a broker. Later ones use the scheme that was found, and
// throw -7 without a call if that broker has ended. Each Error that a look throws ends the wait,
// also a positive status. Attribute() and Items() return nothing instead of throwing a status.
//
// After the time-out it throws Error with the code kTimedOut. Its meaning says what was waited for,
// how long, and what was seen last. A look that has begun is not cut short. So a broker that hangs
// makes the wait longer by the calls of one look, up to 54 s each.
template <IsLook Look>
auto WaitUntil(Condition<Look> condition, std::chrono::milliseconds timeout,
               std::chrono::milliseconds interval = std::chrono::milliseconds(250));

}  // namespace tessel

#include "tessel/ClientImplementation.h"
