// Runs in the client and in the broker. Formats the text of log lines. printf formats mean the same
// as in Microsoft's runtime library. Wide text is converted to UTF-8, whatever the C locale is. The
// functions allocate no memory.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace logging {

inline constexpr std::size_t kLongestMessage = 4095;  // in bytes; for a wide format, in units

// Returns the length of the longest prefix of `text` that has at most `limit` bytes and ends with a
// complete UTF-8 sequence.
std::size_t WholeSequences(std::string_view text, std::size_t limit);

// A zero-terminated text in a buffer of the caller. Text that does not fit is cut after a complete
// UTF-8 sequence.
class TextBuffer {
 public:
  TextBuffer(char* storage, std::size_t capacity);

  void Append(std::string_view utf8);
  void Append(std::size_t count, char filler);
  void AppendWide(std::wstring_view text);
  void AppendFormat(const char* format, ...);

  // Appends at most kLongestMessage bytes (narrow format) or UTF-16 units (wide format).
  void AppendMessage(const char* format, std::va_list arguments);
  void AppendMessage(const wchar_t* format, std::va_list arguments);

  std::string_view View() const { return {storage_, length_}; }

 private:
  char* const storage_;
  const std::size_t capacity_;
  std::size_t length_ = 0;
  bool cut_ = false;  // whether a text was cut; all later texts are then dropped
};

}  // namespace logging
