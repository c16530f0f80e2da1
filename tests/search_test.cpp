// The search for a broker that answers, through real brokers, launchers and injectors.
#include <gmock/gmock.h>

#include <functional>
#include <optional>
#include <thread>

#include "support/Elements.h"
#include "support/StandIn.h"
#include "support/TestWindow.h"

namespace {

using namespace TesselSilverlight;
using testing::ElementsAre;

const LogCapture capture;

// All that a client knows at first.
SLElemData Window(HWND window, const std::wstring& address) {
  SLElemData record;
  record.hwnd = window;
  record.sourceUri = address.c_str();
  return record;
}

std::wstring HexOf(HWND window) {
  wchar_t digits[17] = {};
  ::swprintf(digits, 17, L"%llx", reinterpret_cast<unsigned long long>(window));
  return digits;
}

// What the search does, by the answers of the tailored broker and of the scheme's own; from the
// sixth row on there is an injector.
TEST(Search, GoesOnAfterNotServedAlone) {
  const TestWindow window;
  const std::wstring address = Address(L"search");
  SLElemData record;
  const std::function<std::string()> find = [&] { return Point(record); };
  const std::function<std::string()> focus = [&] {
    SLElemData focused = Window(nullptr, address);
    const int code = GetFocusedElement(window.Child(), focused);
    return std::to_string(code) + ' ' + Taken(focused);
  };
  const std::function<std::string()> collect = [&] {
    Records found;
    std::string result =
        std::to_string(FindCollection(record, nullptr, nullptr, nullptr, 0, false, found));
    for (SLElemData& element : found) {
      result += ' ' + std::to_string(element.rect.bottom) + ' ' + Taken(element);
    }
    return result;
  };
  const std::string uri = ' ' + Narrow(address.c_str()) + ' ', own = "0 " + kOwnId;
  const std::string point = ",\"\",3,-4,5]", all = ",\"\",\"\",\"\",\"\",0,false]";
  const std::string injection = "ERROR SL injection failed with code -10";
  const std::string injected = "ERROR Silverlight injector succeeded";
  // Then the scheme in the caller's record, and the last lines of the log.
  const struct {
    std::function<std::string()> call;
    std::string request;
    Texts tailored, http;
    std::string result;
    DWORD scheme;
    Texts errors;
  } kCases[] = {
      {find, "[1," + kOwnId + point, {"[-8]"}, {"[0,'f']"}, own + " 1" + uri + "f", 1, {}},
      {find, "[1," + kOwnId + point, {"[5]"}, {}, "5 " + kKept, 0, {kFailed + "5"}},
      {focus, "[14," + kOwnId + ",\"\"]", {"[0,'g']"}, {}, own + " 4" + uri + "g", 0, {}},
      {collect,
       "[9," + kOwnId + all,
       {"[-8]"},
       {"[0,1,'x',1,2,3,4]"},
       "0 4 " + kOwnId + " 1" + uri + "x",
       1,
       {}},
      {find,
       "[1," + kOwnId + point,
       {"[-8]"},
       {"[-8]"},
       "-10 " + kKept,
       0,
       {injection, kFailed + "-10"}},
      {find,
       "[1," + kOwnId + point,
       {"[-8]", "[0,'h']"},
       {"[-8]"},
       own + " 4" + uri + "h",
       4,
       {injected}},
      {find,
       "[1," + kOwnId + point,
       {"[-8]", "[-8]"},
       {"[-8]", "[-8]"},
       "-8 " + kKept,
       0,
       {injected, kFailed + "-8"}},
  };
  Texts tailoredAnswers, httpAnswers;
  for (const auto& row : kCases) {
    tailoredAnswers.insert(tailoredAnswers.end(), row.tailored.begin(), row.tailored.end());
    httpAnswers.insert(httpAnswers.end(), row.http.begin(), row.http.end());
  }
  ScriptedBroker tailored(SL_TAILORED_URI, address, tailoredAnswers);
  ScriptedBroker http(SL_HTTP_URI, address, httpAnswers);
  std::optional<StandIn> injector;
  for (const auto& row : kCases) {
    SCOPED_TRACE(&row - kCases);
    if (&row - kCases == 5) injector.emplace(L"slinject");
    record = Window(window.Child(), address);
    LogCapture::Reset();
    EXPECT_EQ(row.call(), row.result);
    EXPECT_EQ(record.uriScheme, row.scheme);
    for (std::size_t i = 0; i < row.tailored.size(); ++i) {
      EXPECT_EQ(tailored.ReadLine(), row.request);
    }
    for (std::size_t i = 0; i < row.http.size(); ++i) EXPECT_EQ(http.ReadLine(), row.request);
    const Texts errors = Errors();
    ASSERT_GE(errors.size(), row.errors.size());
    EXPECT_EQ(Texts(errors.end() - static_cast<int>(row.errors.size()), errors.end()), row.errors);
    EXPECT_EQ(LogCapture::Count("SL_NO_URI scheme"), 1u);
  }
  EXPECT_EQ(injector->Record(kProcess).size(), 10u) << "one run for each of the last two";
  EXPECT_EQ(tailored.Wait() + http.Wait(), 0u);
}

TEST(Search, TriesAnUnknownPrefixAsTailoredAlone) {
  // Such addresses have one pipe in common.
  ScriptedBroker broker(SL_TAILORED_URI, L"ftp:x", {"[-8]", "[-8]", "gone"});
  for (const wchar_t* address : {L"ftp://host/x", L"HTTP://host/x"}) {
    SLElemData focused;
    focused.sourceUri = address;
    LogCapture::Reset();
    EXPECT_EQ(GetFocusedElement(nullptr, focused), -5);
    EXPECT_EQ(broker.ReadLine(), "[14,0,\"\"]");
    EXPECT_THAT(LogCapture::Messages(),
                ElementsAre("ERROR Invalid window", "ERROR SL injection failed with code -5",
                            "ERROR SendMessageToBroker failed with -5", "ERROR Invalid SL object"));
  }
  SLElemData element = Element(L"ftp:x", L"id");
  LogCapture::Reset();
  EXPECT_EQ(RectangleOf(element), "-6 9 9 9 9") << "the broker is gone";
  const Texts errors = LogCapture::Messages();
  ASSERT_GE(errors.size(), 3u);
  EXPECT_THAT(Texts(errors.end() - 3, errors.end()),
              ElementsAre("ERROR ReadBuffer failed", "ERROR Cannot read from SL server pipe",
                          "ERROR SendMessageToBroker failed with -6"));
  Forget(element);
}

// A broker that shows something else answers two client processes and is gone; what the injector
// then starts answers. The second client comes while the first one's injector is at work.
TEST(Search, InjectsForOneClientAfterTheOther) {
  const TestWindow window;
  const std::wstring address = L"injected-" + kProcess;
  const StandIn injector(L"slinject");
  injector.Prepare(::GetCurrentProcessId(), 2500, 0,
                   TestFolder() + L"test_parts.exe broker 4 " + address +
                       L" ~[0,'in'] ~[0,'in'] ~[0,'in'] ~[0,'in']");
  ScriptedBroker other(SL_TAILORED_URI, address, {"[-8]", "[-8]"});
  const std::wstring find = TestFolder() + L"tessel.exe at 3,-4 --address " + address +
                            L" --window 0x" + HexOf(window.Child());
  ChildProcess first(find);
  EXPECT_EQ(other.ReadLine(), "[1," + kOwnId + ",\"\",3,-4,0]");
  ChildProcess second(find);
  EXPECT_THAT(first.ReadToEnd(), testing::HasSubstr("element: in"));
  EXPECT_THAT(second.ReadToEnd(), testing::HasSubstr("element: in"));
  EXPECT_EQ(first.Wait() + second.Wait() + other.Wait(), 0u);
  const Texts record = injector.Record(kProcess);
  ASSERT_EQ(record.size(), 10u);
  EXPECT_EQ(record[4], "end") << "the second began when the first had ended";
}

TEST(Search, StartsTheTailoredBrokerOrEnds) {
  const std::wstring address = L"http://serve-" + kProcess + L"-element";
  ScriptedBroker http(SL_HTTP_URI, address, {"[0,'never']"});
  const auto find = [&] {
    SLElemData record;
    record.sourceUri = address.c_str();
    LogCapture::Reset();
    return Point(record);
  };
  EXPECT_EQ(find(), "-9 " + kKept);
  EXPECT_THAT(Errors(),
              ElementsAre("ERROR Cannot find sllauncher.exe", "ERROR Cannot sllauncher.exe",
                          "ERROR Cannot start SLBroker process",
                          "ERROR SendMessageToBroker failed with -9"));
  const StandIn launcher(L"sllauncher");
  EXPECT_EQ(find(), "0 0 4 " + Narrow(address.c_str()) + " launched");
}

// One client gets no answer for 25 s, another no connection meanwhile.
TEST(Waits, EndInTheirTime) {
  const std::wstring address = Address(L"silent");
  ScriptedBroker broker(SL_TAILORED_URI, address, {"silent"});
  std::string results[2];
  Texts errors[2];
  std::uint64_t took[2];
  const auto call = [&](int index) {
    SLElemData element = Element(address, L"id");
    const std::uint64_t start = ::GetTickCount64();
    results[index] = RectangleOf(element);
    took[index] = ::GetTickCount64() - start;
    errors[index] = LogCapture::Messages("ERROR", ::GetCurrentThreadId());
    Forget(element);
  };
  {
    std::jthread silent([&] { call(0); });
    EXPECT_EQ(broker.ReadLine(), "[2,77,\"id\"]");
    call(1);
  }
  EXPECT_GE(std::min(took[0], took[1]), 18000u);
  EXPECT_EQ(results[0], "-6 9 9 9 9");
  EXPECT_THAT(errors[0], ElementsAre("ERROR WaitForSingleObject timeout or failed (258)",
                                     "ERROR GetOverlappedResult failed", "ERROR ReadBuffer failed",
                                     "ERROR Cannot read from SL server pipe",
                                     "ERROR SendMessageToBroker failed with -6"));
  EXPECT_EQ(results[1], "-7 9 9 9 9");
  ASSERT_GE(errors[1].size(), 3u);
  EXPECT_THAT(Texts(errors[1].end() - 3, errors[1].end()),
              ElementsAre("ERROR Cannot open server pipe! Error = 231",
                          "ERROR Cannot connect to SL server pipe",
                          "ERROR SendMessageToBroker failed with -7"));
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
