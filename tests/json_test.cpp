// Tests the JSON values, reader and writer: which texts are accepted, and the exact text written.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <codecvt>
#include <locale>

#include "json/JsonReader.h"
#include "json/JsonWriter.h"
#include "json/ListText.h"
#include "support/Text.h"

namespace {

using base::ListValue;
using base::Utf16Text;

// Converts between UTF-8 and UTF-16 with the standard library, so that the tests can check our own
// conversions. Works only for well-formed text.
std::wstring_convert<std::codecvt_utf8_utf16<base::Utf16Unit>, base::Utf16Unit> convert;

// Returns the JSON text of the list without its brackets, or "refused".
std::string Written(const ListValue& list) {
  Utf16Text out(1, 'o');
  const bool written = base::WriteJson(list, out);
  const std::string utf8 = convert.to_bytes(out);
  return written ? utf8.substr(1, utf8.size() - 2) : "refused" + utf8;
}

std::string TextOf(const base::ListText& list) { return convert.to_bytes(Utf16Text(list.View())); }

// Returns `text` as a JSON string, as WriteJson writes it. Checks that ListText writes the same
// JSON, or refuses the string and stays empty.
std::string Written(base::Utf16View text) {
  ListValue list;
  list.AppendString(text);
  const std::string written = Written(list);
  base::ListText asText;
  const bool taken = asText.AppendString(text);
  EXPECT_EQ(TextOf(asText), taken ? '[' + written + ']' : "[]");
  return written;
}

// Reads a JSON text and returns the text that the writer makes of its value, or "no value" in
// quotes if the reader refuses it. The text lies in memory of its exact size, so that the sanitizer
// reports a read beyond its end.
template <class Text>
std::string Rewritten(const Text& text, std::size_t step = base::kReadStep) {
  const std::vector<typename Text::value_type> exact(text.begin(), text.end());
  ListValue values;
  const auto type =
      base::ReadJson(std::basic_string_view(exact.data(), exact.size()), values, step);
  if (!type) return "\"no value\"";
  return *type == base::ValueType::kList ? '[' + Written(values) + ']' : Written(values);
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
    const std::string text = FileText(path, std::ios::binary), name = path.stem().string();
    const std::string expected = name.starts_with("refused")
                                     ? "\"no value\""
                                     : FileText(path.replace_extension("out"), std::ios::binary);
    EXPECT_EQ(Rewritten(text), expected) << name;
    if (!name.starts_with("refused-utf8")) {
      EXPECT_EQ(Rewritten(convert.from_bytes(text)), expected) << name;
    }
    // The reader reads a list in steps (pieces of text). Even for a step length of 1, the first
    // step has 62 units, because an empty ListValue has room for any values that 62 units can
    // hold. The blanks shift the text, so that the first step ends at many different places in it.
    for (std::size_t blanks = 0; text.starts_with('[') && blanks < 62; ++blanks) {
      const std::string padded = "[0" + std::string(blanks, ' ') + ',' + text.substr(1);
      ASSERT_EQ(Rewritten(padded, 1), Rewritten(padded, padded.size())) << name << ' ' << blanks;
    }
    for (std::size_t size = 0; size < text.size(); ++size) Rewritten(text.substr(0, size));
  }
}

// The reader reads a list in steps (pieces of text). Before each step, it reserves memory for any
// text of the step's length. Empty strings need the most memory for their length in text. The texts
// have many lengths, so that a step and a block of memory end at every position in an element. A
// text whose last string has no closing quote must be refused.
TEST(JsonReader, HasRoomForTheDensestTextWhereverAStepOrABlockEnds) {
  for (std::string text : {"[\"\"", "[0,\"\"", "[0,0,\"\""}) {
    for (std::size_t count = 1; count < 400; ++count, text += ",\"\"") {
      for (const std::string_view tail :
           {"]", ",0]", ",null]", ",\"a", ",\"\xC3\xA9", ",\"1234567\u0001"}) {
        const std::string whole = text + std::string(tail);
        const std::string expected = tail.ends_with(']') ? whole : "\"no value\"";
        for (const std::size_t step : {std::size_t{1}, count, base::kReadStep}) {
          EXPECT_EQ(Rewritten(whole, step), expected) << count << ' ' << step;
          EXPECT_EQ(Rewritten(convert.from_bytes(whole), step), expected) << count << ' ' << step;
        }
      }
    }
  }
  EXPECT_EQ(Rewritten('[' + std::string(3000, ' ') + ']', 3000), "[]") << "an empty block";
}

