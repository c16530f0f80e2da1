// tessel. Owners for the elements that the broker handed out. Each element is released when its
// owner goes out of scope, with a notice on standard error if that takes long.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "TesselSilverlight.h"

std::string IdOf(const SLElemData& element);

// Returns the text: element "ID". For messages.
std::string NameOf(const SLElemData& element);

struct ElementReleaser {
  void operator()(SLElemData* element) const;
};
using ElementOwner = std::unique_ptr<SLElemData, ElementReleaser>;

class ElementList {
 public:
  using Records = std::vector<SLElemData, HeapAllocator<SLElemData>>;

  ElementList() = default;
  ElementList(ElementList&&) = default;
  ElementList& operator=(ElementList&&) = delete;
  ~ElementList();

  std::vector<std::string> Ids() const;

  Records records;
};
