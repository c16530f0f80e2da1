// Runs in the client. The functions of the C interface that wait for a condition.
#include "clients/c/Frame.h"

using namespace tessel::c;
using std::chrono::milliseconds;

int32_t tessel_wait_until_there(tessel_content content, const tessel_search* search,
                                uint32_t timeout, uint32_t interval, tessel_element* element,
                                tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_element& result = frame.Cleared(element);
    const LockedContent target = frame.LockContent(content);
    result = HandleOf(WaitUntil(tessel::IsThere(target.object->content, frame.Given(search)),
                                milliseconds(timeout), milliseconds(interval)),
                      target.ContentLock());
  });
}

int32_t tessel_wait_until_gone(tessel_content content, const tessel_search* search,
                               uint32_t timeout, uint32_t interval, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    const LockedContent target = frame.LockContent(content);
    WaitUntil(tessel::IsGone(target.object->content, frame.Given(search)), milliseconds(timeout),
              milliseconds(interval));
  });
}

int32_t tessel_wait_until_attribute(tessel_element element, const wchar_t* name,
                                    const wchar_t* text, uint32_t timeout, uint32_t interval,
                                    tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    const LockedElement target = frame.LockElement(element);
    WaitUntil(tessel::AttributeIs(*target.object->element, frame.Given(name), frame.Given(text)),
              milliseconds(timeout), milliseconds(interval));
  });
}

int32_t tessel_wait_until(tessel_content content, const wchar_t* what, tessel_look look,
                          void* context, uint32_t timeout, uint32_t interval,
                          tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    if (look == nullptr) throw frame.Invalid("the look is null");
    const LockedContent target = frame.LockContent(content);
    const auto lookOnce = [&](std::wstring& seen) {
      int32_t met = 0;
      const wchar_t* text = nullptr;
      const int32_t code = look(context, &met, &text);
      if (code != 0) throw tessel::Error(code, frame.ThisCall());
      if (text != nullptr) seen = text;
      return met != 0;
    };
    WaitUntil(tessel::Condition(target.object->content, std::wstring(frame.Given(what)), lookOnce),
              milliseconds(timeout), milliseconds(interval));
  });
}
