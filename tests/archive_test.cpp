#include <gmock/gmock.h>

#include <functional>

#include "HeapAllocator.h"
#include "jarchive.h"
#include "support/LogCapture.h"

namespace {

using testing::ElementsAre;

const LogCapture capture;

template <class Action>
std::string FailureOf(Action action) {
  try {
    action();
  } catch (const Tessel::ArchiveException& failure) {
    return failure.Message();
  }
  return "";
}

JArchive Loaded(std::wstring_view text) {
  JArchive archive;
  archive.fromString(text);
  return archive;
}

template <class T>
T Read(JArchive& archive) {
  T value{};
  archive >> value;
  return value;
}

TEST(Archive, WritesFlatCompactArrays) {
  const struct {
    std::function<void(JArchive&)> write;
    const wchar_t* text;
  } kCases[] = {
      {[](JArchive&) {}, L"[]"},
      {[](JArchive& a) { a << 7 << true << L"x"; }, L"[7,true,\"x\"]"},
      {[](JArchive& a) {
         a << POINT{3, -4} << false;
       },
       L"[3,-4,false]"},
      {[](JArchive& a) { a << INT_MIN << INT_MAX; }, L"[-2147483648,2147483647]"},
      {[](JArchive& a) { a << L"" << CComBSTR(L"b") << CComBSTR(L""); }, L"[\"\",\"b\",\"\"]"},
      {[](JArchive& a) { a << L"a<b\"\\/\n\x01"; }, L"[\"a\\u003Cb\\\"\\\\/\\n\\u0001\"]"},
      {[](JArchive& a) { a << L"\u00e9\U0001F600"; }, L"[\"\u00e9\U0001F600\"]"},
      {[](JArchive& a) { a << L"a\xD800z" << L"\xDC00"; }, L"[\"a\uFFFDz\",\"\uFFFD\"]"},
      {[](JArchive& a) {
         a.fromString(L" [1.5,null,[2,{\"k\":3}]] ");
         a << 4;
       },
       L"[1.5,null,[2,{\"k\":3}],4]"},
  };
  for (const auto& row : kCases) {
    JArchive archive;
    row.write(archive);
    EXPECT_EQ(archive.toString(), row.text);
  }
}

TEST(Archive, KeepsItsContentWhenATextIsRefused) {
  const std::pair<std::wstring, const char*> kCases[] = {
      {L"", "Cannot parse json_array"},
      {L"[1", "Cannot parse json_array"},
      {L"[1,]", "Cannot parse json_array"},
      {L"[1]xy", "Cannot parse json_array"},
      {L"[1e999]", "Cannot parse json_array"},
      {std::wstring(L"[1]\0]", 5), "Cannot parse json_array"},
      {L"{}", "json array expected"},
      {L"5", "json array expected"},
      {L"\"[]\"", "json array expected"},
      {L"null", "json array expected"},
  };
  JArchive archive = Loaded(L"[1,2]");
  Read<int>(archive);
  for (const auto& [text, message] : kCases) {
    EXPECT_EQ(FailureOf([&] { archive.fromString(text); }), message)
        << testing::PrintToString(text);
    EXPECT_EQ(archive.toString(), L"[1,2]");
  }
  EXPECT_EQ(Read<int>(archive), 2) << "the cursor stayed";
  archive.fromString(L"[9]x");
  EXPECT_EQ(Read<int>(archive), 9) << "the cursor is at the start again";
}

TEST(Archive, RefusesOtherTypesAndKeepsTheCursor) {
  const std::string kNumber = "number expected", kBool = "boolean expected";
  const std::string kString = "string expected", kEnd = "End of archive reached";
  const struct {
    const wchar_t* text;
    std::string failures[4];  // as int, bool, UTF-8, BSTR; empty: succeeds
  } kCases[] = {
      {L"[7]", {"", kBool, kString, kString}},
      {L"[true]", {kNumber, "", kString, kString}},
      {L"[\"7\"]", {kNumber, kBool, "", ""}},
      {L"[1.5]", {kNumber, kBool, kString, kString}},
      {L"[4294967296]", {kNumber, kBool, kString, kString}},
      {L"[null]", {kNumber, kBool, kString, kString}},
      {L"[[1]]", {kNumber, kBool, kString, kString}},
      {L"[]", {kEnd, kEnd, kEnd, kEnd}},
  };
  const std::function<void(JArchive&)> kReads[] = {&Read<int>, &Read<bool>, &Read<std::string>,
                                                   &Read<CComBSTR>};
  for (const auto& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text));
    JArchive archive = Loaded(row.text);
    for (bool succeeding : {false, true}) {
      for (int i = 0; i < 4; ++i) {
        if (row.failures[i].empty() != succeeding) continue;
        JArchive copy = archive;  // shares the values, has a cursor of its own
        JArchive& target = succeeding ? copy : archive;
        EXPECT_EQ(FailureOf([&] { kReads[i](target); }), row.failures[i]) << i;
        if (succeeding) {
          EXPECT_EQ(FailureOf([&] { kReads[i](target); }), kEnd) << i;
        }
      }
    }
  }
}

