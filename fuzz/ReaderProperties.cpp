#include "fuzz/ReaderProperties.h"

#include <algorithm>
#include <memory>

#include "fuzz/Require.h"
#include "json/JsonWriter.h"

// Of the sanitizers' runtime; GCC comes without the header that declares them.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*on_malloc)(const volatile void*,
                                                                           std::size_t),
                                                         void (*on_free)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void* block);

namespace {

// Bytes that are allocated now and were at most, counted while `counting`.
bool counting = false;
std::ptrdiff_t live = 0, most = 0;

const int hooks = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t size) {
      if (!counting) return;
      live += static_cast<std::ptrdiff_t>(size);
      most = std::max(most, live);
    },
    [](const volatile void* block) {
      if (counting) live -= static_cast<std::ptrdiff_t>(__sanitizer_get_allocated_size(block));
    });

bool SameValues(const base::ListValue& a, const base::ListValue& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

bool HoldsNoncharacter(const base::ListValue& list) {
  for (const char* at = list.begin(); at != list.end();) {
    const base::ValueView value(at);
    bool well_formed = true;
    const std::u32string codes = plain::Decode(value.GetIfString().value_or(""), &well_formed);
    Require(well_formed, "a string that was read is UTF-8");
    if (std::any_of(codes.begin(), codes.end(), plain::IsNoncharacter)) return true;
    at = value.End();
  }
  return false;
}

std::optional<base::Document> WrittenAndRead(const base::Document& document) {
  base::Utf16Text text;
  Require(base::WriteJson(document.values, text), "what was read can be written");
  if (document.type != base::ValueType::kList) text = text.substr(1, text.size() - 2);
  return base::ReadJson(text);
}

template <class Text>
std::optional<base::Document> Read(Text text) {
  using Unit = typename Text::value_type;
  // A block of its exact size, so that the sanitizer sees a read beyond it.
  const std::unique_ptr<Unit[]> exact(new Unit[text.size()]);
  std::copy(text.begin(), text.end(), exact.get());
  Require(hooks != 0, "allocations can be counted");
  live = most = 0;
  counting = true;
  std::optional<base::Document> read = base::ReadJson(Text(exact.get(), text.size()));
  counting = false;
  Require(!read || most > 0, "allocations are counted");
  // Far below a MiB, so that short texts show what long ones would take.
  const auto allowed = static_cast<std::ptrdiff_t>(40 * text.size() * sizeof(Unit) + 4096);
  Require(most <= allowed, "reading takes at most 40 times the text");
  if (!read) return read;

  const std::optional<base::Document> again = WrittenAndRead(*read);
  Require(again.has_value(), "what was written can be read");
  // Two keys may become one where noncharacters do; from then on nothing changes.
  if (!HoldsNoncharacter(read->values))
    Require(SameDocument(read, again), "what was written reads the same");
  Require(SameDocument(again, WrittenAndRead(*again)), "what was written twice reads the same");
  return read;
}

}  // namespace

bool SameDocument(const std::optional<base::Document>& a, const std::optional<base::Document>& b) {
  if (!a || !b) return !a && !b;
  return a->type == b->type && SameValues(a->values, b->values);
}

std::optional<base::Document> ReadChecked(std::string_view utf8) { return Read(utf8); }
std::optional<base::Document> ReadChecked(base::Utf16View text) { return Read(text); }
