// Runs in the client. Finds the elements of Silverlight content, reads and drives them. C++20,
// headers only. A program includes this header and links TesselSLB_x64.dll (CMake:
// TesselSLB::Client).
//
//     tessel::Content content(L"Order form", L"http://shop.example/orders.html");
//     std::optional<tessel::Element> user = content.FindFirst({.text3 = L"user"});
//     if (user) user->SetValue(L"Ada");
//
// How it works: content runs inside a window, and a program that is called the broker answers for
// it. Each function of Content and Element sends a request to the broker through a pipe and waits
// for the answer, unless its comment says that it sends nothing. If no broker runs yet, the
// function starts or injects one, which can take minutes. A function takes at most 54 s with a
// broker that runs (18 s each to connect, to write and to read), 70 s if it starts a broker, and
// 320 s if it searches and injects a broker. A hostile broker can make all of these longer. With a
// scheme (see Content) no function injects a broker, except for Focused().
//
// Elements: the broker keeps an object for each element that it hands out, until the client
// releases the element. An Element releases itself, by one request, when it is destroyed.
//
// Failures: "not found" is not a failure. The function then returns std::nullopt or an empty list.
// Every other failure throws Error. If memory is exhausted, std::bad_alloc is thrown.
//
// A lost broker: after SL_CANNOT_READ (-6), SL_CANNOT_CONNECT (-7) and SL_BROKER_NOT_STARTED (-9)
// the content counts as lost (Error::BrokerIsLost), because each further request to a broker that
// has ended or hangs can take a minute. Which of the three codes comes depends on timing. While the
// content is lost, releasing elements sends nothing. If the broker only hangs, it keeps these
// objects. Other functions still send their requests, and the next answer of the broker ends this
// state. A broker that was started again does not know the old elements: find them again. If the
// window has gone, the Content never works again: make a new one.
//
// Texts are UTF-16 without U+0000. A text that holds U+0000 is refused with -5, because messages to
// the broker cannot carry it. Narrow() and Wide() of tessel/Text.h convert from and to UTF-8.
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

// One call to a function of the module (TesselSLB_x64.dll).
struct Call {
  const char* function = "";  // the name of the module's function, for example "GetAttribute"
  std::wstring elementId;     // empty if the call is not about one element
  std::wstring address;       // of the content
};

// Any failure except exhausted memory. what() returns all fields as one UTF-8 text.
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
// Element, and 0 means all levels. With option2 a text matches if it is a part of the text of the
// element.
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

// A check for a Condition: a function that looks at the content and returns true, or a
// std::optional that has a value, if the condition is met. If not, the function stores in `seen`
// what it found.
template <class Look>
concept IsLook = requires(Look look, std::wstring& seen) {
  static_cast<bool>(look(seen));
};

struct Ancestor;

// One element of the content. It can be moved and not copied: store it with std::move, and loop
// over elements with auto&. It may outlive its Content. Functions that send a request are not
// const.
//
// After Release(), Abandon() or a move the Element names no element. Its Id() is empty, and all
// functions that send a request, Release() too, throw Error with -13 and send nothing.
class Element {
 public:
  Element(Element&& other) noexcept;
  Element& operator=(Element&& other) noexcept;  // releases the element that it had
  ~Element();                                    // releases the element; ignores failures

  [[nodiscard]] std::wstring Id() const;

  // The record of the module, for example for its window and scheme. The Element keeps owning it.
  // Only Find() and FindFirst() set its `rect`.
  const SLElemData& Record() const { return record_; }

  // The broker defines the order of lists. SceneBroker lists ancestors from the parent up to the
  // root, and the selector from the root down to the element.
  [[nodiscard]] std::optional<Element> Parent();
  [[nodiscard]] std::vector<Ancestor> Ancestors();  // -12 if elements and numbers differ in count
  [[nodiscard]] std::vector<Element> Selector();    // the elements of the default selector
  [[nodiscard]] std::vector<Element> Find(const Search& search);  // all matches below this element
  [[nodiscard]] Identity Identify();
  [[nodiscard]] Identity Identify(const Element& ancestor);  // relative to that element
  [[nodiscard]] RECT Rectangle();  // in the broker's coordinates, as all points and rectangles

  // Returns an attribute or a state. SceneBroker has the states "value", "checked" ("true" or
  // "false") and "selected". Returns nothing if the broker answers with any positive status: the
  // element has no such attribute, or it no longer exists. To tell these two apart, find the
  // element again.
  [[nodiscard]] std::optional<std::wstring> Attribute(std::wstring_view name);

  // Returns the texts of the items of a list. Returns nothing if the broker answers with any
  // positive status: the element is not a list, or it no longer exists. Store the result before you
  // loop over it: for (... : *element.Items()) would use a destroyed optional.
  [[nodiscard]] std::optional<std::vector<std::wstring>> Items();

