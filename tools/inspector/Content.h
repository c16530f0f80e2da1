// tessel. The content that one run of the tool inspects: its window, its address and the scheme of
// its broker. Finds elements in it and calls its broker.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/inspector/Elements.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/InspectorOptions.h"

// The functions throw InspectorError.
class Content {
 public:
  explicit Content(const InspectorOptions& options);

  const InspectorOptions& Options() const { return options_; }
  HWND Window() const { return window_; }

  // The element that the options name.
  ElementOwner FindElement() const;
  ElementOwner FindFocused() const;                      // empty if no element has the focus
  ElementOwner ParentOf(const SLElemData& child) const;  // empty for a root

  // `steps` must be positive.
  ElementOwner AncestorOf(const SLElemData& element, int steps) const;

  // `root` is an element or the record that Whole() returns.
  ElementList FindBelow(SLElemData& root, const std::string& what, const SearchTexts& texts,
                        int levels, bool containing) const;

  // Returns a record for the content as a whole: it has no element id. FindBelow may store the
  // scheme of the broker in it.
  SLElemData Whole() const;

  // Makes one call to the broker. `what` completes the message "cannot ...", for example "read the
  // items of element ...".
  void Do(const std::string& what, const std::function<int()>& call) const;

  // The same, but returns false if the call returns `refusal`.
  bool Try(const std::string& what, int refusal, const std::function<int()>& call) const;

  InspectorError MakeRefusal(ExitCode exitCode, const std::string& what,
                             const std::string& reasonAndCure) const;

 private:
  void Search(const std::string& what, DWORD scheme, const std::function<int()>& call) const;
  ElementOwner FindNamed() const;
  ElementOwner FindAt(POINT point) const;
  ElementOwner FindOnly(const SearchTexts& texts) const;

  const InspectorOptions& options_;
  const HWND window_;
};
