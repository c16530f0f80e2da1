// JSON values, reader and writer: what is accepted, refused and written, byte for byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "json/Check.h"
#include "json/JsonReader.h"
#include "json/JsonWriter.h"
#include "json/Value.h"

namespace {

// Bytes in use and their peak, over every operator new of this program.
std::atomic<std::size_t> bytes_in_use{0};
std::atomic<std::size_t> bytes_peak{0};
constexpr std::size_t kSizeField = 16;

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  auto* const block = static_cast<char*>(std::malloc(size + kSizeField));
  if (!block) return nullptr;
  *reinterpret_cast<std::size_t*>(block) = size;
  const std::size_t in_use = bytes_in_use += size;
  if (in_use > bytes_peak) bytes_peak = in_use;
  return block + kSizeField;
}

void* operator new(std::size_t size) {
  if (void* const memory = operator new(size, std::nothrow)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  if (!memory) return;
  char* const block = static_cast<char*>(memory) - kSizeField;
  bytes_in_use -= *reinterpret_cast<std::size_t*>(block);
  std::free(block);
}

void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { operator delete(memory); }

namespace {

using base::ListValue;
using base::ReadJson;
using base::Value;
using base::WriteJson;
using std::string_literals::operator""s;

std::string Written(const Value& value) {
  std::string out;
  return WriteJson(value, out) ? out : "(refused)";
}

std::string WrittenText(std::string_view utf8) { return Written(Value(utf8)); }

std::string Repeated(std::string_view piece, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += piece;
  return all;
}

std::string Nested(std::string_view open, std::string_view close, std::size_t depth) {
  return Repeated(open, depth) + Repeated(close, depth);
}

using Case = std::pair<std::string, std::string>;

TEST(JsonReader, Accepts) {
  const Case cases[] = {
      {"\xEF\xBB\xBF null", "null"},
      {" \t\r\n[ true ,\nfalse\t,[ ],{}]\r ", "[true,false,[],{}]"},
      {"{ \"a\" : {\"b\":[]} }", R"({"a":{"b":[]}})"},
      // Comments.
      {"[1,/*c*/2]", "[1,2]"},
      {"//c\n[1,//c\r2]//c", "[1,2]"},
      {"/**/[/***/]/*/*/", "[]"},
      {"{/**/\"a\"/**/:/**/1 /**/}", R"({"a":1})"},
      // One surplus byte, whatever it is.
      {"[1]x", "[1]"},
      {"[1]/", "[1]"},
      {"[1]]", "[1]"},
      {"[1]\0"s, "[1]"},
      {"[1]//\nx", "[1]"},
      {"1 x", "1"},
      {"truex", "true"},
      // Integers and doubles.
      {"[0,-0,7,-7]", "[0,0,7,-7]"},
      {"[2147483647,-2147483648]", "[2147483647,-2147483648]"},
      {"[2147483648,-2147483649,9999999999]", "[2147483648.0,-2147483649.0,9999999999.0]"},
      {"18446744073709551617", "18446744073709551616.0"},
      {"[1e2,1E+2,1e-2,2.0,0.5,-0.25,-0.0,0e9]", "[100.0,100.0,0.01,2.0,0.5,-0.25,-0.0,0.0]"},
      {"[1.7976931348623157e308,5e-324]", "[1.7976931348623157e+308,5e-324]"},
      // Too small for a double, or only seemingly out of range.
      {"[1e-400,-1e-400,1e-99999999999999999999]", "[0.0,-0.0,0.0]"},
      {"[0e99999999999999999999,0.000e400]", "[0.0,0.0]"},
      {"0." + Repeated("0", 400) + "1e400", "0.1"},
      {"0." + Repeated("0", 400) + "1e10", "0.0"},
      {"1" + Repeated("0", 400) + "e-390", "1e+10"},
      {"1" + Repeated("0", 400) + "e-999", "0.0"},
      // Strings.
      {R"("\"\\\/\b\f\n\r\t")", R"("\"\\/\b\f\n\r\t")"},
      {R"("\v\x41\xe9\x00")", "\"\\u000BA\xC3\xA9\\u0000\""},
      {R"("\u00e9\u00E9\u0000")", "\"\xC3\xA9\xC3\xA9\\u0000\""},
      {R"("\uD83D\uDE00\udbff\udffd")", "\"\xF0\x9F\x98\x80\xF4\x8F\xBF\xBD\""},
      {"\"\x01\n\t\0\x7F/\""s, "\"\\u0001\\n\\t\\u0000\x7F/\""},
      {"\"\xEF\xBB\xBF\"", "\"\xEF\xBB\xBF\""},
      // Dictionaries: byte order, last value.
      {"{\"\xC3\xA9\":1,\"b\":2,\"\":3,\"ba\":4,\"B\":5}",
       "{\"\":3,\"B\":5,\"b\":2,\"ba\":4,\"\xC3\xA9\":1}"},
      {R"({"b":1,"a":[2],"b":3,"a":{},"b":"last"})", R"({"a":{},"b":"last"})"},
      {R"({"a<":1,"a\u003C":2})", R"({"a\u003C":2})"},
      // Depth.
      {Nested("[", "]", 199), Nested("[", "]", 199)},
      {"[" + Repeated("[[]],", 300) + "{}]", "[" + Repeated("[[]],", 300) + "{}]"}};
  for (const auto& [text, written] : cases) {
    const auto value = ReadJson(text);
    ASSERT_TRUE(value) << text;
    EXPECT_EQ(Written(*value), written) << text;
    const auto again = ReadJson(written);
    EXPECT_TRUE(again && Written(*again) == written) << text;
  }
}

TEST(JsonReader, Rejects) {
  const std::vector<std::string> cases = {
      "", " ", "\xEF\xBB\xBF", " \xEF\xBB\xBF[]", "[\xEF\xBB\xBF]", "/**/", "//", "x", "\0"s,
      "\xFF",
      // Structure.
      "[", "]", "[1", "[1,", "[1,]", "[,]", "[,1]", "[1 2]", "[1}", "{", "{\"a\"}", "{\"a\":}",
      "{\"a\":1,}", "{,}", "{1:2}", "{\"a\" 1}", "{\"a\":1", "{\"a\":1]", "{a:1}", "[1]\0\0"s,
      // Words.
      "tru", "[truex]", "True", "nul", "NaN", "Infinity", "[fals]",
      // Surplus and comments.
      "[1]xy", "[1]x ", "[1] xy", "[1]\xC3\xA9", "[1]/*", "[1]/*x", "[1] /*/", "[1/**/]", "1//",
      "[1]x//", "[/1]", "[1,/*c/2]", "[1,/ *c*/2]", "[1,//]", "/",
      // Numbers.
      "-", "+1", "[-]", "--1", "1.", ".5", "1.e5", "1e", "1e+", "[1e-]", "01", "-01", "00", "12x",
      "[12x]", "0x10", "1.5.5", "1e5.5", "1e5e5", "[1:2]", "1\0"s, "1\v", "1e400", "-1e400",
      "1e99999999999999999999", "1e9223372036854775808", "1" + Repeated("0", 400),
      "0." + Repeated("0", 400) + "1e999", "1" + Repeated("0", 400) + "e-9",
      // Strings.
      "\"", "\"a", "'a'", R"("\)", R"("\")", R"("\a")", R"("\0")", R"("\U0041")", R"("\'")",
      R"("\u")", R"("\u00e")", R"("\u00eg")", R"("\u00e)", R"("\x4")", R"("\xG0")", R"("\x)",
      R"("\uD800")", R"("\uDC00")", R"("\uD800\uD800")", R"("\uD800x")", R"("\uD800\n")",
      R"("\uD800\u0041")", R"("\uD800\uDC0")", R"("\uD800\xDC")",
      // Broken UTF-8, overlong forms, surrogates, above U+10FFFF.
      "\"\x80\"", "\"\xC3\"", "\"\xC3", "\"\xE2\x82\"", "\"\xC0\x80\"", "\"\xC1\xBF\"",
      "\"\xE0\x9F\xBF\"", "\"\xF0\x8F\xBF\xBF\"", "\"\xED\xA0\x80\"", "\"\xED\xBF\xBF\"",
      "\"\xF4\x90\x80\x80\"", "\"\xF5\x80\x80\x80\"", "\"\xFF\"", "\"\xF0\x9F\x98", "\"\\n\xFE\"",
      // Depth.
      Nested("[", "]", 200), Nested("{\"a\":", "}", 200), Nested("[{\"a\":", "}]", 100),
      Repeated("[", 1000000), Repeated("{\"\":", 1000000)};
  for (const auto& text : cases) EXPECT_FALSE(ReadJson(text)) << text.substr(0, 500);
}

TEST(JsonReader, NeverReadsBeyondTheText) {
  const std::string whole =
      "\xEF\xBB\xBF [1,-2.5e+3,\"a\\u00e9\\uD83D\\uDE00\xC3\xA9\",true,{\"k\":null}]";
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const std::vector<char> exact(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(ReadJson({exact.data(), exact.size()})) << size;
  }
}

TEST(JsonReader, KindsAreNotConverted) {
  const std::pair<const char*, unsigned> cases[] = {
      {"null", 0},       {"true", 1}, {"7", 2},     {"7.0", 3}, {"7e0", 3},
      {"2147483648", 3}, {"1e2", 3},  {"\"7\"", 4}, {"{}", 6},  {"[]", 7}};
  for (const auto& [text, tag] : cases) {
    const auto value = ReadJson(text);
    ASSERT_TRUE(value) << text;
    EXPECT_EQ(static_cast<unsigned>(value->type()), tag) << text;
    const bool has[] = {value->type() == Value::Type::kNull, value->GetIfBool().has_value(),
                        value->GetIfInt().has_value(),       value->GetIfDouble().has_value(),
                        value->GetIfString().has_value(),    value->GetIfBinary().has_value(),
                        value->GetIfDictionary() != nullptr, value->GetIfList() != nullptr};
    for (unsigned i = 0; i < std::size(has); ++i) EXPECT_EQ(has[i], i == tag) << text << " " << i;
  }
}

// Each would take hours or gigabytes if reading were quadratic or reserved on trust.
TEST(JsonReader, HostileTextsStayCheap) {
  constexpr std::size_t kCount = 200000;
  std::string falling = "{";
  for (std::size_t i = kCount; i-- > 0;) falling += "\"" + std::to_string(1000000 + i) + "\":0,";
  const std::pair<const char*, std::string> cases[] = {
      {"integers", "[" + Repeated("0,", kCount) + "0]"},
      {"empty lists", "[" + Repeated("[],", kCount) + "0]"},
      {"short lists", "[" + Repeated("[0],", kCount) + "0]"},
      {"short dictionaries", "[" + Repeated("{\"\":0},", kCount) + "0]"},
      {"repeated keys", "{" + Repeated("\"\":0,", kCount) + "\"\":1}"},
      {"falling keys", falling + "\"\":1}"},
      {"escapes", "[\"" + Repeated("\\n", kCount) + "\"]"},
      {"commas in a string", "[\"" + Repeated(",[", kCount) + "\"]"},
      {"comments", Repeated("/**/", kCount) + "[]" + Repeated("/*/*/ ", kCount)},
      {"open comment", "[" + Repeated("/*", kCount)},
      {"open string", "[\"" + Repeated("a", kCount)},
      {"digits", Repeated("1", kCount) + "e-" + std::to_string(kCount)},
      {"open lists", Repeated(Repeated("[", 199) + Repeated("]", 198) + ",", kCount / 400)}};
  for (const auto& [name, text] : cases) {
    const std::size_t before = bytes_in_use;
    bytes_peak = before;
    ReadJson(text);
    EXPECT_LE(bytes_peak - before, 24 * text.size() + 4096) << name;
    EXPECT_GE(bytes_peak - before, text.size() / 2) << name << ": nothing was counted";
    EXPECT_EQ(bytes_in_use, before) << name;
  }
}

TEST(JsonWriter, EscapesEveryByteAtEveryPlaceOfABlock) {
  const std::pair<char, const char*> special[] = {{'\b', "\\b"},  {'\t', "\\t"},   {'\n', "\\n"},
                                                  {'\f', "\\f"},  {'\r', "\\r"},   {'"', "\\\""},
                                                  {'\\', "\\\\"}, {'<', "\\u003C"}};
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    std::string form(1, c);
    char code[8];
    std::snprintf(code, sizeof(code), "\\u%04X", byte);
    if (byte < 0x20) form = code;
    if (byte >= 0x80) form = "\xEF\xBF\xBD";
    for (const auto& [character, escape] : special)
      if (character == c) form = escape;
    for (std::size_t before = 0; before < 36; ++before) {
      const std::string head(before, 'a'), tail(35 - before, 'z');
      const std::string written = WrittenText(head + c + tail);
      EXPECT_EQ(written, "\"" + head + form + tail + "\"") << byte << " at " << before;
      const auto read = ReadJson(written);
      ASSERT_TRUE(read) << byte;
      const std::string back = byte < 0x80 ? std::string(1, c) : form;
      EXPECT_EQ(read->GetIfString(), head + back + tail) << byte << " at " << before;
    }
  }
}

TEST(JsonWriter, WritesCodePoints) {
  const std::string fffd = "\xEF\xBF\xBD";
  const Case cases[] = {{"\xE2\x80\xA7|\xE2\x80\xA8|\xE2\x80\xA9|\xE2\x80\xAA",
                         "\xE2\x80\xA7|\\u2028|\\u2029|\xE2\x80\xAA"},
                        {"\xEF\xB7\x8F|\xEF\xB7\x90|\xEF\xB7\xAF|\xEF\xB7\xB0",
                         "\xEF\xB7\x8F|" + fffd + "|" + fffd + "|\xEF\xB7\xB0"},
                        {"\xEF\xBF\xBD|\xEF\xBF\xBE|\xEF\xBF\xBF|\xF0\x90\x80\x80",
                         fffd + "|" + fffd + "|" + fffd + "|\xF0\x90\x80\x80"},
                        {"\xF0\x9F\xBF\xBD|\xF0\x9F\xBF\xBE|\xF0\x9F\xBF\xBF",
                         "\xF0\x9F\xBF\xBD|" + fffd + "|" + fffd},
                        {"\xF4\x8F\xBF\xBD|\xF4\x8F\xBF\xBF|\xF4\x90\x80\x80",
                         "\xF4\x8F\xBF\xBD|" + fffd + "|" + Repeated(fffd, 4)},
                        {"\xED\x9F\xBF|\xED\xA0\x80|\xEE\x80\x80",
                         "\xED\x9F\xBF|" + Repeated(fffd, 3) + "|\xEE\x80\x80"},
                        {"\xC3|\xE2\x82|\xF0\x9F\x98|\xC0\xAF|\xC3",
                         fffd + "|" + fffd + "|" + fffd + "|" + fffd + fffd + "|" + fffd}};
  for (const auto& [text, written] : cases)
    EXPECT_EQ(WrittenText(text), "\"" + written + "\"") << text;
  EXPECT_EQ(WrittenText(Repeated("\xFF", 5000)), "\"" + Repeated(fffd, 5000) + "\"");
  EXPECT_EQ(WrittenText(Repeated("\x01", 5000)), "\"" + Repeated("\\u0001", 5000) + "\"");
}

TEST(JsonWriter, ReservesAndReplaces) {
  ListValue list;
  std::string out = "old";
  EXPECT_TRUE(WriteJson(list, out));
  EXPECT_EQ(out, "[]");
  EXPECT_GE(out.capacity(), 1024u);
  list.Append(Value(7));
  list.Append(Value(true));
  list.Append(Value("a<b"));
  list.Append(Value(std::string_view()));
  EXPECT_TRUE(WriteJson(list, out));
  EXPECT_EQ(out, R"([7,true,"a\u003Cb",""])");
}

TEST(JsonWriter, RefusesWhatJsonCannotHold) {
  const std::byte bytes[20] = {};
  const auto infinity = std::numeric_limits<double>::infinity();
  const auto refused = [](Value&& value, const char* what) {
    ListValue list;
    list.Append(Value(1));
    list.Append(std::move(value));
    std::string out = "old";
    EXPECT_FALSE(WriteJson(Value(std::move(list)), out)) << what;
    EXPECT_EQ(out, "") << what;
  };
  refused(Value(std::span(bytes)), "binary");
  refused(Value(std::span<const std::byte>()), "empty binary");
  refused(Value(infinity), "infinity");
  refused(Value(-infinity), "-infinity");
  refused(Value(std::nan("")), "NaN");
}

std::string failed_condition;

TEST(JsonWriter, ReportsAStringThatIsTooLong) {
  // No such memory is there: the length alone must decide.
  const std::string_view too_long("a", 2147483648u);
  std::string out = "old";
  EXPECT_FALSE(WriteJson(too_long, out)) << "without a hook";
  base::SetCheckFailedHook([](const char* condition) { failed_condition += condition; });
  EXPECT_FALSE(WriteJson(too_long, out));
  base::SetCheckFailedHook(nullptr);
  EXPECT_EQ(failed_condition, "utf8.size() <= 2147483647");
  EXPECT_EQ(out, "");
}

TEST(JsonValue, KeepsBytesOfEveryLengthThroughMoves) {
  EXPECT_LE(sizeof(Value), 16u);
  for (std::size_t size = 0; size < 40; ++size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) text += static_cast<char>(i * 7);
    const std::size_t before = bytes_in_use;
    Value first{std::string_view(text)};
    EXPECT_EQ(bytes_in_use == before, size <= 14) << size;
    Value second(std::move(first));
    Value third(std::string_view("something that stands in a block of its own"));
    third = std::move(second);
    Value& self = third;
    third = std::move(self);
    EXPECT_EQ(third.GetIfString(), text);
    EXPECT_EQ(Value(std::as_bytes(std::span(text))).GetIfBinary()->size(), size);
  }
}

TEST(JsonValue, TakesItsOwnChildAndFindsKeys) {
  auto value =
      ReadJson(R"([1,["a string beyond the inline bytes",{"k":[2],"long key, also beyond":3}]])");
  ASSERT_TRUE(value);
  *value = std::move((*value->GetIfList())[1]);
  *value = std::move((*value->GetIfList())[1]);
  const base::DictionaryValue* dictionary = value->GetIfDictionary();
  ASSERT_TRUE(dictionary);
  ASSERT_TRUE(dictionary->Find("long key, also beyond"));
  EXPECT_EQ(dictionary->Find("long key, also beyond")->GetIfInt(), 3);
  for (const char* missing : {"", "j", "kk", "z"})
    EXPECT_FALSE(dictionary->Find(missing)) << missing;
  EXPECT_EQ(Written(*dictionary->Find("k")), "[2]");
}

}  // namespace
