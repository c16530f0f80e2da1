#include <gmock/gmock.h>

#include <functional>
#include <thread>

#include "TesselSilverlight.h"
#include "VectorGrowth.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/StandIn.h"
#include "support/TestWindow.h"

namespace {

using namespace TesselSilverlight;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;
using Items = std::vector<CComBSTR, HeapAllocator<CComBSTR>>;

const LogCapture capture;
const std::wstring kProcess = std::to_wstring(::GetCurrentProcessId());
const std::string kOwnId = std::to_string(::GetCurrentProcessId());

std::string Narrow(const wchar_t* text) {
  char buffer[300] = {};
  ::WideCharToMultiByte(CP_UTF8, 0, text == nullptr ? L"(null)" : text, -1, buffer, 300, nullptr,
                        nullptr);
  return buffer;
}

std::wstring Address(const wchar_t* name) { return L"http://" + kProcess + name + L"/x"; }

// A broker in a process of its own that gives these answers in turn.
class Broker : public ChildProcess {
 public:
  Broker(SLUriScheme scheme, const std::wstring& address, const std::vector<std::string>& answers)
      : ChildProcess(CommandLine(scheme, address, answers)) {
    EXPECT_EQ(ReadLine(), "InitComm 0");
  }

 private:
  static std::wstring CommandLine(SLUriScheme scheme, const std::wstring& address,
                                  const std::vector<std::string>& answers) {
    std::wstring line =
        TestFolder() + L"test_parts.exe broker " + std::to_wstring(scheme) + L" " + address;
    for (const std::string& answer : answers) {
      line += L" \"" + std::wstring(answer.begin(), answer.end()) + L"\"";
    }
    return line;
  }
};

SLElemData Element(const std::wstring& address, const wchar_t* id, DWORD scheme = SL_TAILORED_URI) {
  SLElemData element;
  element.processId = 77;
  element.hwnd = ::GetDesktopWindow();
  element.objectId = ::SysAllocString(id);
  element.uriScheme = scheme;
  element.sourceUri = address.c_str();
  return element;
}

// Drops the object without a call to the broker.
void Forget(SLElemData& element) { ::SysFreeString(std::exchange(element.objectId, nullptr)); }

// "process scheme address id" of an out record, which is then forgotten.
std::string Taken(SLElemData& element) {
  const std::string text = std::to_string(element.processId) + ' ' +
                           std::to_string(element.uriScheme) + ' ' + Narrow(element.sourceUri) +
                           ' ' + Narrow(element.objectId);
  Forget(element);
  return text;
}

// The error lines but for those of the records that the calls drop.
Texts Errors() {
  Texts lines = LogCapture::Messages();
  std::erase(lines, "ERROR Invalid SL object");
  return lines;
}

const std::string kFailed = "ERROR SendMessageToBroker failed with ";
const std::string kKept = "77 0 old kept";  // an out record as it was

// The calls of the table below: code and outputs as a text.
using Call = std::function<std::string(SLElemData&)>;

std::string Rectangle(SLElemData& element) {
  RECT rect = {9, 9, 9, 9};
  std::string text = std::to_string(GetElemRectangle(element, rect));
  for (LONG side : {rect.left, rect.top, rect.right, rect.bottom}) {
    text += ' ' + std::to_string(side);
  }
  return text;
}

Call Attribute(const wchar_t* name, bool wanted = true) {
  return [=](SLElemData& element) {
    wchar_t kept[] = L"kept";
    wchar_t* value = kept;
    const int code = GetAttribute(element, const_cast<wchar_t*>(name), wanted ? &value : nullptr);
    const std::string text = std::to_string(code) + ' ' + Narrow(value);
    if (value != kept) ::SysFreeString(value);
    return text;
  };
}

Call ItemsOf(int flag) {
  return [=](SLElemData& element) {
    Items items = {L"first"};
    std::string text = std::to_string(GetItems(element, flag, items));
    for (const CComBSTR& item : items) text += ' ' + Narrow(item);
    return text + ' ' + std::to_string(items.capacity());
  };
}

std::string Value(SLElemData& element) {
  CComBSTR value(L"kept");
  const int code = GetElementValue(element, value);
  return std::to_string(code) + ' ' + Narrow(value);
}

std::string Parent(SLElemData& element) {
  SLElemData parent = Element(L"old", L"kept", SL_NO_URI);
  const int code = GetParentElement(element, parent);
  return std::to_string(code) + ' ' + Taken(parent);
}

std::string Release(SLElemData& element) { return std::to_string(ReleaseObj(element)); }

std::string Point(SLElemData& element) {
  SLElemData found = Element(L"old", L"kept", SL_NO_URI);
  found.rect = {1, 2, 3, 4};
  const int code = GetElemFromPoint(element, {3, -4}, 5, found);
  EXPECT_EQ(found.rect.bottom, 4);
  return std::to_string(code) + ' ' + Taken(found);
}

std::string PointIntoItself(SLElemData& element) {
  const int code = GetElemFromPoint(element, {0, 0}, 0, element);
  const std::string text = std::to_string(code) + ' ' + Narrow(element.objectId);
  ::SysReAllocString(&element.objectId, L"id");
  return text;
}

std::string PointIntoZeroed(SLElemData& element) {
  alignas(SLElemData) unsigned char storage[sizeof(SLElemData)] = {};
  auto& found = reinterpret_cast<SLElemData&>(storage);
  const int code = GetElemFromPoint(element, {0, 0}, 0, found);
  const std::string text = std::to_string(code) + ' ' + Taken(found);
  found.~SLElemData();
  return text;
}

TEST(Element, SendsItsRequestAndReadsItsAnswer) {
  const std::wstring address = Address(L"calls");
  const std::string uri = Narrow(address.c_str());
  const std::string kEnd = "ERROR Archive failure: 'End of archive reached'";
  const std::string kNumber = "ERROR Archive failure: 'number expected'";
  const std::string kString = "ERROR Archive failure: 'string expected'";
  const std::string rectangle = "[2,77,\"id\"]", id = ",77,\"id\"";
  const std::string point = "[1,77,\"id\",3,-4,5]", origin = "[1,77,\"id\",0,0,0]";
  // No answer: the broker must not be asked.
  const struct {
    Call call;
    std::string answer, request, result, error;
  } kCases[] = {
      {Rectangle, "[0,1,-2,3,2147483647]", rectangle, "0 1 -2 3 2147483647", ""},
      {Rectangle, "[0,5,6]", rectangle, "-12 5 6 9 9", kEnd},
      {Rectangle, "[0,5,6.0,7,8]", rectangle, "-12 5 9 9 9", kNumber},
      {Rectangle, "[-8,1,2,3,4]", rectangle, "-8 9 9 9 9", kFailed + "-8"},
      {Rectangle, "[100]", rectangle, "100 9 9 9 9", kFailed + "100"},
      {Rectangle, "[-2147483648]", rectangle, "-2147483648 9 9 9 9", kFailed + "-2147483648"},
      {Rectangle, "[]", rectangle, "-12 9 9 9 9", kEnd},
      {Rectangle, "['0',1]", rectangle, "-12 9 9 9 9", kNumber},
      {Rectangle, "{}", rectangle, "-12 9 9 9 9", "ERROR Archive failure: 'json array expected'"},
      {Rectangle, "[0,", rectangle, "-12 9 9 9 9",
       "ERROR Archive failure: 'Cannot parse json_array'"},
      {Attribute(L"N\u00e4<\""), "[0,'t\\u00e9xt']", "[10" + id + ",\"N\u00e4\\u003C\\\"\"]",
       "0 t\u00e9xt", ""},
      {Attribute(L"a"), "[0,'']", "[10" + id + ",\"a\"]", "0 ", ""},
      {Attribute(L"a"), "[0,5]", "[10" + id + ",\"a\"]", "-12 kept", kString},
      {Attribute(nullptr), "", "", "-5 kept", "ERROR Invalid attribute name"},
      {Attribute(L"", false), "", "", "-5 kept", "ERROR Invalid attribute name"},
      {Attribute(L"a", false), "", "", "-5 kept", "ERROR Invalid out param"},
      {ItemsOf(7), "[0,2,'x','y']", "[16" + id + ",true]", "0 first x y 3", ""},
      {ItemsOf(0), "[0,0]", "[16" + id + ",false]", "0 first 1", ""},
      {ItemsOf(-1), "[0,-1]", "[16" + id + ",true]", "0 first 1", ""},
      {ItemsOf(1), "[0,3,'x']", "[16" + id + ",true]", "-12 first x 2", kEnd},
      {ItemsOf(1), "[0,['x']]", "[16" + id + ",true]", "-12 first 1", kNumber},
      {Value, "", "", std::to_string(E_NOTIMPL) + " kept", ""},
      {Parent, "[0,'up']", "[6" + id + "]", "0 77 4 " + uri + " up", ""},
      {Parent, "[0,'']", "[6" + id + "]", "0 " + kKept, ""},
      {Parent, "[0,5]", "[6" + id + "]", "-12 " + kKept, kString},
      {Release, "[0,true]", "[3" + id + "]", "0", ""},
      {Release, "[0,false]", "[3" + id + "]", "-3", "ERROR Release failed"},
      {Release, "[0,1]", "[3" + id + "]", "-12", "ERROR Archive failure: 'boolean expected'"},
      {Point, "[0,'new']", point, "0 77 4 " + uri + " new", ""},
      {Point, "[0,'']", point, "0 77 4 " + uri + " ", ""},
      {Point, "[0]", point, "-12 " + kKept, kEnd},
      {Point, "[0,7]", point, "-12 " + kKept, kString},
      {Point, "[-8]", point, "-8 " + kKept, kFailed + "-8"},
      {PointIntoItself, "[0,'new']", origin, "0 new", ""},
      {PointIntoZeroed, "[0,'new']", origin, "0 77 4 " + uri + " new", ""},
  };
  std::vector<std::string> answers;
  for (const auto& row : kCases) {
    if (!row.answer.empty()) answers.push_back(row.answer);
  }
  answers.push_back("[0,true]");
  Broker broker(SL_TAILORED_URI, address, answers);
  {
    SLElemData element = Element(address, L"id");
    for (const auto& row : kCases) {
      SCOPED_TRACE(row.answer + " " + row.request + " " + row.result);
      LogCapture::Reset();
      EXPECT_EQ(row.call(element), row.result);
      if (!row.request.empty()) {
        EXPECT_EQ(broker.ReadLine(), row.request);
      }
      EXPECT_EQ(Errors(), row.error.empty() ? Texts() : Texts{row.error});
      EXPECT_EQ(LogCapture::Count("SL_NO_URI scheme"), 0u);
    }
  }
  EXPECT_EQ(broker.ReadLine(), "[3,77,\"id\"]") << "its destruction releases it";
  EXPECT_EQ(broker.Wait(), 0u);
}

TEST(Element, MustBeNamedByAllFiveFields) {
  const std::function<void(SLElemData&)> kBreaks[] = {
      [](SLElemData& e) { e.uriScheme = SL_NO_URI; },
      [](SLElemData& e) { e.hwnd = nullptr; },
      [](SLElemData& e) { e.processId = 0; },
      [](SLElemData& e) { ::SysReAllocString(&e.objectId, L""); },
      [](SLElemData& e) { e.sourceUri = L""; },
      [](SLElemData& e) { Forget(e); },
  };
  const std::pair<Call, std::string> kCalls[] = {{Rectangle, "-13 9 9 9 9"},
                                                 {Attribute(L""), "-13 kept"},
                                                 {Attribute(L"a", false), "-13 kept"},
                                                 {ItemsOf(1), "-13 first 1"},
                                                 {Value, "-13 kept"},
                                                 {Parent, "-13 77 0 old kept"},
                                                 {Release, "-13"}};
  for (const auto& breakIt : kBreaks) {
    SLElemData element = Element(L"http://nobody", L"id");
    breakIt(element);
    for (const auto& [call, result] : kCalls) {
      LogCapture::Reset();
      EXPECT_EQ(call(element), result) << &breakIt - kBreaks;
      const Texts errors = LogCapture::Messages();
      EXPECT_THAT(errors, testing::Each("ERROR Invalid SL object"));
      EXPECT_EQ(errors.size(), result.find("old") == std::string::npos ? 1u : 2u) << "and parent";
    }
    EXPECT_NE(LogCapture::Lines().at(0).find(") ElementLookup.cpp("), std::string::npos);
  }
}

TEST(Element, IsReleasedOnceHoweverOftenItWasMoved) {
  const std::wstring address = Address(L"moved");
  Broker broker(SL_TAILORED_URI, address, std::vector<std::string>(4, "[0,true]"));
  {
    std::vector<SLElemData, HeapAllocator<SLElemData>> records;
    for (const wchar_t* id : {L"a", L"b", L"c"}) {
      AppendGrowing(records, Element(address, id));
    }
    SLElemData moved(std::move(records[1]));
    records[1] = std::move(moved);
    records[2] = Element(address, L"d");
  }
  for (const char* id : {"c", "a", "b", "d"}) {
    EXPECT_EQ(broker.ReadLine(), "[3,77,\"" + std::string(id) + "\"]");
  }
  EXPECT_EQ(broker.Wait(), 0u) << "no further request keeps it";
}

// What the search does, by the answers of the tailored broker and of the scheme's own.
TEST(Search, GoesOnAfterNotServedAlone) {
  const TestWindow window;
  const std::wstring address = Address(L"search");
  Broker tailored(SL_TAILORED_URI, address,
                  {"[-8]", "[5]", "[0,'g']", "[-8]", "[-8]", "[0,'h']", "[-8]", "[-8]"});
  Broker http(SL_HTTP_URI, address, {"[0,'f']", "[-8]", "[-8]", "[-8]", "[-8]"});
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
  const auto requests = [](Broker& broker, int count) {
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

TEST(Search, TriesAnUnknownPrefixAsTailoredAlone) {
  // Such addresses have one pipe in common.
  Broker broker(SL_TAILORED_URI, L"ftp:x", {"[-8]", "[-8]", "gone"});
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
  EXPECT_EQ(Rectangle(element), "-6 9 9 9 9") << "the broker is gone";
  const Texts errors = LogCapture::Messages();
  ASSERT_GE(errors.size(), 3u);
  EXPECT_THAT(Texts(errors.end() - 3, errors.end()),
              ElementsAre("ERROR ReadBuffer failed", "ERROR Cannot read from SL server pipe",
                          "ERROR SendMessageToBroker failed with -6"));
  Forget(element);
}

TEST(Search, StartsTheTailoredBrokerOrEnds) {
  const std::wstring address = L"http://serve-" + kProcess + L"-element";
  Broker http(SL_HTTP_URI, address, {"[0,'never']"});
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
  Broker broker(SL_TAILORED_URI, address, {"silent"});
  std::string results[2];
  Texts errors[2];
  std::uint64_t took[2];
  const auto call = [&](int index) {
    SLElemData element = Element(address, L"id");
    const std::uint64_t start = ::GetTickCount64();
    results[index] = Rectangle(element);
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
