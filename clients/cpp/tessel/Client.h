// Runs in the client. Finds, reads and drives the elements of Silverlight content. For C++20. A
// program includes this header and links TesselSLB_x64.dll, which is called the module (CMake:
// TesselSLB::Client).
//
//     tessel::Content content(L"Order form", L"http://shop.example/orders.html");
//     std::optional<tessel::Element> user = content.FindFirst({.text3 = L"user"});
//     if (user) user->SetValue(L"Ada");
//
// How it works: Silverlight content runs inside a window. A program that is called the broker
// answers requests about the content. SceneBroker, which comes with this project, is such a
// program. Each function of Content and Element sends a request to the broker through a pipe and
// waits for the answer, unless it is const or its comment says that it sends nothing. If no broker
// runs yet, the function starts a broker, or injects one into the process of the window.
//
// Durations: a request takes at most 54 s with a broker that runs (18 s each to connect, to write
// and to read), 70 s if it starts a broker, and 320 s if it searches for a broker and injects one.
// A function that also releases elements sends one more request for each of them. A hostile broker
// can make a request take longer than that, because it can send an answer in many parts, and each
// part may take 18 s. Only a Content with SL_NO_URI injects a broker, except that Focused() of a
// Content with SL_TAILORED_URI can inject one, too.
//
// Elements: the broker keeps an object for each element that it has sent to the client, until the
// client releases the element. The destructor of Element releases the element by one request.
//
// Failures: "not found" is not a failure. The function then returns std::nullopt or an empty list.
// Every other failure throws Error. If memory is exhausted, std::bad_alloc is thrown. These headers
// translate the exceptions that the module throws (see TesselSilverlight.h). That is possible only
// if the same compiler built the program and the module. Otherwise these exceptions end the
// process.
//
// A lost broker: SL_CANNOT_READ (-6), SL_CANNOT_CONNECT (-7) and SL_BROKER_NOT_STARTED (-9) mean
// that the broker has ended or hangs, that its pipe stays busy, or that no broker could be started.
// Which of the three codes an Error has depends on timing. After one of them the content counts as
// lost (Error::BrokerIsLost). While the content is lost, releasing an element sends nothing,
// because each further request could take a minute. So a broker that only hangs keeps the objects
// of these elements. All other functions still send their requests. When the broker answers one of
// them, the content is no longer lost. A broker that was started again does not know the old
// elements: find them again. If the window was closed, the Content never works again: make a new
// Content.
//
// Texts are UTF-16 without U+0000. A text that holds U+0000 is refused with -5, because messages to
// the broker cannot carry it. In tessel/Text.h, Narrow() converts a text to UTF-8, and Wide()
// converts it from UTF-8.
//
// Threads: only one thread at a time may use a Content, its copies and its elements. Different
// threads may use different contents at the same time.
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

// Describes one call to a function of the module, TesselSLB_x64.dll.
struct Call {
  const char* function = "";  // the name of the module's function, for example "GetAttribute"
  std::wstring elementId;     // empty if the call is not about one element
  std::wstring address;       // the address of the content
};

// Thrown for every failure except exhausted memory. what() returns all members as one UTF-8 text.
class Error : public std::runtime_error {
 public:
  // Takes `name`, `meaning` and `cure` from the table in tessel/ResultCodes.h.
  Error(int code, const Call& call);
  Error(int code, const std::string& meaning, const std::string& cure, const Call& call);

  // Returns true for the codes -6, -7 and -9.
  bool BrokerIsLost() const;

  int code;                // an SLResult, kTimedOut (-103), or the broker's own status
  std::string name;        // the name of the code, for example "SL_CANNOT_READ"
  std::string meaning;     // what went wrong, in UTF-8
  std::string cure;        // what to do, in UTF-8
  std::string function;    // the name of the function that failed, for a log
  std::wstring elementId;  // empty if the call was not about one element
  std::wstring address;
};

// Three texts and two options that select elements. The broker defines their meaning. SceneBroker
// defines them so:
// - The texts are the name, the type and the id of an element. An empty text matches everything.
// - `option1` is the number of levels to search. 1 means only the roots of a Content, or only the
//   children of an Element. 0 means all levels.
// - If `option2` is true, the name, type or id of an element only needs to contain the text. If
//   `option2` is false, it must be equal to the text.
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

