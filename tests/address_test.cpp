// Tests the rules that make schemes and pipe names from addresses.
#include <gtest/gtest.h>

#include "TesselSLB/BrokerPipe.h"
#include "wire/Addresses.h"

namespace {

const std::wstring kBase = L"\\\\.\\pipe\\Tessel.Orbitane.SilverlightBridge.Pipe.Name";

TEST(Address, DecidesSchemeOriginAndPipeName) {
  constexpr std::optional<SLUriScheme> kNone;
  const std::tuple<std::wstring, std::optional<SLUriScheme>, std::wstring, std::wstring> kCases[] =
      {{L"http://h.x:80/a/b", SL_HTTP_URI, L"http://h.x:80", L"http___h_x_80"},
       {L"https:", SL_HTTPS_URI, L"https:", L"https_"},
       {L"http:a/b/c/d", SL_HTTP_URI, L"http:a/b/c", L"http_a_b_c"},
       {L"file:///C:/one/two/a.xap", SL_FILE_URI, L"file:///C:/one/two", L"file____C__one_two"},
       // A character is kept in the pipe name if its low byte is an ASCII letter or digit. The low
       // bytes of U+00E9, U+0161 and U+0141 are E9, 61 and 41, so only the first is replaced.
       {L"http:\u00e9\u0161\u0141-%2", SL_HTTP_URI, L"http:\u00e9\u0161\u0141-%2",
        L"http__\u0161\u0141__2"},
       {L"http", kNone, L"none", L""},
       {L"HTTP://host/a", kNone, L"none", L""}};
  for (const auto& [address, scheme, origin, cleaned] : kCases) {
    SCOPED_TRACE(testing::PrintToString(address));
    EXPECT_EQ(wire::GetUriScheme(address), scheme);
    EXPECT_EQ(wire::GetUriOrigin(address).value_or(L"none"), origin);
    EXPECT_EQ(GetBrokerPipeName(SL_TAILORED_URI, address), kBase + L".TAILORED" + cleaned);
  }
  const std::wstring longest = kBase + L".TAILOREDhttp_" + std::wstring(300, L'h');
  EXPECT_EQ(GetBrokerPipeName(SL_TAILORED_URI, L"http:" + std::wstring(300, L'h')),
            longest.substr(0, 255));
}

TEST(Address, NamesOnePipePerScheme) {
  EXPECT_EQ(GetBrokerPipeName(SL_HTTP_URI, L"https://host/a"), kBase + L".HTTP");
  EXPECT_EQ(GetBrokerPipeName(SL_HTTPS_URI, L""), kBase + L".HTTPS");
  EXPECT_EQ(GetBrokerPipeName(SL_FILE_URI, L"http://host/a"), kBase + L".FILE");
}

}  // namespace
