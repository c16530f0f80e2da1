// The search for a broker that answers, through real brokers, launchers and injectors.
#include <gmock/gmock.h>

#include <thread>

#include "support/Elements.h"
#include "support/StandIn.h"
#include "support/TestWindow.h"

namespace {

using namespace TesselSilverlight;
using testing::ElementsAre;

const LogCapture capture;

std::wstring HexOf(HWND window) {
  wchar_t digits[17] = {};
  ::swprintf(digits, 17, L"%llx", reinterpret_cast<unsigned long long>(window));
  return digits;
}

// What the search does, by the answers of the tailored broker and of the scheme's own.
TEST(Search, GoesOnAfterNotServedAlone) {
  const TestWindow window;
  const std::wstring address = Address(L"search");
  ScriptedBroker tailored(SL_TAILORED_URI, address,
                          {"[-8]", "[5]", "[0,'g']", "[-8]", "[-8]", "[0,'h']", "[-8]", "[-8]"});
  ScriptedBroker http(SL_HTTP_URI, address, {"[0,'f']", "[-8]", "[-8]", "[-8]", "[-8]"});
  const std::string uri = Narrow(address.c_str());
  const std::string point = "[1," + kOwnId + ",\"\",3,-4,5]", focus = "[14," + kOwnId + ",\"\"]";
  const auto find = [&] {
    SLElemData record;
    record.hwnd = window.Child();
    record.sourceUri = address.c_str();
    LogCapture::Reset();
    const std::string result = Point(record);
    EXPECT_EQ(record.processId, ::GetCurrentProcessId()) << "filled in, whatever came of it";
    return result + " / " + std::to_string(record.uriScheme);
  };
  const auto requests = [](ScriptedBroker& broker, int count) {
    Texts lines;
    while (count-- > 0) lines.push_back(broker.ReadLine());
    return lines;
  };
  const std::string kept = kKept + " / 0";
  const std::string foundBy = kOwnId + " 1 " + uri;

  EXPECT_EQ(find(), "0 " + foundBy + " f / 1");
  EXPECT_EQ(requests(tailored, 1), Texts{point});
  EXPECT_EQ(requests(http, 1), Texts{point});
  Texts progress;
  for (const std::string& line : LogCapture::Messages("INFO")) {
    if (line.find("scheme") != std::string::npos) progress.push_back(line);
  }
  EXPECT_THAT(progress, ElementsAre("INFO SL_NO_URI scheme",
                                    "INFO Prepare to send message for SL_TAILORED_URI scheme",
                                    "INFO SendMessageToBroker for SL_TAILORED_URI scheme",
                                    "INFO Prepare to send message for SL_HTTP_URI scheme",
                                    "INFO SendMessageToBroker for SL_HTTP_URI scheme"));

  EXPECT_EQ(find(), "5 " + kept);
  EXPECT_EQ(requests(tailored, 1), Texts{point});
  EXPECT_THAT(Errors(), ElementsAre(kFailed + "5"));

  SLElemData focused;
  focused.sourceUri = address.c_str();
  LogCapture::Reset();
  EXPECT_EQ(GetFocusedElement(window.Top(), focused), 0);
  EXPECT_EQ(requests(tailored, 1), Texts{focus});
  EXPECT_EQ(focused.hwnd, window.Top());
  EXPECT_EQ(Taken(focused), kOwnId + " 4 " + uri + " g");
  EXPECT_THAT(LogCapture::Messages(), ElementsAre("ERROR Invalid SL object"));
  EXPECT_EQ(LogCapture::Count("SL_NO_URI scheme"), 1u);

  EXPECT_EQ(find(), "-10 " + kept) << "there is no injector";
  EXPECT_EQ(requests(tailored, 1), requests(http, 1));
  EXPECT_EQ(Errors().size(), 3u);
  EXPECT_EQ(Errors()[1], "ERROR SL injection failed with code -10");
  EXPECT_EQ(Errors()[2], kFailed + "-10");

  const StandIn injector(L"slinject");
  EXPECT_EQ(find(), "0 " + kOwnId + " 4 " + uri + " h / 4") << "after an injection";
  EXPECT_EQ(requests(tailored, 2), Texts(2, point));
  EXPECT_EQ(requests(http, 1), Texts{point});
  EXPECT_EQ(find(), "-8 " + kept) << "no second injection";
  EXPECT_EQ(requests(tailored, 2), requests(http, 2));
  EXPECT_THAT(Errors(), ElementsAre("ERROR Silverlight injector succeeded", kFailed + "-8"));
  EXPECT_EQ(injector.Record(kProcess).size(), 10u) << "two runs in all";
  EXPECT_EQ(tailored.Wait() + http.Wait(), 0u);
}

TEST(Search, FindsACollectionBelowAWindow) {
  const std::wstring address = Address(L"collection");
  ScriptedBroker tailored(SL_TAILORED_URI, address, {"[-8]"});
  ScriptedBroker http(SL_HTTP_URI, address, {"[0,2,'x',1,2,3,4,'y',5,6,7,8]"});
  const TestWindow window;
  SLElemData root;
  root.hwnd = window.Top();
  root.sourceUri = address.c_str();
  Records found;
  EXPECT_EQ(FindCollection(root, nullptr, nullptr, nullptr, 0, false, found), 0);
  EXPECT_EQ(http.ReadLine(), "[9," + kOwnId + ",\"\",\"\",\"\",\"\",0,false]");
  EXPECT_EQ(root.uriScheme, static_cast<DWORD>(SL_HTTP_URI));
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[1].hwnd, window.Top());
  EXPECT_EQ(found[1].rect.bottom, 8);
  EXPECT_EQ(Taken(found[0]), kOwnId + " 1 " + Narrow(address.c_str()) + " x");
  EXPECT_EQ(Taken(found[1]), kOwnId + " 1 " + Narrow(address.c_str()) + " y");
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
