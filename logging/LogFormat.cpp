#include "logging/LogFormat.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>

namespace logging {
namespace {

enum class Width { kNarrow, kShort, kDefault, kLong, k64 };

// One conversion of a printf format, for example "%-#0*.*I64x".
struct Conversion {
  char flags[8] = {};
  int width = 0;
  int precision = -1;
  Width size = Width::kDefault;
  char type = '\0';

  bool Has(char flag) const { return std::strchr(flags, flag) != nullptr; }
};

bool IsHighSurrogate(wchar_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }

// Reads a conversion. `format` points to the text after the '%', and is moved past the conversion.
Conversion ReadConversion(const char*& format, std::va_list& arguments) {
  Conversion result;
  std::size_t flagCount = 0;
  while (*format != '\0' && std::strchr("-+ #0", *format) != nullptr) {
    if (flagCount + 1 < sizeof(result.flags)) result.flags[flagCount++] = *format;
    ++format;
  }
  const auto readNumber = [&] {
    if (*format == '*') {
      ++format;
      return va_arg(arguments, int);
    }
    int number = 0;
    for (; *format >= '0' && *format <= '9'; ++format) {
      if (number < 100000) number = number * 10 + (*format - '0');
    }
    return number;
  };
  result.width = readNumber();
  if (result.width < 0) {
    result.width = -result.width;
    if (flagCount + 1 < sizeof(result.flags)) result.flags[flagCount] = '-';
  }
  if (*format == '.') {
    ++format;
    result.precision = readNumber();
  }

  static constexpr struct {
    const char* text;
    Width size;
  } kSizes[] = {{"I64", Width::k64},    {"I32", Width::kDefault}, {"I", Width::k64},
                {"ll", Width::k64},     {"l", Width::kLong},      {"w", Width::kLong},
                {"hh", Width::kNarrow}, {"h", Width::kShort},     {"z", Width::k64},
                {"t", Width::k64},      {"j", Width::k64}};
  for (const auto& entry : kSizes) {
    const std::size_t length = std::strlen(entry.text);
    if (std::strncmp(format, entry.text, length) == 0) {
      format += length;
      result.size = entry.size;
      break;
    }
  }
  result.type = *format;
  if (*format != '\0') ++format;
  return result;
}

// A format for snprintf that contains only one conversion, such as "%-8.3f". Numbers replace each
// '*' of the original format.
struct RuntimeFormat {
  RuntimeFormat(const Conversion& conversion, const char* size) {
    char* end = text + std::snprintf(text, sizeof(text), "%%%s", conversion.flags);
    if (conversion.width > 0) end += std::snprintf(end, 16, "%d", conversion.width);
    if (conversion.precision >= 0) end += std::snprintf(end, 16, ".%d", conversion.precision);
    std::snprintf(end, 8, "%s%c", size, conversion.type);
  }
  char text[48];
};

class MessageWriter {
 public:
  explicit MessageWriter(TextBuffer& out, std::va_list arguments) : out_(out) {
    va_copy(arguments_, arguments);
  }
  ~MessageWriter() { va_end(arguments_); }

  void Write(const char* format) {
    while (*format != '\0') {
      const std::size_t plain = std::strcspn(format, "%");
      out_.Append({format, plain});
      format += plain;
      if (*format == '%') {
        ++format;
        const Conversion conversion = ReadConversion(format, arguments_);
        WriteOne(conversion);
      }
    }
  }

 private:
  void WriteOne(const Conversion& conversion) {
    switch (conversion.type) {
      case 'd':
      case 'i':
      case 'u':
      case 'x':
      case 'X':
      case 'o':
        return WriteInteger(conversion);
      case 'e':
      case 'E':
      case 'f':
      case 'F':
      case 'g':
      case 'G':
      case 'a':
      case 'A':
        return WriteByRuntime(conversion, "", va_arg(arguments_, double));
      case 'p':
        return WriteByRuntime(conversion, "", va_arg(arguments_, void*));
      case 's':
        return conversion.size == Width::kLong ? WriteWide(conversion) : WriteNarrow(conversion);
      case 'S':
        return conversion.size == Width::kShort ? WriteNarrow(conversion) : WriteWide(conversion);
      case 'c':
      case 'C':
        return WriteCharacter(conversion);
      case '\0':
        return;
      default:
        return out_.Append(1, conversion.type);
    }
  }

  void WriteInteger(const Conversion& conversion) {
    switch (conversion.size) {
      case Width::k64:
        return WriteByRuntime(conversion, "I64", va_arg(arguments_, long long));
      case Width::kShort:
        return WriteByRuntime(conversion, "h", va_arg(arguments_, int));
      case Width::kNarrow: {
        const int value = va_arg(arguments_, int);
        const bool isSigned = conversion.type == 'd' || conversion.type == 'i';
        return WriteByRuntime(conversion, "",
                              isSigned ? static_cast<signed char>(value)
                                       : static_cast<int>(static_cast<unsigned char>(value)));
      }
      default:
        return WriteByRuntime(conversion, "", va_arg(arguments_, int));
    }
  }

