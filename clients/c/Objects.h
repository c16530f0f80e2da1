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

// A content shares its lock with its elements, so calls for one content run one after another. A
// thread can take the lock again while it holds it. tessel_element_identify needs this: it locks
// both elements, and they may have the same lock.
struct ContentObject {
  explicit ContentObject(Content opened) : content(std::move(opened)) {}

  Content& Target() { return content; }

  Content content;
  const std::shared_ptr<Lock> lock = std::make_shared<Lock>();
};

// The destructor releases the element. It runs on the thread that frees the handle. If another
// thread still uses the object then, the destructor runs on that thread when its call ends.
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

  Element& Target() { return *element; }

  std::optional<Element> element;
  const std::shared_ptr<Lock> lock;
};

struct ListEntry {
  std::wstring text;  // the text, or the element's id
  // Null in a list of texts, and after tessel_list_take has taken the element.
  std::shared_ptr<ElementObject> element;
  long number = 0;  // the number of an ancestor; 0 in other lists
};

struct ListObject {
  Lock lock;
  std::vector<ListEntry> entries;
};

using Table = HandleTable<ContentObject, ElementObject, ListObject>;

// Returns the table of all handles. It is never destroyed, because the end of the process must not
// send releases.
Table& Handles();

}  // namespace tessel::c
