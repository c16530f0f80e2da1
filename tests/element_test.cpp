// Every element export: its request, what it makes of answers, what becomes of records.
#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

#include "VectorGrowth.h"
#include "support/Elements.h"

namespace {

using namespace TesselSilverlight;
using testing::ElementsAre;

const LogCapture capture;

// The calls of the table below: code and outputs as a text.
using Call = std::function<std::string(SLElemData&)>;

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

std::string ParentOf(SLElemData& element) {
  SLElemData parent = Element(L"old", L"kept", SL_NO_URI);
  const int code = GetParentElement(element, parent);
  return std::to_string(code) + ' ' + Taken(parent);
}

std::string Release(SLElemData& element) { return std::to_string(ReleaseObj(element)); }

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

// What the parent record of an identification is.
enum class Parent { kNone, kSameContext, kOtherProcess, kOtherScheme, kInvalid };

Call Identity(Parent kind, bool numberWanted) {
  return [=](SLElemData& element) {
    SLElemData parent = Element(L"elsewhere", L"up");
    if (kind == Parent::kOtherProcess) parent.processId = 78;
    if (kind == Parent::kOtherScheme) parent.uriScheme = SL_HTTP_URI;
    if (kind == Parent::kInvalid) parent.sourceUri.Empty();
    wchar_t kept[] = L"kept";
    wchar_t* texts[] = {kept, kept, kept};
    int number = 9;
    const int code = GetIdInfo(kind == Parent::kNone ? nullptr : &parent, element, &texts[0],
                               &texts[1], &texts[2], numberWanted ? &number : nullptr);
    std::string result = std::to_string(code);
    for (wchar_t* text : texts) {
      result += ' ' + Narrow(text);
      if (text != kept) ::SysFreeString(text);
    }
    Forget(parent);
    return result + ' ' + std::to_string(number);
  };
}

// The code of a call that refills records, or the exception that passes; then each record's id.
template <class Fill>
std::string Refilled(const SLElemData& element, Fill fill) {
  Records records(1);
  records[0].objectId = ::SysAllocString(L"kept");  // of no scheme: released without a request
  std::string result;
  try {
    result = std::to_string(fill(records));
  } catch (const std::length_error&) {
    result = "length_error";
  } catch (const std::bad_alloc&) {
    result = "bad_alloc";
  }
  for (SLElemData& record : records) {
    const RECT& rect = record.rect;
    result += ' ' + Narrow(record.objectId);
    if (rect.right != 0) {
      for (LONG side : {rect.left, rect.top, rect.right, rect.bottom}) {
        result += ',' + std::to_string(side);
      }
    }
    if (record.uriScheme == SL_NO_URI) continue;
    EXPECT_EQ(record.hwnd, element.hwnd);
    EXPECT_EQ(record.uriScheme, element.uriScheme);
    EXPECT_EQ(record.processId, element.processId);
    EXPECT_STREQ(record.sourceUri, element.sourceUri);
    Forget(record);
  }
  return result;
}

std::string Chain(SLElemData& element) {
  return Refilled(element,
                  [&](Records& chain) { return GetDefaultSelectorHierarchy(element, chain); });
}

std::string Ancestry(SLElemData& element) {
  Numbers numbers = {4};
  std::string result = Refilled(
      element, [&](Records& ancestors) { return GetAncestryInfo(element, ancestors, numbers); });
  for (long number : numbers) result += " /" + std::to_string(number);
  return result;
}

Call Collection(std::vector<const wchar_t*> searches, int option1, bool option2) {
  return [=](SLElemData& element) {
    const auto search = [&](int index) { return const_cast<wchar_t*>(searches[index]); };
    return Refilled(element, [&](Records& found) {
      return FindCollection(element, search(0), search(1), search(2), option1, option2, found);
    });
  };
}

Call Click(int first, int second) {
  return [=](SLElemData& element) { return std::to_string(ClickElem(element, first, second)); };
}

Call Set(const wchar_t* text) {
  return [=](SLElemData& element) { return std::to_string(SetValue(element, text)); };
}

std::string Focus(SLElemData& element) { return std::to_string(SetFocus(element)); }

Call Check(int check) {
  return [=](SLElemData& element) { return std::to_string(CheckElem(element, check)); };
}

Call Select(const wchar_t* item) {
  return [=](SLElemData& element) { return std::to_string(SelectItem(element, item)); };
}

TEST(Element, SendsItsRequestAndReadsItsAnswer) {
  const std::wstring address = Address(L"calls");
  const std::string uri = Narrow(address.c_str());
  const std::string kEnd = "ERROR Archive failure: 'End of archive reached'";
  const std::string kNumber = "ERROR Archive failure: 'number expected'";
  const std::string kString = "ERROR Archive failure: 'string expected'";
  const std::string kContext = "ERROR Objects not in the same context";
  const std::string rectangle = "[2,77,\"id\"]", id = ",77,\"id\"";
  const std::string point = "[1,77,\"id\",3,-4,5]", origin = "[1,77,\"id\",0,0,0]";
  // No answer: the broker must not be asked.
  const struct {
    Call call;
    std::string answer, request, result, error;
  } kCases[] = {
      {RectangleOf, "[0,1,-2,3,2147483647]", rectangle, "0 1 -2 3 2147483647", ""},
      {RectangleOf, "[0,5,6]", rectangle, "-12 5 6 9 9", kEnd},
      {RectangleOf, "[0,5,6.0,7,8]", rectangle, "-12 5 9 9 9", kNumber},
      {RectangleOf, "[-8,1,2,3,4]", rectangle, "-8 9 9 9 9", kFailed + "-8"},
      {RectangleOf, "[100]", rectangle, "100 9 9 9 9", kFailed + "100"},
      {RectangleOf, "[-2147483648]", rectangle, "-2147483648 9 9 9 9", kFailed + "-2147483648"},
      {RectangleOf, "[]", rectangle, "-12 9 9 9 9", kEnd},
      {RectangleOf, "['0',1]", rectangle, "-12 9 9 9 9", kNumber},
      {RectangleOf, "{}", rectangle, "-12 9 9 9 9", "ERROR Archive failure: 'json array expected'"},
      {RectangleOf, "[0,", rectangle, "-12 9 9 9 9",
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
      {ParentOf, "[0,'up']", "[6" + id + "]", "0 77 4 " + uri + " up", ""},
      {ParentOf, "[0,'']", "[6" + id + "]", "0 " + kKept, ""},
      {ParentOf, "[0,5]", "[6" + id + "]", "-12 " + kKept, kString},
      {Release, "[0,true]", "[3" + id + "]", "0", ""},
      {Release, "[0,false]", "[3" + id + "]", "-3", "ERROR Release failed"},
      {Release, "[0,1]", "[3" + id + "]", "-12", "ERROR Archive failure: 'boolean expected'"},
      {Point, "[0,'new']", point, "0 77 4 " + uri + " new", ""},
      {Point, "[0,'']", point, "0 77 4 " + uri + " ", ""},
      {Point, "[0]", point, "-12 " + kKept, kEnd},
      {Point, "[0,7]", point, "-12 " + kKept, kString},
      {Point, "[-8]", point, "-8 " + kKept, kFailed + "-8"},
      {Identity(Parent::kNone, true), "[0,'a','','c\\u00e9',-7]", "[7" + id + ",\"\",1]",
       "0 a  c\u00e9 -7", ""},
      {Identity(Parent::kSameContext, false), "[0,'a','b','c',5]", "[7" + id + ",\"up\",0]",
       "0 a b c 9", ""},
      {Identity(Parent::kNone, false), "[0,'a','b','c']", "[7" + id + ",\"\",0]",
       "-12 kept kept kept 9", kEnd},
      {Identity(Parent::kOtherProcess, true), "", "", "-13 kept kept kept 9", kContext},
      {Identity(Parent::kOtherScheme, true), "", "", "-13 kept kept kept 9", kContext},
      {Identity(Parent::kInvalid, true), "", "", "-13 kept kept kept 9",
       "ERROR Invalid pParentObj"},
      {Chain, "[0,2,'r','id']", "[8" + id + "]", "0 r id", ""},
      {Chain, "[0,0]", "[8" + id + "]", "0", ""},
      {Chain, "[0,3,'r']", "[8" + id + "]", "-12 r (null) (null)", kEnd},
      {Chain, "[0,'3']", "[8" + id + "]", "-12 kept", kNumber},
      {Chain, "[0,-1]", "[8" + id + "]", "length_error kept", ""},
      {Chain, "[0,2147483647]", "[8" + id + "]", "bad_alloc kept", ""},
      {Chain, "[-8,0]", "[8" + id + "]", "-8 kept", kFailed + "-8"},
      {Ancestry, "[0,1,'r',2,5,-6]", "[18" + id + "]", "0 r /4 /5 /-6", ""},
      {Ancestry, "[0,1,'r',2,5]", "[18" + id + "]", "-12 r /4 /5",
       "ERROR GetAncestryInfo: Archive failure: 'End of archive reached'"},
      {Ancestry, "[9]", "[18" + id + "]", "9 kept /4",
       "ERROR GetAncestryInfo: SendMessageToBroker failed with 9"},
      {Collection({L"a", nullptr, L"\u00e9"}, -3, true), "[0,2,'x',1,2,3,4,'',-1,0,5,0]",
       "[9" + id + ",\"a\",\"\",\"\u00e9\",-3,true]", "0 x,1,2,3,4 ,-1,0,5,0", ""},
      {Collection({nullptr, nullptr, nullptr}, 0, false), "[0,2,'x',1,2,3,4,'y',1,2,3]",
       "[9" + id + ",\"\",\"\",\"\",0,false]", "-12 x,1,2,3,4 (null)", kEnd},
      {Click(5, 7), "[0]", "[11" + id + "]", "0", ""},
      {Click(0, 0), "[0,'more']", "[11" + id + "]", "0", ""},
      {Set(L"\u00e9<"), "[0]", "[12" + id + ",\"\u00e9\\u003C\"]", "0", ""},
      {Set(L""), "[0]", "[12" + id + ",\"\"]", "0", ""},
      {Set(nullptr), "", "", "-5", "ERROR Invalid text"},
      {Focus, "[-8]", "[13" + id + "]", "-8", kFailed + "-8"},
      {Focus, "['0']", "[13" + id + "]", "-12", kNumber},
      {Check(-1), "[0]", "[15" + id + ",true]", "0", ""},
      {Check(0), "[0]", "[15" + id + ",false]", "0", ""},
      {Select(L"x"), "[102]", "[17" + id + ",\"x\"]", "102", kFailed + "102"},
      {Select(nullptr), "", "", "-12", "ERROR Archive failure: 'Invald string'"},
      {PointIntoItself, "[0,'new']", origin, "0 new", ""},
      {PointIntoZeroed, "[0,'new']", origin, "0 77 4 " + uri + " new", ""},
  };
  std::vector<std::string> answers;
  for (const auto& row : kCases) {
    if (!row.answer.empty()) answers.push_back(row.answer);
  }
  answers.push_back("[0,true]");
  ScriptedBroker broker(SL_TAILORED_URI, address, answers);
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
  // The code and the outputs; the lines of the call and of the records that it drops.
  const struct {
    Call call;
    std::string result;
    std::size_t lines;
  } kCalls[] = {{RectangleOf, "-13 9 9 9 9", 1},
                {Attribute(L""), "-13 kept", 1},
                {Attribute(L"a", false), "-13 kept", 1},
                {ItemsOf(1), "-13 first 1", 1},
                {Value, "-13 kept", 1},
                {ParentOf, "-13 77 0 old kept", 2},
                {Identity(Parent::kInvalid, true), "-13 kept kept kept 9", 2},
                {Chain, "-13 kept", 2},
                {Ancestry, "-13 kept /4", 2},
                {Click(0, 0), "-13", 1},
                {Set(nullptr), "-13", 1},
                {Focus, "-13", 1},
                {Check(1), "-13", 1},
                {Select(nullptr), "-13", 1},
                {Release, "-13", 1}};
  for (const auto& breakIt : kBreaks) {
    SLElemData element = Element(L"http://nobody", L"id");
    breakIt(element);
    for (const auto& row : kCalls) {
      SCOPED_TRACE(std::to_string(&breakIt - kBreaks) + " " + std::to_string(&row - kCalls));
      LogCapture::Reset();
      EXPECT_EQ(row.call(element), row.result);
      EXPECT_EQ(LogCapture::Messages(), Texts(row.lines, "ERROR Invalid SL object"));
    }
    EXPECT_NE(LogCapture::Lines().at(0).find(") ElementLookup.cpp("), std::string::npos);
  }
  SLElemData windowless = Element(L"http://nobody", L"id");
  windowless.hwnd = nullptr;
  LogCapture::Reset();
  EXPECT_EQ(Collection({nullptr, nullptr, nullptr}, 0, false)(windowless), "-13 kept");
  EXPECT_EQ(Errors(), Texts());
}

TEST(Element, IsReleasedOnceHoweverOftenItWasMoved) {
  const std::wstring address = Address(L"moved");
  ScriptedBroker broker(SL_TAILORED_URI, address, std::vector<std::string>(4, "[0,true]"));
  {
    Records records;
    for (const wchar_t* id : {L"a", L"b", L"c"}) AppendGrowing(records, Element(address, id));
    SLElemData moved(std::move(records[1]));
    records[1] = std::move(moved);
    records[2] = Element(address, L"d");
  }
  for (const char* id : {"c", "a", "b", "d"}) {
    EXPECT_EQ(broker.ReadLine(), "[3,77,\"" + std::string(id) + "\"]");
  }
  EXPECT_EQ(broker.Wait(), 0u) << "no further request keeps it";
}

// The records of the call before go when the next answer's count is known; so do those that a short
// answer names, at the latest with the vector.
TEST(Element, OfAVectorIsReleasedWhenTheVectorIsRefilledOrGone) {
  const std::wstring address = Address(L"refilled");
  ScriptedBroker broker(SL_TAILORED_URI, address,
                        {"[0,2,'a','b',1,7]", "[0,2,'c','d']", "[0,true]", "[-8]",
                         "[0,3,'e',1,2,3,4,'f']", "[0,false]", "[0,true]", "[0,true]", "[0,true]"});
  {
    Records records;
    Numbers numbers;
    SLElemData element = Element(address, L"id");
    EXPECT_EQ(GetAncestryInfo(element, records, numbers), 0);
    EXPECT_EQ(GetDefaultSelectorHierarchy(element, records), 0);
    EXPECT_EQ(records.capacity(), 2u);
    LogCapture::Reset();
    EXPECT_EQ(FindCollection(element, nullptr, nullptr, nullptr, 0, false, records), -12);
    EXPECT_THAT(
        LogCapture::Messages(),
        ElementsAre("ERROR Release failed", "ERROR Archive failure: 'End of archive reached'"));
    LogCapture::Reset();
  }
  EXPECT_EQ(LogCapture::Messages(), Texts(2, "ERROR Invalid SL object"));
  const std::string find = "[9,77,\"id\",\"\",\"\",\"\",0,false]";
  for (const std::string& request : {std::string("[18,77,\"id\"]"), std::string("[8,77,\"id\"]"),
                                     std::string("a"), std::string("b"), find, std::string("c"),
                                     std::string("d"), std::string("id"), std::string("e")}) {
    EXPECT_EQ(broker.ReadLine(), request.front() == '[' ? request : "[3,77,\"" + request + "\"]");
  }
  EXPECT_EQ(broker.Wait(), 0u);
}

}  // namespace
