// Tests the search for a broker. Other processes take the place of brokers, launcher and injector.
#include <gmock/gmock.h>

#include <future>

#include "support/Elements.h"
#include "support/StandIn.h"
#include "support/TestWindow.h"

namespace {

using namespace TesselSilverlight;
using testing::ElementsAre;
using testing::HasSubstr;

const LogCapture capture;

// Asks for an element with a record that has a window and an address but no scheme, so that the
// module searches for the broker. Returns the code, the fields of the record found, and the scheme
// that is then in the caller's record.
std::string Find(HWND window, const std::wstring& address) {
  SLElemData record;
  record.hwnd = window;
  record.sourceUri = address.c_str();
  LogCapture::Reset();
  const std::string result = Point(record);
  return result + " / " + std::to_string(record.uriScheme);
}

// Each row has the answers of the tailored broker, the answers of the broker for the address's
// scheme, the injector's exit code, the expected result, and the expected errors in the log. The
// answer -8 means that the broker does not serve the content.
TEST(Search, ContinuesOnlyAfterNotServed) {
  const TestWindow window;
  const StandIn injector(L"slinject");
  const std::wstring address = Address(L"search");
  const std::string request = "[1," + kOwnId + ",'',3,-4,5]\n", kept = ' ' + kKept + " / 0";
  const std::string own = "0 " + kOwnId, uri = ' ' + Narrow(address.c_str()) + ' ';
  const std::string injected = "ERROR Silverlight injector succeeded";
  const std::string injection = "ERROR SL injection failed with code -11";
  const std::string injector3 = "ERROR Silverlight injector failed, exit code =3";
  const std::tuple<Texts, Texts, int, std::string, Texts> kCases[] = {
      {{"[-8]"}, {"[0,'f']"}, 0, own + " 1" + uri + "f / 1", {}},
      {{"[5]"}, {}, 0, "5" + kept, {kFailed + "5"}},
      {{"[0,'g']"}, {}, 0, own + " 4" + uri + "g / 4", {}},
      {{"[-8]"}, {"[-8]"}, 3, "-11" + kept, {injector3, injection, kFailed + "-11"}},
      {{"[-8]", "[0,'h']"}, {"[-8]"}, 0, own + " 4" + uri + "h / 4", {injected}},
      {{"[-8]", "[-8]"}, {"[-8]", "[-8]"}, 0, "-8" + kept, {injected, kFailed + "-8"}},
  };
  for (const auto& [tailored, http, exitCode, result, errors] : kCases) {
    SCOPED_TRACE(result);
    StandIn::Prepare(0, exitCode);
    ScriptedBroker first(SL_TAILORED_URI, address, tailored);
    ScriptedBroker second(SL_HTTP_URI, address, http);
    EXPECT_EQ(Find(window.Child(), address), result);
    EXPECT_EQ(Errors(), errors);
    std::string requests;
    for (auto i = tailored.size() + http.size(); i > 0; --i) requests += request;
    EXPECT_EQ(first.ReadToEnd() + second.ReadToEnd(), requests);
    EXPECT_EQ(first.Wait() + second.Wait(), 0u) << "each broker has sent all its answers";
  }
  EXPECT_EQ(injector.Record(kProcess).size(), 15u) << "the injector ran for the last three rows";
}

// Two client processes search at the same time. The running broker shows other content, so it
// refuses both clients (answer -8) and ends. The injector of the first client starts a broker that
// answers both. The second client begins to search while this injector runs.
TEST(Search, InjectsForOneClientAtATime) {
  const TestWindow window;
  const std::wstring address = L"injected-" + kProcess;
  const StandIn injector(L"slinject");
  StandIn::Prepare(2500, 0,
                   TestFolder() + L"test_parts.exe broker 4 " + address +
                       L" ~[0,'in'] ~[0,'in'] ~[0,'in'] ~[0,'in']");
  ScriptedBroker other(SL_TAILORED_URI, address, {"[-8]", "[-8]"});
  const std::wstring find = TestFolder() + L"tessel.exe at 3,-4 --address " + address +
                            L" --window " + tessel::Wide(tessel::HandleText(window.Child()));
  ChildProcess first(find);
  EXPECT_EQ(other.ReadLine(), "[1," + kOwnId + ",'',3,-4,0]");
  ChildProcess second(find);
  EXPECT_THAT(first.ReadToEnd(), HasSubstr("element: in"));
  EXPECT_THAT(second.ReadToEnd(), HasSubstr("element: in"));
  EXPECT_EQ(first.Wait() + second.Wait() + other.Wait(), 0u);
  const Texts record = injector.Record(kProcess);
  ASSERT_EQ(record.size(), 10u);
  EXPECT_EQ(record[4], "end") << "the second injector started after the first had ended";
}

TEST(Search, StartsTheTailoredBrokerOrFails) {
  const std::wstring address = L"http://serve-" + kProcess + L"-element";
  ScriptedBroker http(SL_HTTP_URI, address, {"[0,'never']"});
  EXPECT_EQ(Find(nullptr, address), "-9 " + kKept + " / 0");
  EXPECT_THAT(Errors(),
              ElementsAre("ERROR Cannot find sllauncher.exe", "ERROR Cannot sllauncher.exe",
                          "ERROR Cannot start SLBroker process", kFailed + "-9"));
  const StandIn launcher(L"sllauncher");
  EXPECT_EQ(Find(nullptr, address), "0 0 4 " + Narrow(address.c_str()) + " launched / 4");
  SLElemData unknown = Element(address, L"id", 9 /*no scheme*/);
  LogCapture::Reset();
  EXPECT_EQ(RectangleOf(unknown), "-9 9 9 9 9");
  EXPECT_THAT(Errors(),
              ElementsAre("ERROR Invalid URI scheme", "ERROR Cannot get pipe name",
                          "ERROR Unknown URI scheme 9", "ERROR Cannot get URI scheme as string",
                          "ERROR Cannot start SLBroker process", kFailed + "-9"));
  Forget(unknown);
}

// The broker does not answer the first client for 25 s. Meanwhile a second client cannot connect,
// because the pipe has room for one client only.
TEST(Waits, EndAfterTheTimeOut) {
  const std::wstring address = Address(L"silent");
  ScriptedBroker broker(SL_TAILORED_URI, address, {"silent"});
  LogCapture::Reset();
  const auto call = [&] {
    SLElemData element = Element(address, L"id");
    const std::uint64_t start = ::GetTickCount64();
    const std::string result = RectangleOf(element);
    EXPECT_GE(::GetTickCount64() - start, 18000u) << result;
    Forget(element);
    return std::pair(result, LogCapture::Messages("ERROR", ::GetCurrentThreadId()));
  };
  auto silent = std::async(std::launch::async, call);
  EXPECT_EQ(broker.ReadLine(), "[2,77,'id']");
  const auto [result, errors] = call();
  EXPECT_EQ(result, "-7 9 9 9 9");
  ASSERT_GE(errors.size(), 3u);
  EXPECT_THAT(Texts(errors.end() - 3, errors.end()),
              ElementsAre("ERROR Cannot open server pipe! Error = 231",
                          "ERROR Cannot connect to SL server pipe", kFailed + "-7"));
  EXPECT_THAT(
      silent.get(),
      testing::Pair("-6 9 9 9 9",
                    ElementsAre("ERROR WaitForSingleObject timeout or failed (258)",
                                "ERROR GetOverlappedResult failed", "ERROR ReadBuffer failed",
                                "ERROR Cannot read from SL server pipe", kFailed + "-6")));
}

TEST(Client, ReportsItsAllocatorThroughTheModulesLog) {
  LogCapture::Reset();
  HeapAllocator<long> allocator;
  allocator.deallocate(nullptr, 0);
  alignas(16) static long noHeapBlock[32];
  allocator.deallocate(noHeapBlock + 16, 16);
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"),
              ElementsAre("WARNING SL: HeapAllocator: null pointer on deallocate",
                          "ERROR SL: HeapAllocator: HeapFree failed err=87"));
}

}  // namespace
