// Runs in the client. The functions of the C interface that wait for a condition. A wait holds the
// content's lock only during each check, so that other threads can make calls between two checks.
// tessel_wait_until does not take the lock: its check is a function of the client, and the
// functions of this interface that the check calls take the lock themselves.
#include "clients/c/Frame.h"

using namespace tessel::c;
using std::chrono::milliseconds;

namespace {

// Returns a condition that makes the same check as `condition`, but holds the lock during the
// check.
template <class Place, class Look>
auto WithLock(const Place& place, tessel::Condition<Look> condition, std::shared_ptr<Lock> lock) {
  std::wstring what = condition.What();
  return tessel::Condition(
      place, std::move(what),
      [condition = std::move(condition), lock = std::move(lock)](std::wstring& seen) mutable {
        const std::lock_guard guard(*lock);
        return condition.Look(seen);
      });
}

}  // namespace

int32_t tessel_wait_until_there(tessel_content content, const tessel_search* search,
                                uint32_t timeout, uint32_t interval, tessel_element* element,
                                tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    tessel_element& result = frame.Cleared(element);
    const auto target = frame.Find<ContentObject>(content);
    auto condition = tessel::IsThere(target->content, frame.Given(search));
    auto found = WaitUntil(WithLock(target->content, std::move(condition), target->lock),
                           milliseconds(timeout), milliseconds(interval));
    const std::lock_guard guard(*target->lock);
    result = HandleOf(std::move(found), target->lock);
  });
}

int32_t tessel_wait_until_gone(tessel_content content, const tessel_search* search,
                               uint32_t timeout, uint32_t interval, tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    const auto target = frame.Find<ContentObject>(content);
    auto condition = tessel::IsGone(target->content, frame.Given(search));
    WaitUntil(WithLock(target->content, std::move(condition), target->lock), milliseconds(timeout),
              milliseconds(interval));
  });
}

int32_t tessel_wait_until_attribute(tessel_element element, const wchar_t* name,
                                    const wchar_t* text, uint32_t timeout, uint32_t interval,
                                    tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    const auto target = frame.Find<ElementObject>(element);
    // AttributeIs reads the element's id. Take the lock, because another thread may clear the id.
    auto condition = [&] {
      const std::lock_guard guard(*target->lock);
      return WithLock(*target->element,
                      tessel::AttributeIs(*target->element, frame.Given(name), frame.Given(text)),
                      target->lock);
    }();
    WaitUntil(std::move(condition), milliseconds(timeout), milliseconds(interval));
  });
}

int32_t tessel_wait_until(tessel_content content, const wchar_t* what, tessel_look look,
                          void* context, uint32_t timeout, uint32_t interval,
                          tessel_error** error) {
  return Run(__func__, error, [&](const Frame& frame) {
    if (look == nullptr) throw frame.Invalid("the look is null");
    const auto target = frame.Find<ContentObject>(content);
    const auto lookOnce = [&](std::wstring& seen) {
      int32_t met = 0;
      const wchar_t* text = nullptr;
      const int32_t code = look(context, &met, &text);
      if (code != 0) throw tessel::Error(code, frame.ThisCall());
      if (text != nullptr) seen = text;
      return met != 0;
    };
    WaitUntil(tessel::Condition(target->content, std::wstring(frame.Given(what)), lookOnce),
              milliseconds(timeout), milliseconds(interval));
  });
}
