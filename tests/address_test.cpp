#include <gmock/gmock.h>

#include "TesselSLB/BrokerAddress.h"
#include "support/LogCapture.h"

namespace {

const LogCapture capture;
const std::wstring kBase = L"\\\\.\\pipe\\Tessel.Orbitane.SilverlightBridge.Pipe.Name";

TEST(Address, GivesSchemeOriginAndCleanedName) {
  constexpr std::optional<SLUriScheme> kNone;
  const std::tuple<std::wstring, std::optional<SLUriScheme>, const wchar_t*, std::wstring>
      kCases[] = {
          {L"http://h.x:80/a/b", SL_HTTP_URI, L"http://h.x:80", L"http___h_x_80"},
          {L"https://a", SL_HTTPS_URI, L"https://a", L"https___a"},
          {L"http:", SL_HTTP_URI, L"http:", L"http_"},
          {L"http:a/b/c/d", SL_HTTP_URI, L"http:a/b/c", L"http_a_b_c"},
          {L"file:///C:/one/two/three.xap", SL_FILE_URI, L"file:///C:/one/two",
           L"file____C__one_two"},
          {L"http://\u00e9\u0161\u0141-%20/x", SL_HTTP_URI, L"http://\u00e9\u0161\u0141-%20",
           L"http____\u0161\u0141__20"},  // judged by the low bytes E9, 61, 41
          {L"", kNone, L"none", L""},
          {L"http", kNone, L"none", L""},
          {L"HTTP://host/a", kNone, L"none", L""},
          {L"/a/b/c/d", kNone, L"none", L""}};
  for (const auto& [address, scheme, origin, cleaned] : kCases) {
    SCOPED_TRACE(testing::PrintToString(address));
    EXPECT_EQ(GetUriScheme(address), scheme);
    EXPECT_EQ(GetUriOrigin(address).value_or(L"none"), origin);
    EXPECT_EQ(GetBrokerPipeName(SL_TAILORED_URI, address), kBase + L".TAILORED" + cleaned);
  }
}

TEST(Address, NamesOnePipePerScheme) {
  EXPECT_EQ(GetBrokerPipeName(SL_HTTP_URI, L"https://host/a"), kBase + L".HTTP");
  EXPECT_EQ(GetBrokerPipeName(SL_HTTPS_URI, L""), kBase + L".HTTPS");
  EXPECT_EQ(GetBrokerPipeName(SL_FILE_URI, L"http://host/a"), kBase + L".FILE");
  for (DWORD scheme : {0ul, 5ul, 0xFFFFFFFFul}) {
    LogCapture::Reset();
    EXPECT_EQ(GetBrokerPipeName(scheme, L"http://host/a"), L"") << scheme;
    EXPECT_THAT(LogCapture::Messages(), testing::ElementsAre("ERROR Invalid URI scheme")) << scheme;
    EXPECT_STREQ(SchemeName(scheme), scheme == 0 ? "SL_NO_URI" : "UNKNOWN SCHEME");
  }
}

TEST(Address, CutsPipeNamesAt255Characters) {
  const std::size_t room = 255 - (kBase + L".TAILORED").size();
  for (std::size_t length : {room - 1, room, room + 1, std::size_t{2000}}) {
    const std::wstring origin = L"http://" + std::wstring(length - 7, L'h');
    const std::wstring name = GetBrokerPipeName(SL_TAILORED_URI, origin + L"/path");
    EXPECT_EQ(name.size(), std::min(length, room) + 255 - room) << length;
  }
}

}  // namespace
