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

namespace {

using base::ListValue;

std::string Utf8(base::Utf16View text) {
  std::string utf8(text.size() * base::kMaxUtf8PerUnit + base::kCopySlack, '\0');
  utf8.resize(base::CopyAsUtf8(text, utf8.data()) - utf8.data());
  return utf8;
}

base::Utf16Text Utf16(std::string_view utf8) {
  base::Utf16Text text(base::Utf16Length(utf8), 0);
  base::CopyAsUtf16(utf8, text.data());
  return text;
}

std::string Written(const ListValue& list) {
  base::Utf16Text out(1, 'o');
  const bool written = base::WriteJson(list, out);
  const std::string utf8 = Utf8(out);
  return written ? utf8.substr(1, utf8.size() - 2) : "refused" + utf8;
}

std::string Written(std::string_view text) {
  ListValue list;
  list.AppendString(text);
  return Written(list);
}

// In memory of its exact size, so that the sanitizer sees a read beyond it.
template <class Text>
std::string Rewritten(const Text& text) {
  const std::vector<typename Text::value_type> exact(text.begin(), text.end());
  const auto read = base::ReadJson(std::basic_string_view(exact.data(), exact.size()));
  if (!read) return "\"no value\"";
  const std::string items = Written(read->values);
  return read->type == base::ValueType::kList ? '[' + items + ']' : items;
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
    if (!name.starts_with("refused-utf8")) {
      EXPECT_EQ(Rewritten(Utf16(text)), expected) << name;
    }
    for (std::size_t size = 0; size < text.size(); ++size) Rewritten(text.substr(0, size));
  }
}

// Each would take hours if reading were quadratic.
TEST(JsonReader, HostileTextsStayCheap) {
  constexpr int kCount = 200000;
  std::string falling = "{";
  for (int i = 9 * kCount; i > 8 * kCount; --i) falling += "\"" + std::to_string(i) + "\":0,";
  const std::pair<std::string, bool> cases[] = {
      {"[" + Repeated("[0],", kCount) + "0]", true},
      {"[" + Repeated("{\"\":0},", kCount) + "0]", true},
      {"{" + Repeated("\"k\":0,", kCount) + "\"\":1}", true},
      {falling + "\"\":1}", true},
      {Repeated("{\"\":[0],\"k\":", 198) + "\"" + Repeated("\\n", kCount) + "\"" +
           Repeated("}", 198),
       true},
      {Repeated("[{\"\":", kCount), false},
      {"[" + Repeated("/*", kCount), false},
      {Repeated("1", kCount) + "e-" + std::to_string(kCount), true}};
  for (const auto& [text, accepted] : cases)
    EXPECT_EQ(base::ReadJson(text).has_value(), accepted) << text.substr(0, 20);
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
      const std::string written = Written(head + raw + tail);
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
    EXPECT_EQ(Written(text + std::string("|")), '"' + Repeated("\xEF\xBF\xBD", count) + "|\"")
        << text;
  }
  EXPECT_EQ(Written(Repeated("\x01", 5000)), '"' + Repeated("\\u0001", 5000) + '"');
  ListValue infinite, no_number, binary;
  infinite.AppendDouble(-HUGE_VAL);
  no_number.AppendDouble(std::nan(""));
  binary.AppendBinary("");
  for (const ListValue* list : {&infinite, &no_number, &binary})
    EXPECT_EQ(Written(*list), "refused");
}

TEST(Utf, ReplacesUnpairedSurrogatesAtEveryPlaceOfABlock) {
  for (std::size_t before = 0; before < 36; ++before) {
    for (const int broken : {0xD800, 0xDBFF, 0xDC00, 0xDFFF}) {
      base::Utf16Text text(before, 'a');
      text += static_cast<base::Utf16Unit>(broken);
      text += base::Utf16Text(35 - before, 0x20AC);
      ListValue list;
      list.AppendString(base::Utf16View(text));
      text[before] = 0xFFFD;
      EXPECT_EQ(Utf16(*list.At(0).GetIfString()), text) << broken << " at " << before;
    }
  }
}

}  // namespace