// The type of a function that checks whether a Condition is met. If the condition is met, the
// function returns true or a std::optional that has a value. Otherwise it returns false or
// std::nullopt, and describes in `seen` what it found instead. The text in `seen` becomes part of
// the message after a time-out.
template <class Look>
concept IsLook = requires(Look look, std::wstring& seen) {
  static_cast<bool>(look(seen));
};

struct Ancestor;

// One element of the content. An Element can be moved, but not copied: store it with std::move, and
// loop over elements with auto&. It may outlive its Content. Functions that send a request are not
// const.
//
// After Release() or Abandon(), or after it was moved from, an Element names no element. Then Id()
// returns an empty text, and every function that otherwise sends a request (Release() too) sends
// nothing and throws Error with -13.
class Element {
 public:
  Element(Element&& other) noexcept;
  Element& operator=(Element&& other) noexcept;  // first releases the element on the left side
  ~Element();                                    // releases the element, and ignores failures

  [[nodiscard]] std::wstring Id() const;

  // Returns the record that the module uses for the element. Read from it, for example, the window,
  // the process and the scheme. The record belongs to the Element. Its `rect` is empty unless
  // the Element was returned by Find(), FindFirst() or a wait for IsThere().
  const SLElemData& Record() const { return record_; }

  // Returns nothing if the element has no parent.
  [[nodiscard]] std::optional<Element> Parent();

  // Returns the ancestors of the element. The broker defines their order. SceneBroker lists them
  // from the parent up to the root. Throws Error with -12 if the broker does not send exactly one
  // number (Ancestor::number) for each element.
  [[nodiscard]] std::vector<Ancestor> Ancestors();

  // Returns a list of elements that the broker chooses for this element. The list is called the
  // default selector. The broker defines its meaning and its order. SceneBroker lists the elements
  // from the root down to this element.
  [[nodiscard]] std::vector<Element> Selector();

  // Returns all matching elements below this element.
  [[nodiscard]] std::vector<Element> Find(const Search& search);

  // Returns what identifies the element. With `ancestor` the broker identifies the element relative
  // to that ancestor. If the process or the scheme of the two elements differ, the function throws
  // Error with -13.
  [[nodiscard]] Identity Identify();
  [[nodiscard]] Identity Identify(const Element& ancestor);

  // Returns the rectangle that the element has now, in the broker's coordinates. All points and
  // rectangles use these coordinates.
  [[nodiscard]] RECT Rectangle();

  // Returns an attribute or a state as text. SceneBroker has the states "value", "checked" ("true"
  // or "false") and "selected". Returns nothing if the broker answers with any positive status.
  // Usually the element then has no such attribute, or the element no longer exists. To tell these
  // two cases apart, find the element again. Throws Error with -5 if `name` is empty.
  [[nodiscard]] std::optional<std::wstring> Attribute(std::wstring_view name);

  // Returns the texts of the items, if the element is a list. Returns nothing if the broker answers
  // with any positive status. Usually the element then is not a list, or it no longer exists. Store
  // the result in a variable before you loop over it: for (... : *element.Items()) uses an optional
  // that is already destroyed.
  [[nodiscard]] std::optional<std::vector<std::wstring>> Items();

  // The next five functions act on the element. When they return, the broker has accepted the
  // command, but the content may change later. To wait for the change, use WaitUntil() with
  // AttributeIs().
  void Click();
  void SetValue(std::wstring_view text);
  void SetFocus();
  void Check(bool on = true);           // unchecks the element if `on` is false
  void Select(std::wstring_view item);  // selects the item with this text

  // Releases the element now, by one request, so that the destructor sends nothing. Sends nothing
  // while the content is lost. Afterwards the Element names no element, even if Release() throws.
  void Release();

  // Gives the element up without a request. The broker keeps the object of the element until the
  // broker ends.
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

// Is told of each call to the module, for example to show progress or to measure durations. This
// includes calls that fail in the module before they send anything.
class CallObserver {
 public:
  virtual void Begin(const Call& call) = 0;

  // `code` is the result of the call, or SL_FAILURE if the module threw an exception.
  virtual void End(const Call& call, int code) noexcept = 0;

