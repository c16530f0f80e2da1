// Every element export: its request, what it makes of answers, what becomes of records.
#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

#include "VectorGrowth.h"
#include "support/Elements.h"

namespace {

using namespace TesselSilverlight;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

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
    result += ' ' + Narrow(record.objectId);
    if (record.rect.right != 0) result += SidesOf(record.rect);
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

// For calls that have nothing but a code to show.
Call Code(int (*call)(SLElemData&)) {
  return [=](SLElemData& element) { return std::to_string(call(element)); };
}

const Call kClick = Code([](SLElemData& element) { return ClickElem(element, 5, 7); });
const Call kSetNothing = Code([](SLElemData& element) { return SetValue(element, nullptr); });
const Call kSetFocus = Code([](SLElemData& element) { return SetFocus(element); });
const Call kUncheck = Code([](SLElemData& element) { return CheckElem(element, 0); });
const Call kSelectNothing = Code([](SLElemData& element) { return SelectItem(element, nullptr); });
const Call kRelease = Code(&ReleaseObj);

TEST(Element, SendsItsRequestAndReadsItsAnswer) {
  const std::wstring address = Address(L"calls");
  const std::string uri = Narrow(address.c_str());
  const std::string kEnd = "ERROR Archive failure: 'End of archive reached'";
  const std::string kNumber = "ERROR Archive failure: 'number expected'";
  const std::string kString = "ERROR Archive failure: 'string expected'";
  const std::string kContext = "ERROR Objects not in the same context";
  // In requests and answers ' stands for ". No answer: the broker must not be asked.
  const struct {
    Call call;
    std::string answer, request, result, error;
  } kCases[] = {
      {RectangleOf, "[0,1,-2,3,2147483647]", "[2,77,'id']", "0 1 -2 3 2147483647", ""},
      {RectangleOf, "[0,5,6]", "[2,77,'id']", "-12 5 6 9 9", kEnd},
      {RectangleOf, "[-8,1,2,3,4]", "[2,77,'id']", "-8 9 9 9 9", kFailed + "-8"},
      {RectangleOf, "[100]", "[2,77,'id']", "100 9 9 9 9", kFailed + "100"},
      {RectangleOf, "['0',1]", "[2,77,'id']", "-12 9 9 9 9", kNumber},
      {RectangleOf, "[0,", "[2,77,'id']", "-12 9 9 9 9",
       "ERROR Archive failure: 'Cannot parse json_array'"},
      {Attribute(L"N\u00e4<\""), "[0,'t\\u00e9xt']", "[10,77,'id','N\u00e4\\u003C\\'']",
       "0 t\u00e9xt", ""},
      {Attribute(L"a"), "[0,'']", "[10,77,'id','a']", "0 ", ""},
      {Attribute(L"a"), "[0,5]", "[10,77,'id','a']", "-12 kept", kString},
      {Attribute(nullptr), "", "", "-5 kept", "ERROR Invalid attribute name"},
      {Attribute(L"", false), "", "", "-5 kept", "ERROR Invalid attribute name"},
      {Attribute(L"a", false), "", "", "-5 kept", "ERROR Invalid out param"},
      {ItemsOf(7), "[0,2,'x','y']", "[16,77,'id',true]", "0 first x y 3", ""},
      {ItemsOf(0), "[0,-1]", "[16,77,'id',false]", "0 first 1", ""},
      {ItemsOf(1), "[0,3,'x']", "[16,77,'id',true]", "-12 first x 2", kEnd},
      {Value, "", "", std::to_string(E_NOTIMPL) + " kept", ""},
      {ParentOf, "[0,'up']", "[6,77,'id']", "0 77 4 " + uri + " up", ""},
      {ParentOf, "[0,'']", "[6,77,'id']", "0 " + kKept, ""},
      {ParentOf, "[0,5]", "[6,77,'id']", "-12 " + kKept, kString},
      {kRelease, "[0,true]", "[3,77,'id']", "0", ""},
      {kRelease, "[0,false]", "[3,77,'id']", "-3", "ERROR Release failed"},
      {kRelease, "[0,1]", "[3,77,'id']", "-12", "ERROR Archive failure: 'boolean expected'"},
      {Point, "[0,'new']", "[1,77,'id',3,-4,5]", "0 77 4 " + uri + " new", ""},
      {Point, "[0,'']", "[1,77,'id',3,-4,5]", "0 77 4 " + uri + " ", ""},
      {Point, "[0,7]", "[1,77,'id',3,-4,5]", "-12 " + kKept, kString},
      {Identity(Parent::kNone, true), "[0,'a','','c\\u00e9',-7]", "[7,77,'id','',1]",
       "0 a  c\u00e9 -7", ""},
      {Identity(Parent::kSameContext, false), "[0,'a','b','c',5]", "[7,77,'id','up',0]",
       "0 a b c 9", ""},
      {Identity(Parent::kNone, false), "[0,'a','b','c']", "[7,77,'id','',0]",
       "-12 kept kept kept 9", kEnd},
      {Identity(Parent::kOtherProcess, true), "", "", "-13 kept kept kept 9", kContext},
      {Identity(Parent::kOtherScheme, true), "", "", "-13 kept kept kept 9", kContext},
      {Identity(Parent::kInvalid, true), "", "", "-13 kept kept kept 9",
       "ERROR Invalid pParentObj"},
      {Chain, "[0,2,'r','id']", "[8,77,'id']", "0 r id", ""},
      {Chain, "[0,0]", "[8,77,'id']", "0", ""},
      {Chain, "[0,3,'r']", "[8,77,'id']", "-12 r (null) (null)", kEnd},
      {Chain, "[0,-1]", "[8,77,'id']", "length_error kept", ""},
      {Chain, "[0,2147483647]", "[8,77,'id']", "bad_alloc kept", ""},
      {Ancestry, "[0,1,'r',2,5,-6]", "[18,77,'id']", "0 r /4 /5 /-6", ""},
      {Ancestry, "[0,1,'r',2,5]", "[18,77,'id']", "-12 r /4 /5",
       "ERROR GetAncestryInfo: Archive failure: 'End of archive reached'"},
      {Ancestry, "[9]", "[18,77,'id']", "9 kept /4",
       "ERROR GetAncestryInfo: SendMessageToBroker failed with 9"},
      {Collection({L"a", nullptr, L"\u00e9"}, -3, true), "[0,2,'x',1,2,3,4,'',-1,0,5,0]",
       "[9,77,'id','a','','\u00e9',-3,true]", "0 x 1 2 3 4  -1 0 5 0", ""},
      {Collection({nullptr, nullptr, nullptr}, 0, false), "[0,2,'x',1,2,3,4,'y',1,2,3]",
       "[9,77,'id','','','',0,false]", "-12 x 1 2 3 4 (null)", kEnd},
      {kClick, "[0]", "[11,77,'id']", "0", ""},
      {Code([](SLElemData& e) { return SetValue(e, L"\u00e9<"); }), "[0]",
       "[12,77,'id','\u00e9\\u003C']", "0", ""},
      {Code([](SLElemData& e) { return SetValue(e, L""); }), "[0]", "[12,77,'id','']", "0", ""},
      {kSetNothing, "", "", "-5", "ERROR Invalid text"},
      {kSetFocus, "[-8]", "[13,77,'id']", "-8", kFailed + "-8"},
      {Code([](SLElemData& e) { return CheckElem(e, -1); }), "[0]", "[15,77,'id',true]", "0", ""},
      {kUncheck, "[0]", "[15,77,'id',false]", "0", ""},
      {Code([](SLElemData& e) { return SelectItem(e, L"x"); }), "[102]", "[17,77,'id','x']", "102",
       kFailed + "102"},
      {kSelectNothing, "", "", "-12", "ERROR Archive failure: 'Invald string'"},
      {PointIntoZeroed, "[0,'new']", "[1,77,'id',0,0,0]", "0 77 4 " + uri + " new", ""},
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
        EXPECT_EQ(broker.ReadLine(), WithQuotes(row.request));
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
  const Call kCalls[] = {RectangleOf,
                         Attribute(L""),
                         Attribute(L"a", false),
                         ItemsOf(1),
                         Value,
                         ParentOf,
                         Identity(Parent::kInvalid, true),
                         Chain,
                         Ancestry,
                         kClick,
                         kSetNothing,
                         kSetFocus,
                         kUncheck,
                         kSelectNothing,
                         kRelease};
  for (const auto& breakIt : kBreaks) {
    SLElemData element = Element(L"http://nobody", L"id");
    breakIt(element);
    for (const Call& call : kCalls) {
      SCOPED_TRACE(std::to_string(&breakIt - kBreaks) + " " + std::to_string(&call - kCalls));
      LogCapture::Reset();
      EXPECT_EQ(call(element).substr(0, 3), "-13");
      EXPECT_THAT(LogCapture::Messages(), Each("ERROR Invalid SL object"));
    }
    EXPECT_THAT(LogCapture::Lines(), ElementsAre(HasSubstr(") ElementLookup.cpp(")));
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
  for (const char* request :
       {"[18,77,'id']", "[8,77,'id']", "[3,77,'a']", "[3,77,'b']", "[9,77,'id','','','',0,false]",
        "[3,77,'c']", "[3,77,'d']", "[3,77,'id']", "[3,77,'e']"}) {
    EXPECT_EQ(broker.ReadLine(), WithQuotes(request));
  }
  EXPECT_EQ(broker.Wait(), 0u);
}

}  // namespace
