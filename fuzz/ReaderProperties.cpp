#include "fuzz/ReaderProperties.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <numeric>

#include "fuzz/Require.h"
#include "json/JsonWriter.h"

// The sanitizers' runtime has these functions, but GCC lacks the header that declares them.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*on_malloc)(const volatile void*,
                                                                           std::size_t),
                                                         void (*on_free)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void* block);

namespace {

// The number of bytes that are allocated now, and the maximum of this number. Counted only while
// `counting` is true.
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

bool HoldsNoncharacter(const base::ListValue& list) {
  for (const char* at = list.begin(); at != list.end(); at = base::ValueView(at).End()) {
    const auto text = base::ValueView(at).GetIfString();
    if (!text) continue;
    const std::u32string codes = plain::Decode(text->wide);
    Require(plain::ToUtf16(codes) == text->wide, "a string that was read is well formed");
    if (std::any_of(codes.begin(), codes.end(), plain::IsNoncharacter)) return true;
  }
  return false;
}

std::unique_ptr<Document> WrittenAndRead(const Document& document) {
  base::Utf16Text text;
  Require(base::WriteJson(document.values, text), "what was read can be written");
  if (document.type != base::ValueType::kList) text = text.substr(1, text.size() - 2);
  return Read(base::Utf16View(text));
}

// Returns type and content of a value as text. Different values have different texts.
std::string Shown(const base::ValueView& value) {
  const std::string type = std::to_string(static_cast<int>(value.type())) + ' ';
  if (const auto flag = value.GetIfBool()) return type + std::to_string(*flag);
  if (const auto number = value.GetIfInt()) return type + std::to_string(*number);
  if (const auto number = value.GetIfDouble())
    return type + std::to_string(std::bit_cast<std::uint64_t>(*number));
  const auto text = value.GetIfString();
  return text ? type + std::string(text->ascii) + plain::ToUtf8(plain::Decode(text->wide)) : type;
}

// The reader reads a list in steps: pieces of text whose values fit into the reserved memory. The
// first step is always 62 units long. This function puts blanks after the first element. Their
// number depends on the text, so the first step ends at a different place in each text.
template <class Text>
void CheckSteps(Text text) {
  std::basic_string<typename Text::value_type> padded(text.begin(), text.begin() + 1);
  padded += '0';
  padded.append(std::accumulate(text.begin(), text.end(), text.size()) % 50, ' ');
  padded += ',';
  padded += text.substr(1);
  Require(SameDocument(Read(Text(padded), 1), Read(Text(padded), padded.size())),
          "a text read by small steps reads the same");
}

template <class Text>
std::unique_ptr<Document> Checked(Text text) {
  using Unit = typename Text::value_type;
  // A block of the text's exact size, so that the sanitizer reports a read beyond its end.
  const std::unique_ptr<Unit[]> exact(new Unit[text.size()]);
  std::copy(text.begin(), text.end(), exact.get());
  Require(hooks != 0, "allocations can be counted");
  live = most = 0;
  counting = true;
  std::unique_ptr<Document> read = Read(Text(exact.get(), text.size()));
  counting = false;
  Require(most > 0, "allocations are counted");
  // The constant 4096 is small, so that the check also fails for a short text whose reading takes
  // too much memory.
  const auto allowed = static_cast<std::ptrdiff_t>(40 * text.size() * sizeof(Unit) + 4096);
  Require(most <= allowed, "reading takes at most 40 times the text");
  if (!text.empty() && text.front() == '[') CheckSteps(text);
  if (!read) return read;

  const std::unique_ptr<Document> again = WrittenAndRead(*read);
  Require(again != nullptr, "what was written can be read");
  // The writer replaces noncharacters, so two keys may become equal when the values are written the
  // first time. Writing and reading the result once more must change nothing.
  if (!HoldsNoncharacter(read->values))
    Require(SameDocument(read, again), "what was written reads the same");
  Require(SameDocument(again, WrittenAndRead(*again)), "what was written twice reads the same");
  return read;
}

}  // namespace

bool SameValues(const base::ListValue& a, const base::ListValue& b) {
  const char *first = a.begin(), *second = b.begin();
  while (first != a.end() && second != b.end()) {
    const base::ValueView one(first), other(second);
    if (Shown(one) != Shown(other)) return false;
    first = one.End();
    second = other.End();
  }
  return first == a.end() && second == b.end();
}

bool SameDocument(const std::unique_ptr<Document>& a, const std::unique_ptr<Document>& b) {
  if (!a || !b) return !a && !b;
  return a->type == b->type && SameValues(a->values, b->values);
}

std::unique_ptr<Document> ReadChecked(std::string_view utf8) { return Checked(utf8); }
std::unique_ptr<Document> ReadChecked(base::Utf16View text) { return Checked(text); }
