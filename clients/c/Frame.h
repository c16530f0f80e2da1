// Runs in the client. The code that all functions of the C interface share: checks the arguments,
// finds and locks the objects, and turns exceptions into codes.
#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "clients/c/CallersStack.h"
#include "clients/c/Objects.h"
#include "clients/c/tesselslb.h"

namespace tessel::c {

// A ContentObject or an ElementObject, with the lock of its content held.
template <class Object>
struct Locked {
  explicit Locked(std::shared_ptr<Object> unlocked)
      : object(std::move(unlocked)), guard(*object->lock) {}

  auto operator->() const { return &object->Target(); }
  const std::shared_ptr<Lock>& ContentLock() const { return object->lock; }

  std::shared_ptr<Object> object;
  std::unique_lock<Lock> guard;  // declared after `object`, so it unlocks before `object` is freed
};
using LockedContent = Locked<ContentObject>;
using LockedElement = Locked<ElementObject>;

// One call of a function of the C interface. The functions of Frame throw Error.
class Frame {
 public:
  explicit Frame(const char* function) : call_{function, L"", L""} {}

  // Sets `*result` to zero and returns a reference to it. Throws Error if `result` is null.
  template <class Result>
  Result& Cleared(Result* result) const {
    if (result == nullptr) throw Invalid("a pointer to a result is null");
    return *result = Result{};
  }

  // These functions return an argument in its C++ form. They throw Error if it is not valid.
  std::wstring_view Given(const wchar_t* text) const;
  Search Given(const tessel_search* search) const;
  SLUriScheme GivenScheme(std::int32_t scheme) const;

  template <class Object>
  std::shared_ptr<Object> Find(Table::Handle handle) const {
    return Checked(Handles().Find<Object>(handle));
  }

  // Frees the handle and returns its object.
  template <class Object>
  std::shared_ptr<Object> Remove(Table::Handle handle) const {
    return Checked(Handles().Remove<Object>(handle));
  }

  // Throws Error if another thread has freed the handle while this thread waited for the lock.
  void RequireHeld(const ElementObject& element) const;

  LockedContent LockContent(tessel_content content) const;
  LockedElement LockElement(tessel_element element) const;

  Error Invalid(const std::string& meaning) const;
  const Call& ThisCall() const { return call_; }

 private:
  template <class Object>
  std::shared_ptr<Object> Checked(std::shared_ptr<Object> object) const {
    if (object == nullptr) throw Error(kBadHandle, call_);
    return object;
  }

  const Call call_;
};

// These functions store the error in `*to`, unless `to` is null, and return the error's code.
std::int32_t Report(const Error& error, tessel_error** to) noexcept;
std::int32_t ReportExhaustedMemory(tessel_error** to) noexcept;

// Runs the body of a function of the C interface and returns the result code. No exception leaves
// Run.
template <class Body>
std::int32_t Run(const char* function, tessel_error** error, Body body) noexcept {
  const HandlersOfOtherStacks hidden;
  if (error != nullptr) *error = nullptr;
  try {
    body(Frame(function));
    return SL_SUCCESS;
  } catch (const Error& failure) {
    return Report(failure, error);
  } catch (...) {
    return ReportExhaustedMemory(error);
  }
}

// Returns a copy of the text, which the caller of the C interface frees with tessel_text_free.
wchar_t* CopyOf(std::wstring_view text);

tessel_rectangle RectangleOf(const RECT& rect);

// These functions return a new handle. For an empty optional the first function returns 0.
tessel_element HandleOf(std::optional<Element> element, const std::shared_ptr<Lock>& lock);
tessel_list HandleOf(std::vector<Element> elements, const std::shared_ptr<Lock>& lock);
tessel_list HandleOf(std::vector<Ancestor> ancestors, const std::shared_ptr<Lock>& lock);
tessel_list HandleOf(std::vector<std::wstring> texts);

}  // namespace tessel::c
