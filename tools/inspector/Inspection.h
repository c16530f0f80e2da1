// Part of tessel. One run of the tool: the options and the content. Makes the calls of all
// commands. Turns each failure into a message for the user, and prints a notice when a call takes
// long.
#pragma once

#include <string>
#include <vector>

#include "tessel/Client.h"
#include "tools/inspector/CallWatch.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/InspectorOptions.h"
#include "wire/Timeouts.h"

// The functions throw InspectorError.
class Inspection {
 public:
  explicit Inspection(const InspectorOptions& options);
  Inspection(const Inspection&) = delete;
  Inspection& operator=(const Inspection&) = delete;

  const InspectorOptions& Options() const { return options_; }
  HWND Window() const { return content_.Window(); }
  const tessel::Content& Content() const { return content_; }
  const CallStatistics& Statistics() const { return watch_.Statistics(); }

  // Returns the element that the options select.
  tessel::Element FindElement();
  std::optional<tessel::Element> FindFocused();

  std::optional<tessel::Element> ParentOf(tessel::Element& child);

  // Returns the ancestor that is `steps` levels above the element. `steps` must be positive.
  tessel::Element AncestorOf(tessel::Element& element, int steps);

  // Returns all elements of the content that match `search`. `what` completes the message
  // "cannot ...", for example "find elements of the content".
  std::vector<tessel::Element> Find(const std::string& what, const tessel::Search& search);

  // Read an attribute, or the items of a list. Return nothing if the broker answers with any
  // positive status.
  std::optional<std::wstring> Attribute(tessel::Element& element, const std::string& name);
  std::optional<std::vector<std::wstring>> Items(tessel::Element& element);

  // Pass the result of the last call as `value`. Returns the value in it. If it is empty, throws
  // an error with the status that the broker answered.
  template <class Value>
  Value Require(std::optional<Value> value) const {
    if (!value) throw MakeCallFailure(watch_.What(), watch_.LastError(), scheme_);
    return std::move(*value);
  }

  // Waits until a condition about the content is met. `what` completes the message
  // "cannot ...", as in Do.
  template <class Condition>
  auto WaitFor(const std::string& what, Condition condition, std::chrono::milliseconds timeout) {
    return Search(what, content_.Scheme(),
                  [&] { return tessel::WaitUntil(std::move(condition), timeout); });
  }

  // Runs `body`, which makes calls about one element. `what` completes the message "cannot ...",
  // for example "read the items of element ...".
  template <class Body>
  auto Do(const std::string& what, Body body) {
    watch_.Announce(what, wire::kLongestRoundTripMilliseconds);
    return Explained(what, body);
  }

 private:
  // Makes the error for an element that does not exist.
  InspectorError NothingThere(const std::string& what, const std::string& reason,
                              const std::string& cure) const;

  // Runs `body`, and turns a tessel::Error into an InspectorError.
  template <class Body>
  auto Explained(const std::string& what, Body body) {
    try {
      return body();
    } catch (const tessel::Error& error) {
      throw MakeCallFailure(what, error, scheme_);
    }
  }

  // Makes a call that may search for the broker. `scheme` is the scheme of the call: SL_NO_URI if
  // it searches.
  template <class Body>
  auto Search(const std::string& what, SLUriScheme scheme, Body body) {
    scheme_ = scheme;
    watch_.Announce(what, LongestCall());
    return Explained(what, body);
  }

  // Returns the longest duration of a call with the scheme `scheme_`, in milliseconds.
  std::uint32_t LongestCall() const;

  // Remembers the scheme of the broker that has sent the element. Later calls use this scheme.
  void Remember(const tessel::Element& element) { scheme_ = element.Record().uriScheme; }

  tessel::Element FindNamed();
  tessel::Element FindAt(POINT point);
  tessel::Element FindOnly(const SearchTexts& texts);

  const InspectorOptions& options_;
  CallWatch watch_;
  tessel::Content content_;
  DWORD scheme_;  // the scheme of the last call; if the call fails, the message names its pipes
};

// Returns the text by which messages name the element: element "ID".
std::string NameOf(const tessel::Element& element);

tessel::Search SearchFor(const SearchTexts& texts);
