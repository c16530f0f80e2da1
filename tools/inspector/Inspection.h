// Part of tessel. One run of the tool: the options and the content. Makes calls with the error
// messages and notices of a command-line tool.
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

  // Returns the element that the options select.
  tessel::Element FindElement();
  std::optional<tessel::Element> FindFocused();

  std::optional<tessel::Element> ParentOf(tessel::Element& child);

  // `steps` must be positive.
  tessel::Element AncestorOf(tessel::Element& element, int steps);

  // Returns all elements of the content that match `search`.
  std::vector<tessel::Element> Find(const std::string& what, const tessel::Search& search);

  // Runs `body`, which makes calls about one element. `what` completes the message "cannot ...",
  // for example "read the items of element ...".
  template <class Body>
  auto Do(const std::string& what, Body body) {
    watch_.Announce(what, wire::kLongestRoundTripMilliseconds);
    return Explained(what, body);
  }

  // Does the same as Do, for a body that returns an optional. An empty optional is a failure,
  // reported with the broker's status.
  template <class Body>
  auto Require(const std::string& what, Body body) {
    auto value = Do(what, body);
    if (!value) throw MakeCallFailure(what, watch_.LastError());
    return std::move(*value);
  }

 private:
  // Makes the error for an element that does not exist.
  InspectorError NothingThere(const std::string& what, const std::string& reasonAndCure) const;

  template <class Body>
  auto Explained(const std::string& what, Body body) {
    try {
      return body();
    } catch (const tessel::Error& error) {
      throw MakeCallFailure(what, error);
    }
  }

  // Says what the next call is for. The call searches for the broker if `scheme` is SL_NO_URI.
  void AnnounceSearch(const std::string& what, SLUriScheme scheme);

  tessel::Element FindNamed();
  tessel::Element FindAt(POINT point);
  tessel::Element FindOnly(const SearchTexts& texts);

  const InspectorOptions& options_;
  CallWatch watch_;
  tessel::Content content_;
};

// Returns how messages name the element: element "ID".
std::string NameOf(const tessel::Element& element);

tessel::Search SearchFor(const SearchTexts& texts);
