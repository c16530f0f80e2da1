// Both processes. Text of a log line: printf formats with the meaning of Microsoft's runtime, wide
// text as UTF-8 whatever the C locale, in buffers that never allocate.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace logging {

// The longest prefix of `text` within `limit` bytes that ends with a whole UTF-8 sequence.
std::size_t WholeSequences(std::string_view text, std::size_t limit);

// A zero-terminated text in a caller's buffer; what does not fit is cut after a whole sequence.
class TextBuffer {
 public:
  TextBuffer(char* storage, std::size_t capacity);

  void Append(std::string_view utf8);
  void Append(std::size_t count, char filler);
  void AppendWide(std::wstring_view text);
  void AppendFormat(const char* format, ...);

  // Keeps at most `longest` units of the message: bytes of a narrow one, UTF-16 units of a wide
  // one.
  void AppendMessage(std::size_t longest, const char* format, std::va_list arguments);
  void AppendMessage(std::size_t longest, const wchar_t* format, std::va_list arguments);

  std::string_view View() const { return {storage_, length_}; }

 private:
  char* const storage_;
  const std::size_t capacity_;
  std::size_t length_ = 0;
  bool cut_ = false;  // nothing follows a cut
};

}  // namespace logging
