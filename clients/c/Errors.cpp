// Runs in the client. The C form of an error: one block of memory that holds the structure and its
// texts.
#include <cwchar>
#include <iterator>

#include "clients/c/Frame.h"

namespace tessel::c {
namespace {

// A text of the table of result codes, converted to wide characters at compile time. A text that
// is too long does not compile.
struct WideText {
  consteval explicit WideText(const char* ascii) {
    for (wchar_t* to = units; *ascii != '\0'; ++ascii) *to++ = static_cast<wchar_t>(*ascii);
  }
  wchar_t units[80] = {};
};
constexpr ResultCode kExhausted = DescribeResult(kOutOfMemory);
constexpr WideText kName(kExhausted.name), kMeaning(kExhausted.meaning), kCure(kExhausted.cure);

// The error that reports exhausted memory. It is never allocated and never freed.
constinit tessel_error exhaustedMemory = {
    kOutOfMemory, kName.units, kMeaning.units, kCure.units, L"", L"", L""};

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