 protected:
  ~CallObserver() = default;
};

// The content of one window at one address. Copies refer to the same content.
class Content {
 public:
  // The constructors send nothing. They throw Error with -5 if the address is empty, if the window
  // does not exist, or if no window or more than one window has the title. Only top-level windows
  // with exactly this title count. The constructor searches for the title only once, so the title
  // may change later.
  //
  // `address` is the address of the content. Only its beginning is used to find the broker: http:
  // or https:, the host and the port. Of a file address, everything before the sixth slash is used.
  // For file:///C:/a/b/c.html this is file:///C:/a/b. Write this beginning exactly as SceneBroker
  // prints it when it starts.
  //
  // `scheme` names the kind of broker: SL_TAILORED_URI (a broker for one site alone), SL_HTTP_URI,
  // SL_HTTPS_URI or SL_FILE_URI. With SL_NO_URI the functions of this class search for the broker.
  // The search tries the tailored broker first, and then the broker for the scheme of the address.
  // If neither broker shows the content, the search injects a broker into the process of the
  // window.
  Content(HWND window, std::wstring_view address, SLUriScheme scheme = SL_NO_URI);
  Content(std::wstring_view title, std::wstring_view address, SLUriScheme scheme = SL_NO_URI);

  Content(const Content&) = default;  // there is no move constructor, so std::move also copies
  Content& operator=(const Content&) = default;

  HWND Window() const;
  SLUriScheme Scheme() const;  // the scheme that was passed to the constructor

  // Returns the element at a point. The broker defines the meaning of `option`. SceneBroker ignores
  // `option`.
  [[nodiscard]] std::optional<Element> At(POINT point, int option = 0);

  // Returns the element that has the focus. This function always searches for the broker, so it
  // works only for a Content with SL_NO_URI or SL_TAILORED_URI. For SL_HTTP_URI, SL_HTTPS_URI and
  // SL_FILE_URI it sends nothing and throws Error with -5, because the search could find another
  // broker.
  [[nodiscard]] std::optional<Element> Focused();

  // Find returns all matching elements, and FindFirst returns the first of them. FindFirst also
  // requests all matching elements, and then releases all except the first one, by one request
  // each. So FindFirst is fast only if few elements match.
  [[nodiscard]] std::vector<Element> Find(const Search& search);
  [[nodiscard]] std::optional<Element> FindFirst(const Search& search);

  // The observer must live as long as the content and its elements. Null removes the observer.
  // Sends nothing.
  void Observe(CallObserver* observer);

 private:
  template <IsLook Look>
  friend class Condition;

  std::shared_ptr<Session> session_;
};

// A condition that WaitUntil() waits for. `what` completes the sentence "waited until ...". `look`
// is the function that checks the condition (see IsLook).
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

// Predefined conditions:
// - IsThere is met if at least one element matches. WaitUntil then returns the first matching
//   element, like FindFirst.
// - IsGone is met if no element matches.
// - AttributeIs is met if the attribute is exactly `text`. `element` must live until the wait ends.
auto IsThere(const Content& content, const Search& search);
auto IsGone(const Content& content, const Search& search);
auto AttributeIs(Element& element, std::wstring_view name, std::wstring_view text);

// Checks the condition at once, and again after each interval, until it is met. If the condition's
// function returns a std::optional, WaitUntil returns the value of this optional. If the function
// returns a bool, WaitUntil returns void.
//
// With the predefined conditions, only the first check can start or inject a broker. Later checks
// use the broker that the first check found. If that broker has ended, a later check sends nothing
// and throws Error with -7. With a condition of your own, a later check can also start or inject a
// broker in three cases: the check calls Focused(), the check uses another Content, or no earlier
// call with this Content has found a broker.
//
// Every Error that a check throws ends the wait, even if its code is a positive status. Attribute()
// and Items() do not throw for a positive status. They return nothing, so the wait can go on.
//
// After the time-out, WaitUntil throws Error with the code kTimedOut (-103). The error's `meaning`
// says what was waited for, how long, and what was seen last. The time-out does not interrupt a
// check. So if the broker hangs, the wait can take longer than the time-out, by up to 54 s for each
// request of the last check. If the first check is also the last one and starts or injects a
// broker, the wait can exceed the time-out by 320 s.
template <IsLook Look>
auto WaitUntil(Condition<Look> condition, std::chrono::milliseconds timeout,
               std::chrono::milliseconds interval = std::chrono::milliseconds(250));

}  // namespace tessel

#include "tessel/ClientImplementation.h"
