#include <gmock/gmock.h>

#include <functional>

#include "HeapAllocator.h"
#include "jarchive.h"
#include "support/LogCapture.h"

namespace {

using testing::ElementsAre;
using testing::PrintToString;
using namespace std::string_view_literals;

const LogCapture capture;

std::string FailureOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Tessel::ArchiveException& failure) {
    return failure.Message();
  }
  return "";
}

template <class T>
T Read(JArchive& archive) {
  T value{};
  archive >> value;
  return value;
}

TEST(Archive, WritesFlatCompactArrays) {
  JArchive archive;
  EXPECT_EQ(archive.toString(), L"[]");
  archive.fromString(L" [1.5,null,[2,{\"k\":3}]] ");
  archive << INT_MIN << true << POINT{3, -4} << CComBSTR(L"") << L"<\"\\/\n\x01";
  archive << L"\u00e9\U0001F600" << L"a\xD800z\xDC00";
  EXPECT_EQ(archive.toString(),
            L"[1.5,null,[2,{\"k\":3}],-2147483648,true,3,-4,\"\",\"\\u003C\\\"\\\\/\\n\\u0001\","
            L"\"\u00e9\U0001F600\",\"a\uFFFDz\uFFFD\"]");
}

TEST(Archive, KeepsItsContentWhenATextIsRefused) {
  JArchive archive;
  archive.fromString(L"[1,2]");
  Read<int>(archive);
  const auto refusal = [&](std::wstring_view text) {
    return FailureOf([&] { archive.fromString(text); });
  };
  for (std::wstring_view text : {L""sv, L"[1,]"sv, L"[1]xy"sv, L"[1e999]"sv, L"[1]\0]"sv}) {
    EXPECT_EQ(refusal(text), "Cannot parse json_array") << PrintToString(text);
  }
  for (auto text : {L"{}", L"\"[]\"", L"null"}) EXPECT_EQ(refusal(text), "json array expected");
  EXPECT_EQ(archive.toString(), L"[1,2]");
  EXPECT_EQ(Read<int>(archive), 2) << "the cursor stayed";
  archive.fromString(L"[9]x");
  EXPECT_EQ(Read<int>(archive), 9) << "the cursor is at the start again";
}

TEST(Archive, RefusesOtherTypesAndKeepsTheCursor) {
  const std::function<void(JArchive&)> kReads[] = {&Read<int>, &Read<bool>, &Read<std::string>,
                                                   &Read<CComBSTR>};
  const char* kRefusals[] = {"number expected", "boolean expected", "string expected",
                             "string expected"};
  const std::pair<const wchar_t*, const char*> kCases[] = {
      {L"[7]", "1000"}, {L"[true]", "0100"}, {L"[\"7\"]", "0011"}, {L"[4294967296]", "0000"}};
  for (const auto& [text, succeeds] : kCases) {
    for (int i = 0; i < 4; ++i) {
      JArchive archive;
      archive.fromString(text);
      const auto read = [&] { kReads[i](archive); };
      const bool good = succeeds[i] == '1';
      EXPECT_EQ(FailureOf(read), good ? "" : kRefusals[i]) << PrintToString(text) << i;
      EXPECT_EQ(FailureOf(read), good ? "End of archive reached" : kRefusals[i]) << "once more";
    }
  }
}

TEST(Archive, ReadsStrings) {
  JArchive archive;
  archive.fromString(L"[\"\",\"\u00e9\U0001F600\",\"a\\u0000b\",\"a\\u0000b\",5]");
  CComBSTR text(L"old");
  archive >> text;
  ASSERT_NE(text.m_str, nullptr) << "an empty string is not null";
  EXPECT_EQ(text.Length(), 0u);
  EXPECT_STREQ(Read<CComBSTR>(archive), L"\u00e9\U0001F600");
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
  const auto expect = [](const wchar_t* text, std::size_t size, const std::string& failure) {
    JArchive archive;
    archive.fromString(text);
    std::vector<CComBSTR, HeapAllocator<CComBSTR>> items = {L"x"};
    EXPECT_EQ(FailureOf([&] { archive >> items; }), failure) << PrintToString(text);
    EXPECT_EQ(items.size(), size) << PrintToString(text);
    for (const auto& item : items) EXPECT_STREQ(item, L"x");
    EXPECT_EQ(Read<int>(archive), 8) << PrintToString(text);
  };
  expect(L"[2,\"x\",\"x\",8]", 3, "");
  expect(L"[-1,8]", 1, "");
  expect(L"[2147483647,\"x\",8]", 2, "string expected");
}

TEST(Archive, SharesItsValuesWithCopiesAndLogs) {
  LogCapture::Reset();
  JArchive archive;
  JArchive copy = archive;
  archive << 1;
  copy << L"x";
  EXPECT_EQ(FailureOf([&] { archive << CComBSTR(); }), "Invald string");
  copy.fromString(L"[1,5]");
  EXPECT_EQ(archive.toString(), L"[1,\"x\"]") << "a loaded copy goes its own way";
  EXPECT_THAT(Read<std::vector<int>>(copy), ElementsAre(5));
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"),
              ElementsAre("INFO Archive: write int", "INFO Archive: write LPCWSTR",
                          "INFO Archive: write LPCWSTR", "INFO Archive: read vector"));
}

}  // namespace