TEST(Archive, ReadsStrings) {
  JArchive archive = Loaded(L"[\"\",\"\u00e9\U0001F600\",\"a\\u0000b\",\"a\\u0000b\",5]");
  CComBSTR text(L"old");
  archive >> text;
  ASSERT_NE(text.m_str, nullptr) << "an empty string is not null";
  EXPECT_EQ(text.Length(), 0u);
  archive >> text;
  EXPECT_STREQ(text, L"\u00e9\U0001F600");
  archive >> text;
  EXPECT_EQ(text.Length(), 1u) << "a BSTR ends at an embedded zero";
  std::string utf8 = "old";
  archive >> utf8;
  EXPECT_EQ(utf8, std::string("a\0b", 3));
  EXPECT_EQ(FailureOf([&] { archive >> utf8; }), "string expected");
  EXPECT_EQ(utf8, "") << "the target is emptied first";
  EXPECT_EQ(FailureOf([&] { archive >> text; }), "string expected");
  EXPECT_EQ(text.Length(), 1u) << "a BSTR is replaced on success alone";
}

TEST(Archive, ReadsVectors) {
  const struct {
    const wchar_t* text;
    std::size_t size;
    const wchar_t* last;
    const char* failure;
    int next;  // read behind it
  } kCases[] = {
      {L"[2,\"x\",\"y\",8]", 3, L"y", "", 8},
      {L"[0,8]", 1, L"before", "", 8},
      {L"[-1,8]", 1, L"before", "", 8},
      {L"[3,\"x\"]", 2, L"x", "End of archive reached", 0},
      {L"[2147483647,\"x\",8]", 2, L"x", "string expected", 8},
      {L"[\"x\"]", 1, L"before", "number expected", 0},
      {L"[]", 1, L"before", "End of archive reached", 0},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text));
    JArchive archive = Loaded(row.text);
    std::vector<CComBSTR, HeapAllocator<CComBSTR>> items = {L"before"};
    EXPECT_EQ(FailureOf([&] { archive >> items; }), row.failure);
    EXPECT_EQ(items.size(), row.size);
    EXPECT_STREQ(items.front(), L"before");
    EXPECT_STREQ(items.back(), row.last);
    EXPECT_EQ(row.next != 0 ? Read<int>(archive) : 0, row.next);
  }
}

TEST(Archive, SharesItsValuesWithCopiesAndLogs) {
  LogCapture::Reset();
  JArchive archive;
  JArchive copy = archive;
  archive << 1 << true;
  copy << L"x" << POINT{2, 3};
  EXPECT_EQ(archive.toString(), L"[1,true,\"x\",2,3]");
  EXPECT_EQ(FailureOf([&] { archive << static_cast<const wchar_t*>(nullptr); }), "Invald string");
  EXPECT_EQ(FailureOf([&] { archive << CComBSTR(); }), "Invald string");
  copy.fromString(L"[1,5]");
  EXPECT_EQ(archive.toString(), L"[1,true,\"x\",2,3]") << "a loaded copy goes its own way";
  std::vector<int> numbers;
  copy >> numbers;
  EXPECT_THAT(numbers, ElementsAre(5));
  const std::string kInt = "INFO Archive: write int", kText = "INFO Archive: write LPCWSTR";
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"),
              ElementsAre(kInt, "INFO Archive: write bool", kText, kInt, kInt, kText, kText,
                          "INFO Archive: read vector"));
}

}  // namespace
