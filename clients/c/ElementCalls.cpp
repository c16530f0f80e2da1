// Runs in the client. The functions of the C interface that are about an element.
#include "clients/c/Frame.h"

using namespace tessel::c;
using tessel::Element;

namespace {

// Locks the element and passes it to `action`.
template <class Action>
int32_t Act(const char* function, tessel_element element, tessel_error** error, Action action) {
  return Run(function, error,
             [&](const Frame& frame) { action(frame, frame.LockElement(element)); });
}

// Calls `body`, and stores a handle for the element or the list that `body` returns.
template <class Handle, class Body>
int32_t Find(const char* function, tessel_element element, Handle* handle, tessel_error** error,
             Body body) {
  return Run(function, error, [&](const Frame& frame) {
    Handle& result = frame.Cleared(handle);
    const LockedElement target = frame.LockElement(element);
    result = HandleOf(body(frame, target), target.ContentLock());
  });
}

// Copies the three texts. If memory is exhausted, frees the copies that were already made.
tessel_identity IdentityOf(const tessel::Identity& identity) {
  tessel_identity copy = {nullptr, nullptr, nullptr, identity.number};
  try {
    copy.text1 = CopyOf(identity.text1);
    copy.text2 = CopyOf(identity.text2);
    copy.text3 = CopyOf(identity.text3);
    return copy;
  } catch (...) {
    for (wchar_t* text : {copy.text1, copy.text2}) tessel_text_free(text);
    throw;
  }
}

}  // namespace

int32_t tessel_element_id(tessel_element element, wchar_t** id, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    wchar_t*& result = frame.Cleared(id);
    result = CopyOf(frame.LockElement(element)->Id());
  });
}

int32_t tessel_element_place(tessel_element element, tessel_place* place, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_place& result = frame.Cleared(place);
    const LockedElement target = frame.LockElement(element);
    const SLElemData& record = target->Record();
    result = {record.hwnd, static_cast<uint32_t>(record.processId),
              static_cast<int32_t>(record.uriScheme), RectangleOf(record.rect)};
  });
}

int32_t tessel_element_parent(tessel_element element, tessel_element* parent,
                              tessel_error** error) {
  return Find(__func__, element, parent, error,
              [](const Frame&, const LockedElement& target) { return target->Parent(); });
}

int32_t tessel_element_ancestors(tessel_element element, tessel_list* list, tessel_error** error) {
  return Find(__func__, element, list, error,
              [](const Frame&, const LockedElement& target) { return target->Ancestors(); });
}

int32_t tessel_element_selector(tessel_element element, tessel_list* list, tessel_error** error) {
  return Find(__func__, element, list, error,
              [](const Frame&, const LockedElement& target) { return target->Selector(); });
}

int32_t tessel_element_find(tessel_element element, const tessel_search* search, tessel_list* list,
                            tessel_error** error) {
  return Find(__func__, element, list, error,
              [search](const Frame& frame, const LockedElement& target) {
                return target->Find(frame.Given(search));
              });
}

int32_t tessel_element_identify(tessel_element element, tessel_element ancestor,
                                tessel_identity* identity, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_identity& result = frame.Cleared(identity);
    if (ancestor == 0) {
      result = IdentityOf(frame.LockElement(element)->Identify());
      return;
    }
    const auto target = frame.Find<ElementObject>(element);
    const auto relative = frame.Find<ElementObject>(ancestor);
    // Takes both locks at once. If two threads took them one after another and in opposite orders,
    // each could wait for the other for ever.
    const std::scoped_lock guard(*target->lock, *relative->lock);
    frame.RequireHeld(*target);
    frame.RequireHeld(*relative);
    result = IdentityOf(target->element->Identify(*relative->element));
  });
}

int32_t tessel_element_rectangle(tessel_element element, tessel_rectangle* rectangle,
                                 tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_rectangle& result = frame.Cleared(rectangle);
    result = RectangleOf(frame.LockElement(element)->Rectangle());
  });
}

int32_t tessel_element_attribute(tessel_element element, const wchar_t* name, wchar_t** text,
                                 tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    wchar_t*& result = frame.Cleared(text);
    const auto value = frame.LockElement(element)->Attribute(frame.Given(name));
    if (value) result = CopyOf(*value);
  });
}

int32_t tessel_element_items(tessel_element element, tessel_list* list, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_list& result = frame.Cleared(list);
    auto items = frame.LockElement(element)->Items();
    if (items) result = HandleOf(std::move(*items));
  });
}

int32_t tessel_element_click(tessel_element element, tessel_error** error) {
  return Act(__func__, element, error,
             [](const Frame&, const LockedElement& target) { target->Click(); });
}

int32_t tessel_element_set_value(tessel_element element, const wchar_t* text,
                                 tessel_error** error) {
  return Act(__func__, element, error, [text](const Frame& frame, const LockedElement& target) {
    target->SetValue(frame.Given(text));
  });
}

int32_t tessel_element_set_focus(tessel_element element, tessel_error** error) {
  return Act(__func__, element, error,
             [](const Frame&, const LockedElement& target) { target->SetFocus(); });
}

int32_t tessel_element_check(tessel_element element, int32_t on, tessel_error** error) {
  return Act(__func__, element, error,
             [on](const Frame&, const LockedElement& target) { target->Check(on != 0); });
}

int32_t tessel_element_select(tessel_element element, const wchar_t* item, tessel_error** error) {
  return Act(__func__, element, error, [item](const Frame& frame, const LockedElement& target) {
    target->Select(frame.Given(item));
  });
}

int32_t tessel_element_release(tessel_element element, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    const auto object = frame.Remove<ElementObject>(element);
    const std::lock_guard guard(*object->lock);
    object->element->Release();
  });
}

int32_t tessel_element_abandon(tessel_element element, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    const auto object = frame.Remove<ElementObject>(element);
    const std::lock_guard guard(*object->lock);
    object->element->Abandon();
  });
}
