// tessel. The elements that a run was given, and what becomes of them at its end, whichever way it
// ends: each is released, with a notice when that takes long.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "TesselSilverlight.h"

std::string IdOf(const SLElemData& element);

// For a message: element "ID".
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
