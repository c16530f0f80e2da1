// Tests the archive: the values of a message, written as text and read back.
#include <gmock/gmock.h>

#include "HeapAllocator.h"
#include "internal/jarchive.h"
#include "support/LogCapture.h"

namespace {

const LogCapture capture;

auto Fails(const char* message) {
  const auto text = testing::Property(&Tessel::ArchiveException::Message, message);
  return testing::Throws<Tessel::ArchiveException>(text);
}

template <class T>
T Read(JArchive& archive) {
  T value{};
  archive >> value;
  return value;
}

TEST(Archive, WritesACompactArrayThatCopiesShare) {
  JArchive archive, copy = archive;
  copy << L"<\u00e9\U0001F600\xD800z\xDC00" << POINT{3, -4} << INT_MIN << true << CComBSTR(L"");
  EXPECT_THAT([&] { copy << CComBSTR(); }, Fails("Invald string"));
  EXPECT_EQ(LogCapture::Count("Archive: write LPCWSTR"), 3u) << "a refused write is logged too";
  EXPECT_STREQ(Read<CComBSTR>(archive), L"<\u00e9\U0001F600\uFFFDz\uFFFD");
  for (const auto* text : {L"", L"[1,]", L"[1]xy"}) {
    EXPECT_THAT([&] { archive.fromString(text); }, Fails("Cannot parse json_array")) << text;
  }
  EXPECT_THAT([&] { archive.fromString(L"{}"); }, Fails("json array expected"));
  EXPECT_EQ(Read<int>(archive), 3) << "a failed load does not move the cursor";
  archive.fromString(L" [9, 1.5,null,[2,{}]]x");
  EXPECT_EQ(Read<int>(archive), 9) << "the cursor is at the start again";
  EXPECT_EQ(archive.toString(), L"[9,1.5,null,[2,{}]]");
  EXPECT_EQ(copy.toString(),
            L"[\"\\u003C\u00e9\U0001F600\uFFFDz\uFFFD\",3,-4,-2147483648,true,\"\"]")
      << "copies do not share what is loaded";
}

TEST(Archive, StaysTextUntilItIsRead) {
  JArchive archive;
  std::wstring buffer;
  EXPECT_EQ(archive.toString(buffer), L"[]");
  archive << 7 << true;
  EXPECT_THAT([&] { archive << static_cast<const wchar_t*>(nullptr); }, Fails("Invald string"));
  EXPECT_EQ(archive.toString(buffer), L"[7,true]");
  archive << L"x" << L"\xFFFF" << L"y";
  EXPECT_EQ(archive.toString(), L"[7,true,\"x\",\"\xFFFD\",\"y\"]");
  EXPECT_TRUE(Read<int>(archive) == 7 && Read<bool>(archive));
  EXPECT_STREQ(Read<CComBSTR>(archive), L"x");
  EXPECT_STREQ(Read<CComBSTR>(archive), L"\xFFFF") << "only toString replaces it";
  JArchive shared = archive, fresh;
  EXPECT_THAT([&] { fresh.fromString(L"[1"); }, Fails("Cannot parse json_array"));
  EXPECT_THAT([&] { fresh.fromString(L"1"); }, Fails("json array expected"));
  EXPECT_EQ(fresh.toString(), L"[]");
  archive.fromString(L"[8]");
  EXPECT_EQ((archive << 9).toString() + shared.toString(), L"[8,9][7,true,\"x\",\"\xFFFD\",\"y\"]");
}

TEST(Archive, ReadsEachTypeAndStaysAtAnElementOfAWrongType) {
  JArchive archive;
  archive.fromString(L"[true,\"\u00e9\U0001F600\",\"a\\u0000b\",\"a\\u0000b\",1.5]");
  CComBSTR text(L"old");
  std::string utf8;
  EXPECT_THAT([&] { archive >> text; }, Fails("string expected"));
  EXPECT_STREQ(text, L"old");
  EXPECT_TRUE(Read<bool>(archive));
  EXPECT_THAT([&] { Read<bool>(archive); }, Fails("boolean expected"));
  EXPECT_STREQ(Read<CComBSTR>(archive), L"\u00e9\U0001F600");
  EXPECT_EQ(Read<CComBSTR>(archive).Length(), 1u) << "a BSTR ends at an embedded zero";
  archive >> utf8;
  EXPECT_EQ(utf8, std::string("a\0b", 3));
  EXPECT_THAT([&] { Read<int>(archive); }, Fails("number expected"));
}

TEST(Archive, AppendsTheElementsThatCouldBeRead) {
  JArchive archive;
  archive.fromString(L"[1,\"x\",-1,2147483647,\"y\",7]");
  std::vector<CComBSTR, HeapAllocator<CComBSTR>> items;
  archive >> items >> items;
  EXPECT_THAT([&] { archive >> items; }, Fails("string expected"));
  EXPECT_EQ(Read<int>(archive), 7);
  EXPECT_THAT([&] { archive >> items; }, Fails("End of archive reached"));
  EXPECT_STREQ(items.at(1), L"y");
}

}  // namespace
