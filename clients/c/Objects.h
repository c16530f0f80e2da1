// Runs in the client. The objects that handles of the C interface name.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "clients/c/HandleTable.h"
#include "clients/c/Lock.h"
#include "tessel/Client.h"

namespace tessel::c {

// Its lock is shared with the elements: calls of one content run one after another. A look of the
// caller's own may call too, on the thread that already holds the lock.
struct ContentObject {
  explicit ContentObject(Content opened) : content(std::move(opened)) {}

  Content content;
  const std::shared_ptr<Lock> lock = std::make_shared<Lock>();
};

// Its destruction releases the element, on the thread that frees the handle or ends the last call.
class ElementObject {
 public:
  ElementObject(Element owned, std::shared_ptr<Lock> contentLock)
      : element(std::move(owned)), lock(std::move(contentLock)) {}
  ~ElementObject() {
    const std::lock_guard guard(*lock);
    element.reset();
  }
  ElementObject(const ElementObject&) = delete;
  ElementObject& operator=(const ElementObject&) = delete;

  std::optional<Element> element;
  const std::shared_ptr<Lock> lock;
};

struct ListEntry {
  std::wstring text;                       // of an element: its id
  std::shared_ptr<ElementObject> element;  // null if it was taken, and in a list of texts
  long number = 0;
};

struct ListObject {
  Lock lock;
  std::vector<ListEntry> entries;
};

using Table = HandleTable<ContentObject, ElementObject, ListObject>;

// Never destroyed: the end of the process must not send releases.
Table& Handles();

}  // namespace tessel::c