// With a reader of quadratic time, each text would take hours, so the test would time out.
TEST(JsonReader, ReadsHostileTextsInLinearTime) {
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
  for (const auto& [text, accepted] : cases) {
    ListValue values;
    EXPECT_EQ(base::ReadJson(text, values).has_value(), accepted) << text.substr(0, 20);
  }
}

TEST(JsonWriter, EscapesEveryUnitAtEveryPositionInABlock) {
  constexpr std::string_view special = "\b\t\n\f\r\"\\", letters = "btnfr\"\\";
  std::vector<int> units = {0x2027, 0x2028, 0x2029, 0x202A, 0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF,
                            0xE000, 0xFDCF, 0xFDD0, 0xFDEF, 0xFDF0, 0xFFFD, 0xFFFE, 0xFFFF};
  for (int unit = 0; unit < 0x100; ++unit) units.push_back(unit);
  for (const int unit : units) {
    char code[8];
    std::snprintf(code, sizeof(code), "\\u%04X", static_cast<unsigned>(unit));
    const bool escaped = unit < 0x20 || unit == '<' || unit == 0x2028 || unit == 0x2029;
    const bool replaced =
        (unit >= 0xD800 && unit <= 0xDFFF) || (unit >= 0xFDD0 && unit <= 0xFDEF) || unit >= 0xFFFE;
    const auto raw = static_cast<base::Utf16Unit>(replaced ? 0xFFFD : unit);
    std::string form = escaped ? code : convert.to_bytes(raw);
    const auto at = unit < 0x80 ? special.find(static_cast<char>(unit)) : special.npos;
    if (at != special.npos) form = {'\\', letters[at]};
    // A string that is all ASCII is written by other code than any other string. In both cases, a
    // whole block of units is copied by other code than the units after the last block. So the test
    // puts each unit at every position of an ASCII text and of another text.
    for (const char16_t filler : {u'a', u'\u20AC'}) {
      for (std::size_t before = 0; before < 36; ++before) {
        const Utf16Text head(before, filler), tail(35 - before, filler);
        const auto text = head + static_cast<base::Utf16Unit>(unit) + tail;
        const std::string written = Written(text);
        EXPECT_EQ(base::ListText().AppendString(text),
                  !replaced || base::IsSurrogate(static_cast<base::Utf16Unit>(unit)))
            << unit;
        const std::string expected =
            '"' + convert.to_bytes(head) + form + convert.to_bytes(tail) + '"';
        EXPECT_EQ(written, expected) << unit << " at " << before;
        EXPECT_EQ(Rewritten(written), written) << unit << " at " << before;
        EXPECT_EQ(Rewritten(convert.from_bytes(written)), written) << unit << " at " << before;
      }
    }
  }
}

TEST(JsonWriter, WritesNumbersOfEveryLengthAndRefusesValuesWithoutJson) {
  std::int64_t number = 0;
  for (int digit = 1; number <= INT_MAX; digit = digit % 9 + 1, number = number * 10 + digit) {
    for (const std::int64_t value : {number, -number}) {
      ListValue list;
      base::ListText asText;
      for (int i = 0; i < 100; ++i) asText.AppendInt(static_cast<std::int32_t>(value));
      list.AppendInt(static_cast<std::int32_t>(value));
      EXPECT_EQ(Written(list), std::to_string(value));
      EXPECT_EQ(TextOf(asText),
                '[' + Repeated(std::to_string(value) + ',', 99) + std::to_string(value) + ']');
      // Test the number before another element and as the last element.
      for (const char* tail : {",1]", "]"}) {
        const std::string text = '[' + std::to_string(value) + tail;
        EXPECT_EQ(Rewritten(text), text);
        EXPECT_EQ(Rewritten(convert.from_bytes(text)), text);
      }
    }
  }
  EXPECT_EQ(Written(Utf16Text(5000, 1)).size(), 5000 * 6 + 2u);
  ListValue infinite, no_number, binary;
  infinite.AppendDouble(-HUGE_VAL);
  no_number.AppendDouble(std::nan(""));
  binary.AppendBinary(std::string(207, 'b'));  // one byte more than fits into the ListValue object
  for (const ListValue* list : {&infinite, &no_number, &binary}) {
    EXPECT_EQ(Written(*list), "refused");
  }
}

// A long string is written in pieces of at most 512 units. The texts have many lengths, so that a
// piece ends at every position in the surrogate pairs.
TEST(JsonWriter, KeepsSurrogatePairsTogetherAcrossPieces) {
  const std::string pairs = Repeated("\U0001F600", 5);
  const Utf16Text halves = {0xD83D, 0xD83D, 0xDE00, 0xDE00, 0xDE00, 0xD83D};
  for (std::size_t before = 0; before < 1100; ++before) {
    const std::string text = std::string(before, 'a') + pairs;
    EXPECT_EQ(Written(convert.from_bytes(text)), '"' + text + '"') << before;
    EXPECT_EQ(Written(Utf16Text(before, 'a') + halves),
              '"' + std::string(before, 'a') + "\uFFFD\U0001F600\uFFFD\uFFFD\uFFFD\"");
  }
}

