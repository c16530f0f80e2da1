// Runs in the client. The C form of an error: one block of memory that holds the structure and its
// texts.
#include <cwchar>
#include <iterator>

#include "clients/c/Frame.h"

namespace tessel::c {
namespace {

// The error that reports exhausted memory. It is never allocated and never freed.
constinit tessel_error exhaustedMemory = {
    kOutOfMemory,
    L"TESSEL_OUT_OF_MEMORY",
    L"memory is exhausted",
    L"free what the program does not need, or end other programs",
    L"",
    L"",
    L""};

tessel_error* CopyOf(const Error& error) {
  const std::wstring texts[] = {Wide(error.name),     Wide(error.meaning), Wide(error.cure),
                                Wide(error.function), error.elementId,     error.address};
  std::size_t units = 0;
  for (const std::wstring& text : texts) units += text.size() + 1;
  auto* const copy =
      static_cast<tessel_error*>(std::malloc(sizeof(tessel_error) + units * sizeof(wchar_t)));
  if (copy == nullptr) throw std::bad_alloc();
  copy->code = error.code;
  const wchar_t** const members[] = {&copy->name,     &copy->meaning, &copy->cure,
                                     &copy->function, &copy->element, &copy->address};
  auto* next = reinterpret_cast<wchar_t*>(copy + 1);
  for (std::size_t i = 0; i < std::size(texts); ++i) {
    *members[i] = std::wmemcpy(next, texts[i].c_str(), texts[i].size() + 1);
    next += texts[i].size() + 1;
  }
  return copy;
}

}  // namespace

std::int32_t Report(const Error& error, tessel_error** to) noexcept {
  if (to == nullptr) return error.code;
  try {
    *to = CopyOf(error);
    return error.code;
  } catch (...) {
    return ReportExhaustedMemory(to);
  }
}

std::int32_t ReportExhaustedMemory(tessel_error** to) noexcept {
  if (to != nullptr) *to = &exhaustedMemory;
  return kOutOfMemory;
}

}  // namespace tessel::c

void tessel_error_free(tessel_error* error) {
  if (error != &tessel::c::exhaustedMemory) std::free(error);
}

void tessel_text_free(wchar_t* text) { std::free(text); }
