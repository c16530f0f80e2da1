// JSON values, reader and writer: what is accepted, refused and written, byte for byte.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "json/JsonReader.h"
#include "json/JsonWriter.h"

// Bytes that this program has had from operator new.
static std::size_t bytes_allocated = 0;

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  bytes_allocated += size;
  return std::malloc(size);
}
void* operator new(std::size_t size) {
  if (void* const memory = operator new(size, std::nothrow)) return memory;
  throw std::bad_alloc();
}
// Not called by its name: the compiler would take it for a mismatch where it sees both ends.
static void (*const volatile give_back)(void*) = std::free;
void operator delete(void* memory) noexcept { give_back(memory); }
void operator delete(void* memory, std::size_t) noexcept { give_back(memory); }

namespace {

using base::Value;

std::string Written(Value&& value) {
  base::ListValue list;
  list.Append(std::move(value));
  std::string out = "old";
  return base::WriteJson(list, out) ? out.substr(1, out.size() - 2) : "refused" + out;
}

// In memory of its exact size, so that the sanitizer sees a read beyond it.
std::string Rewritten(const std::string& text) {
  const std::vector<char> exact(text.begin(), text.end());
  return Written(base::ReadJson({exact.data(), exact.size()}).value_or(Value("no value")));
}

std::string Content(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Repeated(std::string_view piece, std::size_t count) {
  std::string all;
  while (count-- > 0) all += piece;
  return all;
}

TEST(JsonReader, AcceptsAndRefuses) {
  for (const auto& entry : std::filesystem::directory_iterator(TESSEL_JSON_TEXTS)) {
    std::filesystem::path path = entry.path();
    if (path.extension() != ".json") continue;
    const std::string text = Content(path), name = path.stem().string();
    const std::string expected =
        name.starts_with("refused") ? "\"no value\"" : Content(path.replace_extension("out"));
    EXPECT_EQ(Rewritten(text), expected) << name;
    for (std::size_t size = 0; size < text.size(); ++size) Rewritten(text.substr(0, size));
  }
}

// Each would take hours or gigabytes if reading were quadratic or reserved on trust.
TEST(JsonReader, HostileTextsStayCheap) {
  constexpr int kCount = 200000;
  std::string falling = "{";
  for (int i = 9 * kCount; i > 8 * kCount; --i) falling += "\"" + std::to_string(i) + "\":0,";
  for (const std::string& text :
       {"[" + Repeated("[0],", kCount) + "0]", "[" + Repeated("{\"\":0},", kCount) + "0]",
        "{" + Repeated("\"k\":0,", kCount) + "\"\":1}", falling + "\"\":1}",
        Repeated("[{\"\":", kCount), "[\"" + Repeated("\\n,", kCount) + "\"]",
        "[" + Repeated("/*", kCount), Repeated("1", kCount) + "e-" + std::to_string(kCount)}) {
    const std::size_t before = bytes_allocated;
    base::ReadJson(text);
    EXPECT_LE(bytes_allocated - before, 24 * text.size() + 4096) << text.substr(0, 20);
    EXPECT_GE(bytes_allocated - before, text.size() / 2) << text.substr(0, 20) << ": not counted";
  }
}

TEST(JsonWriter, EscapesEveryByteAtEveryPlaceOfABlock) {
  constexpr std::string_view special = "\b\t\n\f\r\"\\", letters = "btnfr\"\\";
  for (int byte = 0; byte < 256; ++byte) {
    const std::string raw(1, static_cast<char>(byte));
    char code[8];
    std::snprintf(code, sizeof(code), "\\u%04X", byte);
    std::string form = byte >= 0x80 ? "\xEF\xBF\xBD" : byte < 0x20 || byte == '<' ? code : raw;
    if (const auto at = special.find(raw); at < special.size()) form = {'\\', letters[at]};
    for (std::size_t before = 0; before < 36; ++before) {
      const std::string head(before, 'a'), tail(35 - before, 'z');
      const std::string written = Written(Value(head + raw + tail));
      EXPECT_EQ(written, "\"" + head + form + tail + "\"") << byte << " at " << before;
      EXPECT_EQ(Rewritten(written), written) << byte << " at " << before;
    }
  }
}

TEST(JsonWriter, ReplacesBrokenUtf8AndRefusesWhatNoTextSays) {
  const std::pair<const char*, int> cases[] = {{"\xC3", 1},         {"\xE2\x82", 1},
                                               {"\xC0\xAF", 2},     {"\xF0\x9F\x98", 1},
                                               {"\xED\xA0\x80", 3}, {"\xF4\x90\x80\x80", 4}};
  for (const auto& [text, count] : cases) {
    EXPECT_EQ(Written(Value(text + std::string("|"))),
              '"' + Repeated("\xEF\xBF\xBD", count) + "|\"")
        << text;
  }
  EXPECT_EQ(Written(Value(Repeated("\x01", 5000))), '"' + Repeated("\\u0001", 5000) + '"');
  EXPECT_EQ(Written(Value(-HUGE_VAL)), "refused");
  EXPECT_EQ(Written(Value(std::nan(""))), "refused");
  EXPECT_EQ(Written(Value(std::span<const std::byte>())), "refused");
}

TEST(JsonValue, KeepsBytesOfEveryLengthThroughMoves) {
  for (std::size_t size = 0; size < 40; ++size) {
    const std::string text(size, static_cast<char>(size * 7));
    Value third(Repeated("in a block of its own", 2));
    const std::size_t before = bytes_allocated;
    Value first{std::string_view(text)}, second(std::move(first)), &self = third;
    third = std::move(second);
    EXPECT_EQ(bytes_allocated == before, size <= 14) << size;
    third = std::move(self);
    EXPECT_EQ(third.GetIfString(), text);
  }
  Value parent = base::ReadJson("[1,[\"beyond the inline bytes\"]]").value();
  for (int i = 1; i >= 0; --i) parent = std::move((*parent.GetIfList())[i]);
  EXPECT_EQ(parent.GetIfString(), "beyond the inline bytes") << "a child takes its parent's place";
}

}  // namespace