// Makes lists of many lengths. So for each kind of element, the last element of some list begins at
// each position near the end of a memory block.
TEST(ListText, EqualsTheWrittenListOfValuesWhereverABlockEnds) {
  const Utf16Text noncharacterFirst = Utf16Text(1, 0xFFFF) + Utf16Text(600, 'a');
  // The JSON text of this string exactly fills one memory block of the list.
  const Utf16Text filling = Utf16Text(3, '\n') + Utf16Text(614, 1);
  const Utf16Text texts[] = {{}, {'b'}, Utf16Text(1300, u'\u20AC'), Utf16Text(3300, 1), filling};
  for (std::size_t flags = 0; flags < 200; ++flags) {
    // `true,` has 5 units and `"",` has 3. So the two loops give the list all lengths modulo 5, and
    // the last element begins at every position in a block.
    for (std::size_t blanks = 0; blanks < 5; ++blanks) {
      for (std::size_t last = 0; last < std::size(texts) + 2; ++last) {
        const auto append = [&](auto& list) {
          for (std::size_t i = 0; i < flags; ++i) list.AppendBool(true);
          for (std::size_t i = 0; i < blanks; ++i) list.AppendString(Utf16Text());
          if (last < std::size(texts)) return void(list.AppendString(texts[last]));
          last == std::size(texts) ? list.AppendBool(false) : list.AppendInt(INT_MIN);
        };
        base::ListText asText;
        ListValue values;
        append(asText);
        append(values);
        const std::string expected = '[' + Written(values) + ']';
        ASSERT_EQ(TextOf(asText), expected) << flags << ' ' << blanks << ' ' << last;
        EXPECT_FALSE(asText.AppendString(noncharacterFirst));
        ASSERT_EQ(TextOf(asText), expected) << "a refused string changes nothing";
      }
    }
  }
}

// Expects that `copy` copies the first `count` units of `from`. Copies into memory of the exact
// size, so that the sanitizer reports a write beyond its end.
template <class To, class From, class Copy>
void ExpectCopied(const std::vector<From>& from, std::size_t count, Copy copy) {
  std::vector<To> to(from.size());
  To* end = to.data();
  EXPECT_EQ(copy(from.data(), from.data() + from.size(), end), from.data() + count);
  EXPECT_EQ(end, to.data() + count);
  EXPECT_TRUE(std::equal(to.data(), end, from.data())) << from.size() << ' ' << count;
}

TEST(TextCopy, CopiesUpToTheStopAndWritesNothingBeyondTheText) {
  const auto ascii = [](const auto* from, const auto* end, auto*& to) {
    return base::CopyAscii<base::Stop::kLimits>(from, end, to);
  };
  for (std::size_t size = 0; size < 40; ++size) {
    for (std::size_t stop = 0; stop <= size; ++stop) {
      std::vector<char> bytes(size, 'a');
      std::vector<base::Utf16Unit> units(size, u'a');
      if (stop < size) bytes[stop] = '\x80', units[stop] = 0xD800;
      ExpectCopied<char>(bytes, stop, ascii);
      ExpectCopied<base::Utf16Unit>(bytes, stop, ascii);
      ExpectCopied<char>(units, stop, ascii);
      ExpectCopied<base::Utf16Unit>(units, stop, base::CopyWide<base::Stop::kLimits>);
    }
  }
}

TEST(ZeroSearch, FindsTheZeroAtEveryPositionInABlock) {
  for (std::size_t start = 0; start < 8; ++start) {
    for (std::size_t length = 0; length < 40; ++length) {
      alignas(16) base::Utf16Unit text[64] = {};
      std::fill_n(text + start, length, static_cast<base::Utf16Unit>(0x100));
      EXPECT_EQ(base::UpToZero(text + start).size(), length) << start;
      EXPECT_EQ(base::FindZero(text + start, text + 64), text + start + length);
      // The memory has the text's exact size, so that the sanitizer reports a read beyond its end.
      const std::vector<base::Utf16Unit> exact(length, u'a');
      EXPECT_EQ(base::FindZero(exact.data(), exact.data() + length), exact.data() + length);
      const std::string ascii(length, 'a');
      const std::string padded = ascii + std::string(start, '\0');
      EXPECT_EQ(base::UpToZero(base::StringView{padded, {}}).ascii, ascii);
    }
  }
}

}  // namespace
