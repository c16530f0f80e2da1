// Runs in the client. The functions of the C interface that are about a content.
#include <algorithm>

#include "clients/c/Frame.h"
#include "generated/ProductVersion.h"

using namespace tessel::c;
using tessel::Content;

namespace {

tessel_content Open(Content content) {
  return Handles().Add(std::make_shared<ContentObject>(std::move(content)));
}

}  // namespace

int32_t tessel_version(int32_t numbers[4], tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    frame.Cleared(numbers);
    constexpr int32_t kVersion[] = {TESSEL_PRODUCT_VERSION_NUMBERS};
    std::ranges::copy(kVersion, numbers);
  });
}

int32_t tessel_content_open(void* window, const wchar_t* address, int32_t scheme,
                            tessel_content* content, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_content& result = frame.Cleared(content);
    result =
        Open(Content(static_cast<HWND>(window), frame.Given(address), frame.GivenScheme(scheme)));
  });
}

int32_t tessel_content_open_title(const wchar_t* title, const wchar_t* address, int32_t scheme,
                                  tessel_content* content, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_content& result = frame.Cleared(content);
    result = Open(Content(frame.Given(title), frame.Given(address), frame.GivenScheme(scheme)));
  });
}

int32_t tessel_content_close(tessel_content content, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) { frame.Remove<ContentObject>(content); });
}

int32_t tessel_content_window(tessel_content content, void** window, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    void*& result = frame.Cleared(window);
    result = frame.Find<ContentObject>(content)->content.Window();
  });
}

int32_t tessel_content_at(tessel_content content, int32_t x, int32_t y, int32_t option,
                          tessel_element* element, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_element& result = frame.Cleared(element);
    const LockedContent target = frame.LockContent(content);
    result = HandleOf(target->At({x, y}, option), target.ContentLock());
  });
}

int32_t tessel_content_focused(tessel_content content, tessel_element* element,
                               tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_element& result = frame.Cleared(element);
    const LockedContent target = frame.LockContent(content);
    result = HandleOf(target->Focused(), target.ContentLock());
  });
}

int32_t tessel_content_find(tessel_content content, const tessel_search* search, tessel_list* list,
                            tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_list& result = frame.Cleared(list);
    const LockedContent target = frame.LockContent(content);
    result = HandleOf(target->Find(frame.Given(search)), target.ContentLock());
  });
}

int32_t tessel_content_find_first(tessel_content content, const tessel_search* search,
                                  tessel_element* element, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_element& result = frame.Cleared(element);
    const LockedContent target = frame.LockContent(content);
    result = HandleOf(target->FindFirst(frame.Given(search)), target.ContentLock());
  });
}
