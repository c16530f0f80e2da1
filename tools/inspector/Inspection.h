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

  // Returns the number of calls that this run has made until now.
  long long Calls() const { return watch_.Calls(); }

  // Returns the element that the options select.
  tessel::Element FindElement();
  std::optional<tessel::Element> FindFocused();

  std::optional<tessel::Element> ParentOf(tessel::Element& child);

  // Returns the ancestor that is `steps` levels above the element. `steps` must be positive.
  tessel::Element AncestorOf(tessel::Element& element, int steps);

  // Returns all elements of the content that match `search`. `what` is as for Do.
  std::vector<tessel::Element> Find(const std::string& what, const tessel::Search& search);

  // Read an attribute, or the items of a list. Return nothing if the broker answers with any
  // positive status.
  std::optional<std::wstring> Attribute(tessel::Element& element, const std::string& name);
  std::optional<std::vector<std::wstring>> Items(tessel::Element& element);

  // Returns the value that the last call has returned. If `value` is empty, throws an error that
  // reports the status of the broker.
  template <class Value>
  Value Require(std::optional<Value> value) const {
    if (!value) throw MakeCallFailure(watch_.What(), watch_.LastError());
    return std::move(*value);
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
  InspectorError NothingThere(const std::string& what, const std::string& reasonAndCure) const;

  // Runs `body`, and turns a tessel::Error into an InspectorError.
  template <class Body>
  auto Explained(const std::string& what, Body body) {
    try {
      return body();
    } catch (const tessel::Error& error) {
      throw MakeCallFailure(what, error);
    }
  }

  // Says what the next call is for, and how long it may take. If `scheme` is SL_NO_URI, the call
  // searches for the broker.
  void AnnounceSearch(const std::string& what, SLUriScheme scheme);

  tessel::Element FindNamed();
  tessel::Element FindAt(POINT point);
  tessel::Element FindOnly(const SearchTexts& texts);

  const InspectorOptions& options_;
  CallWatch watch_;
  tessel::Content content_;
};

// Returns the text by which messages name the element: element "ID".
std::string NameOf(const tessel::Element& element);

tessel::Search SearchFor(const SearchTexts& texts);
