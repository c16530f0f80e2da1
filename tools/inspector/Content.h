// tessel. The content that a run looks at: its window, its address, its broker's scheme; how its
// elements are found, and the calls that are made to its broker.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/inspector/Elements.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/InspectorOptions.h"

// Its functions throw InspectorError.
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

  // `root` is an element or the content as a whole.
  ElementList FindBelow(SLElemData& root, const std::string& what, const SearchTexts& texts,
                        int levels, bool containing) const;

  // A record that names no element; it may learn its scheme.
  SLElemData Whole() const;

  // One call about an element. `what` completes "cannot ...": "read the items of element ...".
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