  template <class T>
  void WriteByRuntime(const Conversion& conversion, const char* size, T value) {
    char text[kLongestMessage + 1];
    const int length = _snprintf(text, sizeof(text), RuntimeFormat(conversion, size).text, value);
    // A negative length means that the text was too long and filled the whole buffer. The buffer is
    // one byte longer than the longest message, so Append notices that the text is too long, and
    // cuts it.
    out_.Append({text, length < 0 ? sizeof(text) : static_cast<std::size_t>(length)});
  }

  void WriteNarrow(const Conversion& conversion) {
    const char* text = va_arg(arguments_, const char*);
    if (text == nullptr) text = "(null)";
    const std::size_t length =
        conversion.precision < 0 ? std::strlen(text) : ::strnlen(text, conversion.precision);
    WritePadded(conversion, length, [&] { out_.Append({text, length}); });
  }

  void WriteWide(const Conversion& conversion) {
    const wchar_t* text = va_arg(arguments_, const wchar_t*);
    if (text == nullptr) text = L"(null)";
    const std::size_t length =
        conversion.precision < 0 ? std::wcslen(text) : ::wcsnlen(text, conversion.precision);
    WritePadded(conversion, length, [&] { out_.AppendWide({text, length}); });
  }

  void WriteCharacter(const Conversion& conversion) {
    const int value = va_arg(arguments_, int);
    const bool wide = conversion.size == Width::kLong ||
                      (conversion.type == 'C' && conversion.size != Width::kShort);
    WritePadded(conversion, 1, [&] {
      if (wide) {
        const auto unit = static_cast<wchar_t>(value);
        out_.AppendWide({&unit, 1});
      } else {
        out_.Append(1, static_cast<char>(value));
      }
    });
  }

  template <class WriteText>
  void WritePadded(const Conversion& conversion, std::size_t length, WriteText writeText) {
    const auto width = static_cast<std::size_t>(conversion.width);
    const std::size_t padding = width > length ? width - length : 0;
    if (conversion.Has('-')) {
      writeText();
      out_.Append(padding, ' ');
    } else {
      out_.Append(padding, conversion.Has('0') ? '0' : ' ');
      writeText();
    }
  }

  TextBuffer& out_;
  std::va_list arguments_;
};

}  // namespace

std::size_t WholeSequences(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  std::size_t end = limit;
  const auto isContinuation = [&](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
  };
  while (end > 0 && limit - end < 3 && isContinuation(end)) --end;
  return isContinuation(end) ? limit : end;
}

TextBuffer::TextBuffer(char* storage, std::size_t capacity)
    : storage_(storage), capacity_(capacity) {
  storage_[0] = '\0';
}

void TextBuffer::Append(std::string_view utf8) {
  if (cut_) return;
  const std::size_t kept = WholeSequences(utf8, capacity_ - 1 - length_);
  std::memcpy(storage_ + length_, utf8.data(), kept);
  length_ += kept;
  storage_[length_] = '\0';
  cut_ = kept < utf8.size();
}

void TextBuffer::Append(std::size_t count, char filler) {
  if (cut_) return;
  const std::size_t kept = std::min(count, capacity_ - 1 - length_);
  std::memset(storage_ + length_, filler, kept);
  length_ += kept;
  storage_[length_] = '\0';
  cut_ = kept < count;
}

void TextBuffer::AppendWide(std::wstring_view text) {
  constexpr std::size_t kChunk = 256;
  while (!text.empty() && !cut_) {
    std::size_t units = std::min(text.size(), kChunk);
    if (units < text.size() && IsHighSurrogate(text[units - 1])) --units;
    char utf8[kChunk * 3];
    const int length =
        ::WideCharToMultiByte(CP_UTF8, 0 /*flags*/, text.data(), static_cast<int>(units), utf8,
                              sizeof(utf8), nullptr /*default char*/, nullptr);
    Append({utf8, static_cast<std::size_t>(length)});
    text.remove_prefix(units);
  }
}

void TextBuffer::AppendFormat(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  MessageWriter(*this, arguments).Write(format);
  va_end(arguments);
}

void TextBuffer::AppendMessage(const char* format, std::va_list arguments) {
  if (cut_) return;
  TextBuffer message(storage_ + length_, std::min(capacity_ - length_, kLongestMessage + 1));
  MessageWriter(message, arguments).Write(format);
  length_ += message.length_;
}

void TextBuffer::AppendMessage(const wchar_t* format, std::va_list arguments) {
  wchar_t message[kLongestMessage + 1] = {};
  const bool cut = _vsnwprintf(message, kLongestMessage + 1, format, arguments) < 0 ||
                   message[kLongestMessage] != L'\0';
  std::size_t length = ::wcsnlen(message, kLongestMessage);
  if (cut && length > 0 && IsHighSurrogate(message[length - 1])) --length;
  AppendWide({message, length});
}

}  // namespace logging
