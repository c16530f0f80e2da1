// Runs in the client. The functions of the C interface that are about a list.
#include "clients/c/Frame.h"

using namespace tessel::c;

namespace {

// Passes one entry of the list to `body`, and stores the value that `body` returns.
template <class Result, class Body>
int32_t Read(const char* function, tessel_list list, std::size_t index, Result* result,
             tessel_error** error, Body body) {
  return Run(function, error, [&](const Frame& frame) {
    Result& cleared = frame.Cleared(result);
    const auto object = frame.Find<ListObject>(list);
    const std::lock_guard guard(object->lock);
    if (index >= object->entries.size()) throw frame.Invalid("the index is beyond the end");
    cleared = body(object->entries[index]);
  });
}

}  // namespace

int32_t tessel_list_size(tessel_list list, size_t* size, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    size_t& result = frame.Cleared(size);
    result = frame.Find<ListObject>(list)->entries.size();
  });
}

int32_t tessel_list_take(tessel_list list, size_t index, tessel_element* element,
                         tessel_error** error) {
  return Read(__func__, list, index, element, error, [](ListEntry& entry) -> tessel_element {
    if (entry.element == nullptr) return 0;
    const tessel_element handle = Handles().Add(entry.element);
    entry.element.reset();
    return handle;
  });
}

int32_t tessel_list_number(tessel_list list, size_t index, int32_t* number, tessel_error** error) {
  return Read(__func__, list, index, number, error,
              [](const ListEntry& entry) { return static_cast<int32_t>(entry.number); });
}

int32_t tessel_list_text(tessel_list list, size_t index, wchar_t** text, tessel_error** error) {
  return Read(__func__, list, index, text, error,
              [](const ListEntry& entry) { return CopyOf(entry.text); });
}

int32_t tessel_list_free(tessel_list list, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) { frame.Remove<ListObject>(list); });
}
