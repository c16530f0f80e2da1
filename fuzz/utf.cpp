// Fuzzes the conversions between UTF-8 and UTF-16, and compares them with the conversions of
// PlainUtf.h.
#include <memory>

#include "fuzz/PlainUtf.h"
#include "fuzz/Require.h"
#include "json/ListValue.h"

namespace {

template <class Unit>
std::unique_ptr<Unit[]> Exact(std::basic_string_view<Unit> text) {
  std::unique_ptr<Unit[]> copy(new Unit[text.size()]);
  text.copy(copy.get(), text.size());
  return copy;
}

void CheckBytes(std::string_view bytes) {
  const auto exact = Exact(bytes);
  const char* const end = exact.get() + bytes.size();
  for (const char* at = exact.get(); at != end;) {
    const base::CodePoint expected = plain::First({at, static_cast<std::size_t>(end - at)});
    const base::CodePoint first = base::Decode(at, end);
    Require(first.valid == expected.valid, "both decoders find the bytes valid or invalid");
    Require(first.length == expected.length, "both decoders read the same number of bytes");
    Require(!first.valid || first.code == expected.code, "both decoders read the same code point");
    at += first.length;
  }
}

void CheckText(base::Utf16View text) {
  const std::u32string codes = plain::Decode(text);
  const base::Utf16Text expected = plain::ToUtf16(codes);
  const auto exact = Exact(text);
  base::ListValue list;
  list.AppendString({exact.get(), text.size()});
  const base::StringView kept = list.At(0).GetIfString().value();
  Require(base::ToUtf8(kept) == plain::ToUtf8(codes), "UTF-16 becomes the same UTF-8");
  Require(base::Utf8Length(kept) == plain::ToUtf8(codes).size(), "the UTF-8 length is the same");
  Require(base::Utf16Length(kept) == expected.size(), "the UTF-16 length is the same");

  const auto copied = [](const base::StringView& from) {
    const std::size_t size = base::Utf16Length(from);
    const std::unique_ptr<base::Utf16Unit[]> units(new base::Utf16Unit[size]);
    base::CopyAsUtf16(from, units.get());
    return base::Utf16Text(units.get(), size);
  };
  Require(copied(kept) == expected, "a string becomes the same UTF-16");
  const base::Utf16Text up_to_zero = expected.substr(0, expected.find(base::Utf16Unit{}));
  Require(copied(base::UpToZero(kept)) == up_to_zero, "a string ends at the first zero");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CheckBytes({reinterpret_cast<const char*>(data), size});
  CheckText(UnitsOf(data, size));
  return 0;
}
