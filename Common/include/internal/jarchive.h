// Both processes. The message of the bridge: plain values in order, carried as one JSON array. The
// sender appends, the receiver reads in the same order and knows what comes next.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "AtlTypes.h"
#include "internal/VectorGrowth.h"
#include "json/ListText.h"
#include "json/ListValue.h"
#include "logging/Log.h"

namespace Tessel {

// The one failure of an archive. Derives from nothing: caught by its own type.
class ArchiveException {
 public:
  explicit ArchiveException(std::string message) : message_(std::move(message)) {}
  const std::string& Message() const { return message_; }

 private:
  std::string message_;
};

}  // namespace Tessel

// Copies share the list of values; each has its own cursor. For one thread at a time.
class JArchive {
 public:
  JArchive();
  // A moved-from archive must stay usable, so there is no move: it copies.
  JArchive(const JArchive&) = default;
  JArchive& operator=(const JArchive&) = default;

  // The text of the array, compact. Throws ArchiveException.
  std::wstring toString() const;
  // The same without a copy if the content is text already. Otherwise the text is written to
  // `buffer`. Valid until the archive or the buffer changes.
  std::wstring_view toString(std::wstring& buffer) const;

  // Replaces the content by that of a text and sets the cursor to the start. If it throws
  // ArchiveException, the archive is unchanged.
  void fromString(std::wstring_view text);

  JArchive& operator<<(std::int32_t value);
  JArchive& operator<<(bool value);
  JArchive& operator<<(const wchar_t* text);  // null throws
  JArchive& operator<<(const CComBSTR& text);
  JArchive& operator<<(const POINT& point);

  // A read that fails throws ArchiveException and leaves the cursor where it was.
  JArchive& operator>>(std::int32_t& value);
  JArchive& operator>>(long& value) {  // of 32 bits, as int is, and yet another type
    std::int32_t read = 0;
    *this >> read;
    value = read;
    return *this;
  }
  JArchive& operator>>(bool& value);
  JArchive& operator>>(std::string& utf8);
  JArchive& operator>>(CComBSTR& text);

  // A count, then that many elements, appended to what the vector holds.
  template <class T, class Allocator>
  JArchive& operator>>(std::vector<T, Allocator>& elements) {
    LOG_INFO_W(L"Archive: read vector");
    std::int32_t count = 0;
    *this >> count;
    for (std::int32_t i = 0; i < count; ++i) {
      T element{};
      *this >> element;
      AppendGrowing(elements, std::move(element));
    }
    return *this;
  }

 private:
  // A request is written and never read, so it starts as text. It is converted to values on the
  // first read, or when a string cannot be stored exactly as text.
  using Content = std::variant<base::ListText, base::ListValue>;

  base::ListValue& Values() const;
  base::ValueView Current() const;
  JArchive& MoveAfter(base::ValueView element);

  std::shared_ptr<Content> content_;
  std::size_t cursor_ = 0;  // in bytes of the values
};
