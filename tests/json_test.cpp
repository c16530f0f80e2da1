// JSON values, reader and writer: what is accepted, refused and written, byte for byte.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "json/JsonReader.h"
#include "json/JsonWriter.h"
#include "json/Value.h"

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

using base::ReadJson;
using base::Value;
using base::WriteJson;
using std::string_literals::operator""s;

std::string Written(Value&& value) {
  base::ListValue list;
  list.Append(std::move(value));
  std::string out = "old";
  return WriteJson(list, out) ? out.substr(1, out.size() - 2) : "refused" + out;
}
std::string Rewritten(const std::string& text) {
  return Written(ReadJson(text).value_or(Value("no value")));
}

std::string Repeated(std::string_view piece, std::size_t count) {
  std::string all;
  while (count-- > 0) all += piece;
  return all;
}

const std::string k400Zeros(400, '0');

TEST(JsonReader, Accepts) {
  const std::pair<std::string, std::string> cases[] = {
      {"\xEF\xBB\xBF \t\r\n[ true ,\nfalse\t,[ ],{}]\r ", "[true,false,[],{}]"},
      {"//c\n[1,//c\r2,/*c*/{/**/\"a\"/**/:/***/1 /**/}]/*/*/", R"([1,2,{"a":1}])"},
      {"[1]\0"s, "[1]"},
      {"1 x", "1"},
      {"[-0,2147483647,-2147483648,2147483648,-2147483649,18446744073709551617]",
       "[0,2147483647,-2147483648,2147483648.0,-2147483649.0,18446744073709551616.0]"},
      {"[1e2,1E+2,1e-2,2.0,0.5,-0.25,-0.0,0e9]", "[100.0,100.0,0.01,2.0,0.5,-0.25,-0.0,0.0]"},
      {"[1.7976931348623157e308,5e-324,-1e-400,1e-99999999999999999999,0e99999999999999999999]",
       "[1.7976931348623157e+308,5e-324,-0.0,0.0,0.0]"},
      {"[0." + k400Zeros + "1e400,1" + k400Zeros + "e-390]", "[0.1,1e+10]"},
      {R"("\"\\\/\b\f\n\r\t\v\x41\x00")", R"("\"\\/\b\f\n\r\t\u000BA\u0000")"},
      {R"("\xe9\uD83D\uDE00\udbff\udffd")", "\"\xC3\xA9\xF0\x9F\x98\x80\xF4\x8F\xBF\xBD\""},
      {"\"\x01\n\t\0\x7F/\xEF\xBB\xBF\""s, "\"\\u0001\\n\\t\\u0000\x7F/\xEF\xBB\xBF\""},
      {"{\"\xC3\xA9\":1,\"b\":2,\"\":3,\"b\":5}", "{\"\":3,\"b\":5,\"\xC3\xA9\":1}"},
      {Repeated("[", 199) + Repeated("]", 199), Repeated("[", 199) + Repeated("]", 199)},
      {"[" + Repeated("[],", 300) + "{}]", "[" + Repeated("[],", 300) + "{}]"}};
  for (const auto& [text, written] : cases) EXPECT_EQ(Rewritten(text), written) << text;
}

TEST(JsonReader, Rejects) {
  const std::string cases[] = {
      "", " ", "\xEF\xBB\xBF", " \xEF\xBB\xBF[]", "/**/", "\0"s, "[", "]", "[1", "[1,", "[1,]",
      "[,1]", "[1 2]", "[1}", "{", "{\"a\"}", "{\"a\":}", "{\"a\":1,}", "{1:2}", "{\"a\" 1}",
      "{\"a\":1", "{\"a\":1]", "tru", "[truex]", "True", "NaN", "[1]\0\0"s, "[1]x ", "[1] xy",
      "[1]\xC3\xA9", "[1] /*/", "[1/**/]", "1//", "[1,/*c/2]", "/", "-", "+1", "--1", "1.", ".5",
      "1.e5", "1e", "[1e+]", "01", "-00", "[12x]", "1.5.5", "1e5.5", "-1e400",
      "1e99999999999999999999", "1e9223372036854775808", "1" + k400Zeros,
      "0." + k400Zeros + "1e999", "1" + k400Zeros + "e-9",
      // Strings; broken UTF-8, overlong forms, surrogates, above U+10FFFF.
      "\"", "\"a", "'a'", R"("\)", R"("\")", R"("\a")", R"("\0")", R"("\U0041")", R"("\u00eg")",
      R"("\u00e)", R"("\x4")", R"("\x)", R"("\uD800")", R"("\uDC00")", R"("\uD800\uD800")",
      R"("\uD800\n")", R"("\uD800\u0041")", R"("\uD800\uDC0")", "\"\x80\"", "\"\xC3\"",
      "\"\xE2\x82\"", "\"\xF0\x9F\x98", "\"\xC1\xBF\"", "\"\xE0\x9F\xBF\"", "\"\xF0\x8F\xBF\xBF\"",
      "\"\xED\xA0\x80\"", "\"\xF4\x90\x80\x80\"", Repeated("[", 200) + Repeated("]", 200),
      Repeated("[{\"\":", 100) + Repeated("}]", 100), Repeated("[{\"\":", 1000000)};
  for (const auto& text : cases) EXPECT_FALSE(ReadJson(text)) << text.substr(0, 500);
}

