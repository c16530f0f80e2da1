#include "tools/inspector/Elements.h"

#include <optional>

#include "tools/inspector/CallNotice.h"
#include "tools/shared/ConsoleText.h"
#include "wire/Timeouts.h"

namespace {

// Runs `destroy`. Destroying a record that has an element id calls the broker, so this shows a
// notice if it takes long.
template <class Destroy>
void Release(const SLElemData& element, Destroy destroy) {
  std::optional<CallNotice> notice;
  if (::SysStringLen(element.objectId) > 0) {
    notice.emplace("release " + NameOf(element), wire::kLongestRoundTripMilliseconds);
  }
  destroy();
}

}  // namespace

std::string IdOf(const SLElemData& element) {
  return tools::Narrow({element.objectId, ::SysStringLen(element.objectId)});
}

std::string NameOf(const SLElemData& element) { return "element " + tools::Quoted(IdOf(element)); }

void ElementReleaser::operator()(SLElemData* element) const {
  Release(*element, [element] { delete element; });
}

ElementList::~ElementList() {
  while (!records.empty()) Release(records.back(), [this] { records.pop_back(); });
}

std::vector<std::string> ElementList::Ids() const {
  std::vector<std::string> ids;
  for (const SLElemData& element : records) ids.push_back(IdOf(element));
  return ids;
}
