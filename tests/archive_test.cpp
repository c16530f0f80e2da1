#include <gmock/gmock.h>

#include <functional>

#include "HeapAllocator.h"
#include "jarchive.h"
#include "support/LogCapture.h"

namespace {

using testing::PrintToString;
using std::string_view_literals::operator""sv;

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
  archive.fromString(L" [1.5,null,[2,{}]] ");
  archive << INT_MIN << true << POINT{3, -4} << CComBSTR(L"") << L"<\"\\/\n\x01";
  archive << L"\u00e9\U0001F600\xD800z\xDC00";
  EXPECT_EQ(archive.toString(),
            L"[1.5,null,[2,{}],-2147483648,true,3,-4,\"\",\"\\u003C\\\"\\\\/\\n\\u0001\","
            L"\"\u00e9\U0001F600\uFFFDz\uFFFD\"]");
}

TEST(Archive, SharesItsValuesAndKeepsThemWhenATextIsRefused) {
  LogCapture::Reset();
  JArchive archive, copy = archive;
  EXPECT_EQ(archive.toString(), L"[]");
  archive << 1;
  copy << L"x";
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"),
              testing::ElementsAre("INFO Archive: write int", "INFO Archive: write LPCWSTR"));
  EXPECT_EQ(FailureOf([&] { archive << CComBSTR(); }), "Invald string");
  EXPECT_EQ(Read<int>(archive), 1);
  const auto refusal = [&](auto text) { return FailureOf([&] { archive.fromString(text); }); };
  for (auto text : {L""sv, L"[1,]"sv, L"[1]xy"sv, L"[1e999]"sv, L"[1]\0]"sv}) {
    EXPECT_EQ(refusal(text), "Cannot parse json_array") << PrintToString(text);
  }
  for (auto text : {L"{}", L"\"[]\"", L"null"}) EXPECT_EQ(refusal(text), "json array expected");
  EXPECT_STREQ(Read<CComBSTR>(archive), L"x") << "the cursor stayed";
  archive.fromString(L"[9]x");
  EXPECT_EQ(Read<int>(archive), 9) << "the cursor is at the start again";
  EXPECT_EQ(copy.toString(), L"[1,\"x\"]") << "what is loaded is not shared";
}

TEST(Archive, RefusesOtherTypesAndKeepsTheCursor) {
  const std::function<void(JArchive&)> kReads[] = {&Read<int>, &Read<bool>, &Read<CComBSTR>};
  const char* kRefusals[] = {"number expected", "boolean expected", "string expected"};
  const wchar_t* kTexts[] = {L"[7]",   L"[true]", L"[\"7\"]", L"[4294967296]",
                             L"[1.5]", L"[null]", L"[[1]]"};
  for (int i = 0; i < 21; ++i) {
    const int type = i % 3, text = i / 3;
    JArchive archive;
    archive.fromString(kTexts[text]);
    const auto read = [&] { kReads[type](archive); };
    EXPECT_EQ(FailureOf(read), type == text ? "" : kRefusals[type]) << i;
    EXPECT_EQ(FailureOf(read), type == text ? "End of archive reached" : kRefusals[type]) << i;
  }
}

TEST(Archive, ReadsStrings) {
  JArchive archive;
  archive.fromString(L"[\"\",\"\u00e9\U0001F600\",\"a\\u0000b\",\"a\\u0000b\",5]");
  CComBSTR text(L"old");
  archive >> text;
  EXPECT_STREQ(text, L"") << "an empty string is not null";
  EXPECT_STREQ(Read<CComBSTR>(archive), L"\u00e9\U0001F600");
  archive >> text;
  EXPECT_EQ(text.Length(), 1u) << "a BSTR ends at an embedded zero";
  std::string utf8 = "old";
  archive >> utf8;
  EXPECT_EQ(utf8, std::string("a\0b", 3));
  EXPECT_EQ(FailureOf([&] { archive >> utf8; }), "string expected");
  EXPECT_EQ(FailureOf([&] { archive >> text; }), "string expected");
  EXPECT_TRUE(utf8.empty() && text.Length() == 1) << "a BSTR alone stays when the read fails";
}

TEST(Archive, ReadsVectors) {
  LogCapture::Reset();
  const std::tuple<const wchar_t*, std::wstring, std::string> kCases[] = {
      {L"[2,\"x\",\"y\",8]", L"before|x|y|", ""},
      {L"[-1,8]", L"before|", ""},
      {L"[3,\"x\"]", L"before|x|", "End of archive reached"},
      {L"[]", L"before|", "End of archive reached"},
      {L"[2147483647,\"x\",8]", L"before|x|", "string expected"}};
  for (const auto& [text, content, failure] : kCases) {
    JArchive archive;
    archive.fromString(text);
    std::vector<CComBSTR, HeapAllocator<CComBSTR>> items = {L"before"};
    EXPECT_EQ(FailureOf([&] { archive >> items; }), failure) << PrintToString(text);
    std::wstring joined;
    for (const auto& item : items) joined += std::wstring(item) + L'|';
    EXPECT_EQ(joined, content) << PrintToString(text);
    const bool atEnd = failure == "End of archive reached";
    EXPECT_EQ(FailureOf([&] { EXPECT_EQ(Read<int>(archive), 8); }), atEnd ? failure : "");
  }
  EXPECT_EQ(LogCapture::Count("Archive: read vector"), 5u);
}

}  // namespace