TEST(JsonReader, NeverReadsBeyondTheText) {
  const auto whole = "\xEF\xBB\xBF [-2.5e+3,\"\\u00e9\\uD83D\\uDE00\xC3\xA9\",true,{\"k\":null}]"s;
  for (auto end = whole.begin(); end != whole.end(); ++end) {
    const std::vector<char> exact(whole.begin(), end);
    EXPECT_FALSE(ReadJson({exact.data(), exact.size()})) << exact.size();
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
        "[\"" + Repeated("\\n,", kCount) + "\"]", "[" + Repeated("/*", kCount),
        Repeated("1", kCount) + "e-" + std::to_string(kCount)}) {
    const std::size_t before = bytes_allocated;
    ReadJson(text);
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
    if (const auto at = special.find(raw); at < special.size()) form = "\\"s + letters[at];
    for (std::size_t before = 0; before < 36; ++before) {
      const std::string head(before, 'a'), tail(35 - before, 'z');
      const std::string written = Written(Value(head + raw + tail));
      EXPECT_EQ(written, "\"" + head + form + tail + "\"") << byte << " at " << before;
      EXPECT_EQ(Rewritten(written), written) << byte << " at " << before;
    }
  }
}

TEST(JsonWriter, WritesCodePoints) {
  // "?" stands for U+FFFD.
  const std::pair<std::string, std::string> cases[] = {
      {"\xE2\x80\xA7\xE2\x80\xA8\xE2\x80\xA9|", "\xE2\x80\xA7\\u2028\\u2029|"},
      {"\xEF\xB7\x8F|\xEF\xB7\x90|\xEF\xB7\xAF|\xEF\xB7\xB0", "\xEF\xB7\x8F|?|?|\xEF\xB7\xB0"},
      {"\xEF\xBF\xBD|\xEF\xBF\xBE|\xF4\x8F\xBF\xBF|\xF4\x90\x80\x80", "?|?|?|????"},
      {"\xED\x9F\xBF|\xED\xA0\x80|\xEE\x80\x80", "\xED\x9F\xBF|???|\xEE\x80\x80"},
      {"\xC3|\xE2\x82|\xF0\x9F\x98|\xC0\xAF|\xC3", "?|?|?|??|?"},
      {Repeated("\xFF\x01", 5000), Repeated("?\\u0001", 5000)}};
  for (const auto& [text, written] : cases) {
    std::string expected;
    for (const char c : written) expected += c == '?' ? "\xEF\xBF\xBD" : std::string(1, c);
    EXPECT_EQ(Written(Value(text)), "\"" + expected + "\"") << text;
  }
}

TEST(JsonWriter, ReplacesAndRefuses) {
  std::string out = "old";
  EXPECT_TRUE(WriteJson(base::ListValue(), out) && out == "[]") << out;
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
  Value parent = ReadJson("[1,[\"beyond the inline bytes\"]]").value();
  for (int i = 1; i >= 0; --i) parent = std::move((*parent.GetIfList())[i]);
  EXPECT_EQ(parent.GetIfString(), "beyond the inline bytes") << "a child takes its parent's place";
}

TEST(JsonValue, IsReadAsItsOwnKindAlone) {
  const char* kTexts[] = {"true", "7", "7e0", "\"7\"", "{}", "[]", "null"};
  for (std::size_t kind = 0; kind < std::size(kTexts); ++kind) {
    const Value value = ReadJson(kTexts[kind]).value();
    const bool has[] = {value.GetIfBool().has_value(),      value.GetIfInt().has_value(),
                        value.GetIfDouble().has_value(),    value.GetIfString().has_value(),
                        value.GetIfDictionary() != nullptr, value.GetIfList() != nullptr,
                        value.type() == Value::Type::kNull};
    for (std::size_t i = 0; i < std::size(has); ++i) EXPECT_EQ(has[i], i == kind) << kTexts[kind];
  }
}

}  // namespace