  // Act on the element. Success means that the broker has accepted the command. The content may
  // change later: wait with AttributeIs().
  void Click();
  void SetValue(std::wstring_view text);
  void SetFocus();
  void Check(bool on = true);
  void Select(std::wstring_view item);

  // Releases the element now, by one request, and never again. Sends nothing while the content is
  // lost. Afterwards the Element names no element, even if Release() throws.
  void Release();

  // Gives the element up and sends nothing. The broker keeps its object until it ends.
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

// Receives a notice of each call to the module, for example to show progress or to measure. This
// includes calls that fail before they send anything.
class CallObserver {
 public:
  virtual void Begin(const Call& call) = 0;
  virtual void End(const Call& call, int code) noexcept = 0;  // also after a call that threw

 protected:
  ~CallObserver() = default;
};

// The content of one window at one address. Copies refer to the same content.
class Content {
 public:
  // The constructors send nothing. They throw Error with -5 if the address is empty, if there is no
  // such window, or if not exactly one top-level window has exactly this title. The title is looked
  // up only now. Only the scheme, the host and the port of the address select the broker. Spell
  // them exactly as the broker prints them.
  //
  // `scheme` selects the broker: SL_TAILORED_URI, SL_HTTP_URI, SL_HTTPS_URI or SL_FILE_URI (see
  // TesselCodes.h). With SL_NO_URI the functions of this class search for the broker. The search
  // tries the tailored broker first (a broker for one site alone), and then the broker for the
  // scheme of the address. If neither shows the content, a broker is injected into the process of
  // the window.
  Content(HWND window, std::wstring_view address, SLUriScheme scheme = SL_NO_URI);
  Content(std::wstring_view title, std::wstring_view address, SLUriScheme scheme = SL_NO_URI);

  Content(const Content&) = default;  // there is no move constructor, so a move copies
  Content& operator=(const Content&) = default;

  HWND Window() const;
  SLUriScheme Scheme() const;  // the one that was given

  // Returns the element at a point. The broker defines the meaning of `option`; SceneBroker ignores
  // it.
  [[nodiscard]] std::optional<Element> At(POINT point, int option = 0);

  // Returns the element that has the focus. This function always searches, beginning with the
  // tailored broker. So it works only for a Content with SL_NO_URI or SL_TAILORED_URI (-5 for
  // others).
  [[nodiscard]] std::optional<Element> Focused();

  // Return all matching elements, or the first one of them. FindFirst asks for all matching
  // elements too, and releases the others by one request each. So a narrow search is faster.
  [[nodiscard]] std::vector<Element> Find(const Search& search);
  [[nodiscard]] std::optional<Element> FindFirst(const Search& search);

  // The observer must live as long as the content and its elements. Null removes the observer.
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
template <IsLook LookFunction>
class Condition {
 public:
  Condition(const Content& content, std::wstring what, LookFunction look)
      : session_(content.session_), what_(std::move(what)), look_(std::move(look)) {}
  Condition(const Element& element, std::wstring what, LookFunction look)
      : session_(element.session_),
        elementId_(element.Id()),
        what_(std::move(what)),
        look_(std::move(look)) {}

  const std::wstring& What() const { return what_; }
  auto Look(std::wstring& seen) { return look_(seen); }

 private:
  template <IsLook AnyLook>
  friend auto WaitUntil(Condition<AnyLook> condition, std::chrono::milliseconds timeout,
                        std::chrono::milliseconds interval);

  std::shared_ptr<Session> session_;
  std::wstring elementId_;  // empty if the condition is about the content
  std::wstring what_;
  LookFunction look_;
};

// Predefined conditions. WaitUntil(IsThere(...)) returns the first matching element, as FindFirst
// does. AttributeIs compares the whole text, and `element` must live until the wait has ended.
auto IsThere(const Content& content, const Search& search);
auto IsGone(const Content& content, const Search& search);
auto AttributeIs(Element& element, std::wstring_view name, std::wstring_view text);

// Checks the condition at once, and again after each interval, until it is met. If the check
// returns an optional, returns its value. Otherwise returns nothing.
//
// Only the first check may start or inject a broker. Later checks use the scheme that was found,
// and throw -7 without a request if that broker has ended. (A check that calls Focused(), or
// another Content, can still start or inject a broker.) Every Error that a check throws ends the
// wait, even if its code is a positive status. Attribute() and Items() do not throw for a positive
// status; they return nothing.
//
// After the time-out it throws Error with the code kTimedOut. Its meaning says what was waited for,
// how long, and what was seen last. A check that has begun is not interrupted. So a broker that
// hangs makes the wait longer by the requests of one check, up to 54 s each.
template <IsLook Look>
auto WaitUntil(Condition<Look> condition, std::chrono::milliseconds timeout,
               std::chrono::milliseconds interval = std::chrono::milliseconds(250));

}  // namespace tessel

#include "tessel/ClientImplementation.h"
