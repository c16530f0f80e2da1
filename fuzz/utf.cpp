// The conversions between UTF-8 and UTF-16 against the plain ones.
#include <memory>

#include "fuzz/PlainUtf.h"
#include "fuzz/Require.h"

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
    Require(first.valid == expected.valid, "the same bytes are UTF-8");
    Require(first.length == expected.length, "a code point or an ill-formed part is as long");
    Require(!first.valid || first.code == expected.code, "bytes are the same code point");
    at += first.length;
  }
}

void CheckText(base::Utf16View text) {
  const std::u32string codes = plain::Decode(text);
  const std::string expected = plain::ToUtf8(codes);
  const auto exact = Exact(text);
  // Room of the least size that the conversion asks for.
  const std::size_t room = text.size() * base::kMaxUtf8PerUnit + base::kCopySlack;
  const std::unique_ptr<char[]> bytes(new char[room]);
  const char* const end = base::CopyAsUtf8({exact.get(), text.size()}, bytes.get());
  const std::string_view utf8(bytes.get(), static_cast<std::size_t>(end - bytes.get()));
  Require(utf8 == expected, "UTF-16 becomes the same UTF-8");

  const base::Utf16Text back = plain::ToUtf16(codes);
  const auto source = Exact(utf8);
  const std::string_view from(source.get(), utf8.size());
  Require(base::Utf16Length(from) == back.size(), "UTF-8 has as many units");
  const std::unique_ptr<base::Utf16Unit[]> units(new base::Utf16Unit[back.size()]);
  base::CopyAsUtf16(from, units.get());
  Require(base::Utf16View(units.get(), back.size()) == back, "UTF-8 becomes the same UTF-16");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CheckBytes({reinterpret_cast<const char*>(data), size});
  CheckText(UnitsOf(data, size));
  return 0;
}
