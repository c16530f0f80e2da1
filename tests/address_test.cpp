#include <gmock/gmock.h>

#include "TesselSLB/BrokerAddress.h"
#include "support/LogCapture.h"

namespace {

using testing::ElementsAre;
using testing::PrintToString;

const LogCapture capture;
const std::wstring kBase = L"\\\\.\\pipe\\Tessel.Orbitane.SilverlightBridge.Pipe.Name";

TEST(Address, KnowsSchemesByNumberAndName) {
  const char* kNames[] = {"SL_NO_URI",   "SL_HTTP_URI",     "SL_HTTPS_URI",
                          "SL_FILE_URI", "SL_TAILORED_URI", "UNKNOWN SCHEME"};
  for (DWORD scheme = 0; scheme < 6; ++scheme) EXPECT_STREQ(SchemeName(scheme), kNames[scheme]);
  EXPECT_STREQ(SchemeName(0xFFFFFFFF), "UNKNOWN SCHEME");
}

TEST(Address, GivesSchemeOriginAndCleanedName) {
  const struct {
    std::wstring address;
    SLUriScheme scheme;
    std::wstring origin, cleaned;
  } kCases[] = {
      {L"http://host.example:80/a/b", SL_HTTP_URI, L"http://host.example:80",
       L"http___host_example_80"},
      {L"http://host.example:80", SL_HTTP_URI, L"http://host.example:80",
       L"http___host_example_80"},
      {L"https://a/", SL_HTTPS_URI, L"https://a", L"https___a"},
      {L"http:", SL_HTTP_URI, L"http:", L"http_"},
      {L"http:///x", SL_HTTP_URI, L"http://", L"http___"},
      {L"http:a/b/c/d", SL_HTTP_URI, L"http:a/b/c", L"http_a_b_c"},
      {L"file:///C:/one/two/three.xap", SL_FILE_URI, L"file:///C:/one/two", L"file____C__one_two"},
      {L"file:///C:/one/two", SL_FILE_URI, L"file:///C:/one/two", L"file____C__one_two"},
      {L"http://\u00e9\u0161\u0141-%20/x", SL_HTTP_URI, L"http://\u00e9\u0161\u0141-%20",
       L"http____\u0161\u0141__20"},  // judged by the low bytes E9, 61, 41
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(PrintToString(row.address));
    EXPECT_EQ(GetUriScheme(row.address), row.scheme);
    EXPECT_EQ(GetUriOrigin(row.address), row.origin);
    EXPECT_EQ(GetBrokerPipeName(SL_TAILORED_URI, row.address), kBase + L".TAILORED" + row.cleaned);
  }
}

TEST(Address, RefusesWhatHasNoKnownPrefix) {
  for (const wchar_t* address : {L"", L"http", L"file", L"HTTP://host/a", L"Https://host/a",
                                 L"ftp://host/a", L" http://host/a", L"C:\\a.xap", L"/a/b/c/d"}) {
    SCOPED_TRACE(PrintToString(address));
    EXPECT_EQ(GetUriScheme(address), std::nullopt);
    EXPECT_EQ(GetUriOrigin(address), std::nullopt);
    EXPECT_EQ(GetBrokerPipeName(SL_TAILORED_URI, address), kBase + L".TAILORED");
  }
}

TEST(Address, NamesOnePipePerScheme) {
  LogCapture::Reset();
  EXPECT_EQ(GetBrokerPipeName(SL_HTTP_URI, L"https://host/a"), kBase + L".HTTP");
  EXPECT_EQ(GetBrokerPipeName(SL_HTTPS_URI, L""), kBase + L".HTTPS");
  EXPECT_EQ(GetBrokerPipeName(SL_FILE_URI, L"http://host/a"), kBase + L".FILE");
  EXPECT_THAT(LogCapture::Messages(), ElementsAre());
  for (DWORD scheme : {0ul, 5ul, 0xFFFFFFFFul}) {
    LogCapture::Reset();
    EXPECT_EQ(GetBrokerPipeName(scheme, L"http://host/a"), L"") << scheme;
    EXPECT_THAT(LogCapture::Messages(), ElementsAre("ERROR Invalid URI scheme")) << scheme;
  }
}

TEST(Address, CutsPipeNamesAt255Characters) {
  const std::size_t room = 255 - (kBase + L".TAILORED").size();
  for (std::size_t length : {room - 1, room, room + 1, std::size_t{2000}}) {
    const std::wstring origin = L"http://" + std::wstring(length - 7, L'h');
    const std::wstring name = GetBrokerPipeName(SL_TAILORED_URI, origin + L"/path");
    EXPECT_EQ(name.size(), std::min(length, room) + 255 - room) << length;
    EXPECT_EQ(name.back(), L'h') << length;
  }
}

}  // namespace
