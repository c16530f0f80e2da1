// Tests every element export: its request, its result for each answer, and the release of records.
#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <regex>
#include <stdexcept>

#include "internal/VectorGrowth.h"
#include "support/Elements.h"

namespace {

using namespace TesselSilverlight;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

const LogCapture capture;

// A call of the table kObjectCalls below. Returns the result code and the outputs as text.
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

// How the parent record of GetIdInfo differs from the element.
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

// Calls `fill`, which fills a vector of records again. Returns the code of `fill`, or the exception
// that it throws, followed by the id of each record.
template <class Fill>
std::string Refilled(const SLElemData& element, Fill fill) {
  Records records(1);
  // This record has no scheme, so its release sends no request.
  records[0].objectId = ::SysAllocString(L"kept");
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

// For calls that return only a code.
Call Code(int (*call)(SLElemData&)) {
  return [=](SLElemData& element) { return std::to_string(call(element)); };
}

const std::map<std::string, Call> kObjectCalls = {
    {"rectangle", RectangleOf},
    {"attribute N\u00e4<\"", Attribute(L"N\u00e4<\"")},
    {"attribute a", Attribute(L"a")},
    {"attribute a to nowhere", Attribute(L"a", false)},
    {"attribute without a name", Attribute(nullptr)},
    {"attribute of an empty name", Attribute(L"", false)},
    {"items 7", ItemsOf(7)},
    {"items 0", ItemsOf(0)},
    {"value", Value},
    {"parent", ParentOf},
    {"release", Code(&ReleaseObj)},
    {"identity", Identity(Parent::kNone, true)},
    {"identity without number", Identity(Parent::kNone, false)},
    {"identity below one of the same context", Identity(Parent::kSameContext, false)},
    {"identity below another process", Identity(Parent::kOtherProcess, true)},
    {"identity below another scheme", Identity(Parent::kOtherScheme, true)},
    {"identity below no element", Identity(Parent::kInvalid, true)},
    {"selector", Chain},
    {"ancestry", Ancestry},
    {"click", Code([](SLElemData& e) { return ClickElem(e, 5, 7); })},
    {"set \u00e9<", Code([](SLElemData& e) { return SetValue(e, L"\u00e9<"); })},
    {"set empty", Code([](SLElemData& e) { return SetValue(e, L""); })},
    {"set nothing", Code([](SLElemData& e) { return SetValue(e, nullptr); })},
    {"focus", Code([](SLElemData& e) { return SetFocus(e); })},
    {"check -1", Code([](SLElemData& e) { return CheckElem(e, -1); })},
    {"check 0", Code([](SLElemData& e) { return CheckElem(e, 0); })},
    {"select x", Code([](SLElemData& e) { return SelectItem(e, L"x"); })},
    {"select nothing", Code([](SLElemData& e) { return SelectItem(e, nullptr); })},
};
const std::map<std::string, Call> kWindowCalls = {
    {"point 3,-4", Point},
    {"find", Collection({nullptr, nullptr, nullptr}, 0, false)},
    {"find a,,\u00e9", Collection({L"a", nullptr, L"\u00e9"}, -3, true)},
};

// Each line of elements.txt holds a call, the broker's answer, the expected request, the expected
// result and the expected error line. "-" means nothing, URI means the content's address.
TEST(Element, SendsItsRequestAndReadsItsAnswer) {
  const std::wstring address = Address(L"calls");
  const std::string file = FileText(TESSEL_TRANSCRIPTS "/elements.txt");
  const std::regex uri("URI");
  const Texts lines = Split(std::regex_replace(file, uri, Narrow(address.c_str())), "\n");
  ASSERT_EQ(lines.size(), 51u);
  std::vector<std::string> answers;
  for (const std::string& line : lines) {
    if (const std::string answer = Split(line, " | ").at(1); answer != "-")
      answers.push_back(answer);
  }
  answers.push_back("[0,true]");
  ScriptedBroker broker(SL_TAILORED_URI, address, answers);
  {
    SLElemData element = Element(address, L"id");
    for (const std::string& line : lines) {
      SCOPED_TRACE(line);
      const Texts cells = Split(line, " | ");
      const auto& calls = kWindowCalls.contains(cells.at(0)) ? kWindowCalls : kObjectCalls;
      LogCapture::Reset();
      EXPECT_EQ(calls.at(cells[0])(element), cells.at(3));
      if (cells[1] != "-") {
        EXPECT_EQ(broker.ReadLine(), WithQuotes(cells[2]));
      }
      EXPECT_EQ(Errors(), cells.at(4) == "-" ? Texts() : Texts{"ERROR " + cells[4]});
      EXPECT_EQ(LogCapture::Count("SL_NO_URI scheme"), 0u);
    }
  }
  EXPECT_EQ(broker.ReadLine(), "[3,77,\"id\"]") << "the destructor releases the element";
  EXPECT_EQ(broker.Wait(), 0u);
}

TEST(Element, IsRefusedUnlessAllFiveFieldsAreValid) {
  const std::function<void(SLElemData&)> kBreaks[] = {
      [](SLElemData& e) { e.uriScheme = SL_NO_URI; },
      [](SLElemData& e) { e.hwnd = nullptr; },
      [](SLElemData& e) { e.processId = 0; },
      [](SLElemData& e) { ::SysReAllocString(&e.objectId, L""); },
      [](SLElemData& e) { e.sourceUri = L""; },
      [](SLElemData& e) { Forget(e); },
  };
  for (const auto& breakIt : kBreaks) {
    SLElemData element = Element(L"http://nobody", L"id");
    breakIt(element);
    for (const auto& [name, call] : kObjectCalls) {
      SCOPED_TRACE(std::to_string(&breakIt - kBreaks) + " " + name);
      LogCapture::Reset();
      EXPECT_EQ(call(element).substr(0, 3), "-13");
      EXPECT_THAT(LogCapture::Messages(), Each("ERROR Invalid SL object"));
    }
    LogCapture::Reset();
    EXPECT_EQ(ReleaseObj(element), -13);
    EXPECT_THAT(LogCapture::Lines(), ElementsAre(HasSubstr(") ElementLookup.cpp(")));
  }
  SLElemData windowless = Element(L"http://nobody", L"id");
  windowless.hwnd = nullptr;
  LogCapture::Reset();
  EXPECT_EQ(kWindowCalls.at("find")(windowless), "-13 kept");
  EXPECT_EQ(Errors(), Texts());
}

TEST(Element, IsReleasedOnceEvenIfItWasMoved) {
  static_assert(!std::is_copy_constructible_v<SLElemData> &&
                !std::is_copy_assignable_v<SLElemData>);
  const std::wstring address = Address(L"moved");
  ScriptedBroker broker(SL_TAILORED_URI, address, std::vector<std::string>(4, "[0,true]"));
  {
    Records records;
    for (const wchar_t* id : {L"a", L"b", L"c"}) AppendGrowing(records, Element(address, id));
    records[1].rect = {1, 2, 3, 4};
    SLElemData moved(std::move(records[1]));
    EXPECT_TRUE(records[1].objectId == nullptr && records[1].sourceUri.IsEmpty());
    records[1] = std::move(moved);
    EXPECT_STREQ(records[1].sourceUri, address.c_str());
    EXPECT_EQ(SidesOf(records[1].rect), " 1 2 3 4");
    records[2] = Element(address, L"d");
    // Some clients make their records by filling memory with zeros.
    alignas(SLElemData) unsigned char zeroed[sizeof(SLElemData)] = {};
    auto& filled = reinterpret_cast<SLElemData&>(zeroed);
    filled.sourceUri = records[1].sourceUri;
    filled.~SLElemData();
  }
  for (const char* id : {"c", "a", "b", "d"}) {
    EXPECT_EQ(broker.ReadLine(), "[3,77,\"" + std::string(id) + "\"]");
  }
  EXPECT_EQ(broker.Wait(), 0u) << "the broker ends after the last expected request";
}

// When a call has read the new count, it releases the records of the previous call. Records of an
// answer that ends too early are released when the vector is destroyed.
TEST(Element, IsReleasedWhenItsVectorIsRefilledOrDestroyed) {
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
