// Tests every element export: its request, its result for each answer, and the release of records.
#include <gmock/gmock.h>

#include <functional>
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

CComBSTR Argument(const std::string& text) {
  return text == "nothing" ? CComBSTR() : CComBSTR(tessel::Wide(text).c_str());
}

wchar_t kept[] = L"kept";

// Returns a blank and the text. Frees the text, unless it is `kept`: the tests store this array in
// an output before a call, and some calls do not change the output.
std::string Taken(wchar_t* text) {
  const std::string taken = ' ' + Narrow(text);
  if (text != kept) ::SysFreeString(text);
  return taken;
}

std::string Attribute(SLElemData& element, const std::string& name) {
  wchar_t* value = kept;
  const int code = GetAttribute(element, Argument(name), name == "to nowhere" ? nullptr : &value);
  return std::to_string(code) + Taken(value);
}

std::string ItemsOf(SLElemData& element, int flag) {
  Items items = {L"first"};
  std::string text = std::to_string(GetItems(element, flag, items));
  for (const CComBSTR& item : items) text += ' ' + Narrow(item);
  return text + ' ' + std::to_string(items.capacity());
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

// Calls GetIdInfo. `how` contains words. "below" passes a parent record. "process", "scheme" and
// "no element" each make one field of that record wrong. "without number" passes null for the
// output parameter that receives the number.
std::string Identity(SLElemData& element, const std::string& how) {
  const auto says = [&](const char* words) { return how.find(words) != how.npos; };
  SLElemData parent = Element(L"elsewhere", L"up");
  if (says("process")) parent.processId = 78;
  if (says("scheme")) parent.uriScheme = SL_HTTP_URI;
  if (says("no element")) parent.sourceUri.Empty();
  wchar_t* texts[] = {kept, kept, kept};
  int number = 9;
  const int code = GetIdInfo(says("below") ? &parent : nullptr, element, &texts[0], &texts[1],
                             &texts[2], says("without number") ? nullptr : &number);
  Forget(parent);
  std::string result = std::to_string(code);
  for (wchar_t* text : texts) result += Taken(text);
  return result + ' ' + std::to_string(number);
}

// Calls `fill` with a vector that already contains a record. Returns the code of `fill`, or the
// exception that it throws. The id of each record follows, and its rectangle if it is set.
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

std::string Ancestry(SLElemData& element) {
  Numbers numbers = {4};
  std::string result = Refilled(
      element, [&](Records& ancestors) { return GetAncestryInfo(element, ancestors, numbers); });
  for (long number : numbers) result += " /" + std::to_string(number);
  return result;
}

std::string Collection(SLElemData& element, const std::string& arguments) {
  const Texts list = Split(arguments, ",");
  return Refilled(element, [&](Records& found) {
    return FindCollection(element, Argument(list.at(0)), Argument(list.at(1)), Argument(list.at(2)),
                          std::stoi(list.at(3)), list.at(4) == "true", found);
  });
}

// Makes the call that the first word of `name` selects. The rest of `name` holds its arguments.
// Returns the result code and the outputs as text.
std::string ResultOf(SLElemData& element, const std::string& name) {
  const auto [verb, how] = Cut(name, " ");
  if (verb == "rectangle") return RectangleOf(element);
  if (verb == "attribute") return Attribute(element, how);
  if (verb == "items") return ItemsOf(element, std::stoi(how));
  if (verb == "value") return Value(element);
  if (verb == "parent") return ParentOf(element);
  if (verb == "point") return Point(element);
  if (verb == "identity") return Identity(element, how);
  if (verb == "selector")
    return Refilled(element,
                    [&](Records& chain) { return GetDefaultSelectorHierarchy(element, chain); });
  if (verb == "ancestry") return Ancestry(element);
  if (verb == "find") return Collection(element, how);
  if (verb == "release") return std::to_string(ReleaseObj(element));
  if (verb == "click") return std::to_string(ClickElem(element, 5, 7));
  if (verb == "set") return std::to_string(SetValue(element, Argument(how)));
  if (verb == "focus") return std::to_string(SetFocus(element));
  if (verb == "check") return std::to_string(CheckElem(element, std::stoi(how)));
  if (verb == "select") return std::to_string(SelectItem(element, Argument(how)));
  throw std::invalid_argument(name);
}

// Returns the lines of elements.txt. Each line holds a call, the broker's answer, the expected
// request, the expected result and the expected error line. "-" means nothing, URI means the
// content's address.
Texts TranscriptOf(const std::wstring& address) {
  const std::string file = FileText(TESSEL_TRANSCRIPTS "/elements.txt");
  EXPECT_NE(file, "");
  return Split(std::regex_replace(file, std::regex("URI"), Narrow(address.c_str())), "\n");
}

TEST(Element, SendsItsRequestAndReadsItsAnswer) {
  const std::wstring address = Address(L"calls");
  const Texts lines = TranscriptOf(address);
  Texts answers;
  for (const std::string& line : lines) {
    const std::string answer = Split(line, " | ").at(1);
    if (answer != "-") answers.push_back(answer);
  }
  answers.push_back("[0,true]");
  ScriptedBroker broker(SL_TAILORED_URI, address, answers);
  {
    SLElemData element = Element(address, L"id");
    for (const std::string& line : lines) {
      SCOPED_TRACE(line);
      const Texts cells = Split(line, " | ");
      LogCapture::Reset();
      EXPECT_EQ(ResultOf(element, cells[0]), cells.at(3));
      if (cells[1] != "-") {
        EXPECT_EQ(broker.ReadLine(), cells[2]);
      }
      EXPECT_EQ(Errors(), cells.at(4) == "-" ? Texts() : Texts{"ERROR " + cells[4]});
      EXPECT_EQ(LogCapture::Count("SL_NO_URI scheme"), 0u);
    }
  }
  EXPECT_EQ(broker.ReadLine(), "[3,77,'id']") << "the destructor releases the element";
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
    for (const std::string& line : TranscriptOf(L"URI")) {
      if (line.starts_with("point") || line.starts_with("find")) continue;
      SCOPED_TRACE(std::to_string(&breakIt - kBreaks) + " " + line);
      LogCapture::Reset();
      EXPECT_EQ(ResultOf(element, Cut(line, " | ").first).substr(0, 3), "-13");
      EXPECT_THAT(LogCapture::Messages(), Each("ERROR Invalid SL object"));
    }
    LogCapture::Reset();
    EXPECT_EQ(ReleaseObj(element), -13);
    EXPECT_THAT(LogCapture::Lines(), ElementsAre(HasSubstr(") ElementLookup.cpp(")));
  }
  SLElemData windowless = Element(L"http://nobody", L"id");
  windowless.hwnd = nullptr;
  LogCapture::Reset();
  EXPECT_EQ(ResultOf(windowless, "find nothing,nothing,nothing,0,false"), "-13 kept");
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
  EXPECT_EQ(broker.ReadToEnd(), "[3,77,'c']\n[3,77,'a']\n[3,77,'b']\n[3,77,'d']\n");
  EXPECT_EQ(broker.Wait(), 0u) << "the broker ends after the last expected request";
}

// A call that fills a vector releases the vector's old records as soon as it has read the number of
// new records. If the answer ends too early, the records read before stay in the vector, and are
// released when the vector is destroyed.
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
  EXPECT_EQ(broker.ReadToEnd(),
            "[18,77,'id']\n[8,77,'id']\n[3,77,'a']\n[3,77,'b']\n[9,77,'id','','','',0,false]\n"
            "[3,77,'c']\n[3,77,'d']\n[3,77,'id']\n[3,77,'e']\n");
  EXPECT_EQ(broker.Wait(), 0u);
}

}  // namespace
