// Runs in the client and in the broker. A message between client and broker: a list of simple
// values, sent as one JSON array. The sender appends the values with <<, and the receiver reads
// them with >> in the same order. Both sides must know the order of the types, because each read
// expects one type.
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

// Thrown when an archive cannot be read or written. Has no base class, so catch exactly this type.
class ArchiveException {
 public:
  explicit ArchiveException(std::string message) : message_(std::move(message)) {}
  const std::string& Message() const { return message_; }

 private:
  std::string message_;
};

}  // namespace Tessel

// Copies of an archive share the values, but each copy has its own cursor: the position of the next
// value to read. Only one thread at a time may use an archive and its copies.
class JArchive {
 public:
  JArchive();
  // There is no move constructor, so a move makes a copy. Thus a moved-from archive stays usable.
  JArchive(const JArchive&) = default;
  JArchive& operator=(const JArchive&) = default;

  // Returns the array as compact JSON text. Throws ArchiveException if the values cannot be written
  // as JSON.
  std::wstring toString() const;
  // Returns the same text as toString(). Makes no copy if the content is stored as text. Otherwise
  // writes the text to `buffer`. The result is valid until the archive or the buffer changes.
  std::wstring_view toString(std::wstring& buffer) const;

  // Replaces the content by the elements of a JSON array and sets the cursor to the first element.
  // Copies of the archive keep the old content. If the text is not a JSON array, throws
  // ArchiveException and leaves the archive unchanged.
  void fromString(std::wstring_view text);

  JArchive& operator<<(std::int32_t value);
  JArchive& operator<<(bool value);
  JArchive& operator<<(const wchar_t* text);  // throws ArchiveException if `text` is null
  JArchive& operator<<(const CComBSTR& text);
  JArchive& operator<<(const POINT& point);

  // A read that fails throws ArchiveException and does not move the cursor.
  JArchive& operator>>(std::int32_t& value);
  // On Windows, long has 32 bits like int, but C++ treats them as different types.
  JArchive& operator>>(long& value) {
    std::int32_t read = 0;
    *this >> read;
    value = read;
    return *this;
  }
  JArchive& operator>>(bool& value);
  JArchive& operator>>(std::string& utf8);
  JArchive& operator>>(CComBSTR& text);

  // Reads the number of elements and then each element, and appends the elements to the vector.
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
  // The content starts as JSON text, because the sender of a request never reads its values. The
  // text is converted to values on the first read, or when a string cannot be stored exactly as
  // text.
  using Content = std::variant<base::ListText, base::ListValue>;

  base::ListValue& Values() const;
  base::ValueView Current() const;
  JArchive& MoveAfter(base::ValueView element);

  std::shared_ptr<Content> content_;
  std::size_t cursor_ = 0;  // the byte offset of the next value
};
