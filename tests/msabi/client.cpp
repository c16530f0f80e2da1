// client WINDOW: every element function of the module against a broker that serves the sign-in
// form. It has no C++ runtime. What it checked is printed, a line each; the exit code tells how it
// ended.
#include "Interface.h"

namespace api = TesselSilverlight;

constexpr wchar_t kAddress[] = L"http://msabi.example/";

extern "C" void* memset(void* to, int value, unsigned long long size) {
  for (auto* at = static_cast<char*>(to); size > 0; --size) *at++ = static_cast<char>(value);
  return to;
}

namespace {

constinit int failures = 0;

void Report(bool ok, const char* text) {
  char line[1100];
  const int length = wsprintfA(line, "%s %s\r\n", ok ? "ok    " : "FAILED", text);
  DWORD written = 0;
  WriteFile(GetStdHandle(-11 /*output*/), line, length, &written, nullptr);
  failures += ok ? 0 : 1;
}

void Expect(const char* what, int actual, int expected) {
  char text[1024];
  wsprintfA(text, "%s: %d, expected %d", what, actual, expected);
  Report(actual == expected, text);
}

void Expect(const char* what, const wchar_t* actual, const wchar_t* expected) {
  if (actual == nullptr) actual = L"(null)";
  char text[1024];
  wsprintfA(text, "%s: %S, expected %S", what, actual, expected);
  Report(lstrcmpW(actual, expected) == 0, text);
}

void Expect(const char* what, const tagRECT& actual, const tagRECT& expected) {
  Expect(what, actual.left, expected.left);
  Expect(what, actual.top, expected.top);
  Expect(what, actual.right, expected.right);
  Expect(what, actual.bottom, expected.bottom);
}

// The client's texts are on a heap of their own, where only their manager frees them.
constinit TextManager ours;
constinit void* textHeap = nullptr;
constinit int buffers = 0, freedTexts = 0;

TextHeader* HeaderOf(wchar_t* text) { return reinterpret_cast<TextHeader*>(text) - 1; }
wchar_t* UnitsOf(TextHeader* header) { return reinterpret_cast<wchar_t*>(header + 1); }

wchar_t* Text(const wchar_t* from) {
  int length = 0;
  while (from[length] != 0) ++length;
  TextHeader* header = ours.Allocate(length, sizeof(wchar_t));
  header->length = length;
  for (int i = 0; i <= length; ++i) UnitsOf(header)[i] = from[i];
  return UnitsOf(header);
}

void LetGo(wchar_t* text) {
  TextHeader* header = HeaderOf(text);
  if (--header->references <= 0) header->manager->Free(header);
}
void LetGo(SLElemData& element) {
  Expect("released", api::ReleaseObj(element), element.objectId == nullptr ? -13 : 0);
  SysFreeString(element.objectId);
  LetGo(element.sourceUri);
}
void LetGo(ATL::CComBSTR& text) { SysFreeString(text.text); }
void LetGo(long) {}

template <class T>
void LetGo(Vector<T>& vector) {
  for (T* element = vector.first; element != vector.last; ++element) LetGo(*element);
  Expect("the vector's storage is the process heap's", HeapFree(GetProcessHeap(), 0, vector.first),
         1);
}

template <class... All>
void LetGoAll(All&... all) {
  (LetGo(all), ...);
}

// A vector that is full: what the module appends needs storage of its own.
template <class T>
Vector<T> Filled(T element) {
  auto* storage = static_cast<T*>(HeapAlloc(GetProcessHeap(), 0, sizeof(T)));
  *storage = element;
  return {storage, storage + 1, storage + 1};
}

HWND__* WindowOfCommandLine() {
  unsigned long long window = 0;
  const wchar_t* at = GetCommandLineW();
  while (*at != 0) ++at;
  while (*--at != L'x') {
  }
  while (*++at != 0) window = window * 16 + (*at <= L'9' ? *at - L'0' : (*at | 32) - L'a' + 10);
  return reinterpret_cast<HWND__*>(window);
}

constinit HWND__* window = nullptr;

SLElemData Record(const wchar_t* address) {
  return {0, window, nullptr,
          0, {},     address == nullptr ? UnitsOf(ours.GetNilString()) : Text(address)};
}

SLElemData ElementAt(tagPOINT point, const wchar_t* id) {
  SLElemData from = Record(kAddress), found = Record(nullptr);
  Expect("GetElemFromPoint", api::GetElemFromPoint(from, point, 0 /*option*/, found), 0);
  Expect("the element", found.objectId, id);
  Expect("its scheme", found.uriScheme, 4);
  Expect("the search's scheme", from.uriScheme, 4);
  Expect("one buffer for both addresses", HeaderOf(found.sourceUri)->references, 2);
  LetGo(from);
  return found;
}

void ExpectAttribute(const SLElemData& element, const wchar_t* name, const wchar_t* expected) {
  wchar_t* value = nullptr;
  Expect("GetAttribute", api::GetAttribute(element, const_cast<wchar_t*>(name), &value), 0);
  Expect("the attribute", value, expected);
  SysFreeString(value);
}

// Each way in which the module replaces the text of a record.
void CheckTexts() {
  SLElemData from = Record(kAddress), found = Record(L"another address");
  const int before = freedTexts;
  Expect("GetElemFromPoint", api::GetElemFromPoint(from, {150, 130}, 0, found), 0);
  Expect("the replaced text went to its manager", freedTexts - before, 1);
  Expect("the text is shared", found.sourceUri == from.sourceUri, true);
  SLElemData copy = Record(nullptr);
  HeaderOf(from.sourceUri)->references = -1;
  Expect("GetElemFromPoint, locked", api::GetElemFromPoint(from, {150, 130}, 0, copy), 0);
  Expect("a locked text is left alone", HeaderOf(from.sourceUri)->references, -1);
  Expect("and copied", copy.sourceUri != from.sourceUri, true);
  Expect("to", copy.sourceUri, kAddress);
  Expect("by the client's manager", HeaderOf(copy.sourceUri)->manager == &ours, true);
  HeaderOf(from.sourceUri)->references = 2;
  LetGoAll(from, found, copy);
}

void CheckReading() {
  SLElemData user = ElementAt({150, 130}, L"user"), focused = Record(kAddress),
             parent = Record(nullptr);
  Expect("GetFocusedElement", api::GetFocusedElement(window, focused), 0);
  Expect("the focus", focused.objectId, L"user");
  Expect("GetParentElement", api::GetParentElement(user, parent), 0);
  Expect("the parent", parent.objectId, L"form");
  tagRECT rect = {};
  Expect("GetElemRectangle", api::GetElemRectangle(user, rect), 0);
  Expect("the rectangle", rect, {140, 120, 500, 148});
  ATL::CComBSTR value = {};
  Expect("GetElementValue", api::GetElementValue(user, value), static_cast<int>(0x80004001));
  ExpectAttribute(user, L"value", L"zo\u00eb");
  wchar_t* texts[3] = {};
  int number = -1;
  Expect("GetIdInfo", api::GetIdInfo(&parent, user, &texts[0], &texts[1], &texts[2], &number), 0);
  const wchar_t* const expected[] = {L"User name", L"TextBox", L"user"};
  for (int i = 0; i < 3; ++i) {
    Expect("what identifies it", texts[i], expected[i]);
    SysFreeString(texts[i]);
  }
  Expect("its number", number, 0);
  LetGoAll(user, focused, parent);
}

void ExpectIds(const Vector<SLElemData>& found, const wchar_t* const* ids, int count) {
  Expect("as many", static_cast<int>(found.last - found.first), count);
  for (int i = 0; i < found.last - found.first && i < count; ++i) {
    Expect("its id", found.first[i].objectId, ids[i]);
    Expect("its address", found.first[i].sourceUri, kAddress);
    Expect("in a text of the module's", HeaderOf(found.first[i].sourceUri)->manager != &ours, true);
    ExpectAttribute(found.first[i], L"type", ids[i + count]);
  }
}

void CheckVectors() {
  SLElemData user = ElementAt({150, 130}, L"user"), branch = ElementAt({150, 210}, L"branch");
  Vector<ATL::CComBSTR> items = Filled<ATL::CComBSTR>({SysAllocString(L"before")});
  Expect("GetItems", api::GetItems(branch, 1, items), 0);
  const wchar_t* const texts[] = {L"before", L"M\u00fcnchen", L"S\u00e3o Paulo", L"\u6771\u4eac",
                                  L"\u0141\u00f3d\u017a"};
  Expect("items", static_cast<int>(items.last - items.first), 5);
  for (int i = 0; i < items.last - items.first && i < 5; ++i) {
    Expect("item", items.first[i].text, texts[i]);
  }
  LetGo(items);

  Vector<SLElemData> chain = Filled(ElementAt({150, 80}, L"title"));
  const int before = freedTexts;
  Expect("GetDefaultSelectorHierarchy", api::GetDefaultSelectorHierarchy(user, chain), 0);
  Expect("the text of the record in the vector was freed", freedTexts - before, 1);
  const wchar_t* const selector[] = {L"page", L"form", L"user", L"Page", L"Grid", L"TextBox"};
  ExpectIds(chain, selector, 3);
  LetGo(chain);

  Vector<SLElemData> ancestors = {};
  Vector<long> numbers = Filled(7L);
  Expect("GetAncestryInfo", api::GetAncestryInfo(user, ancestors, numbers), 0);
  const wchar_t* const upwards[] = {L"form", L"page", L"Grid", L"Page"};
  ExpectIds(ancestors, upwards, 2);
  Expect("numbers", static_cast<int>(numbers.last - numbers.first), 3);
  const long expected[] = {7, 0, 1};
  for (int i = 0; i < numbers.last - numbers.first && i < 3; ++i) {
    Expect("number", numbers.first[i], expected[i]);
  }
  LetGo(ancestors);
  LetGo(numbers);

  SLElemData root = Record(kAddress);
  Vector<SLElemData> found = {};
  wchar_t type[] = L"Box";
  Expect(
      "FindCollection",
      api::FindCollection(root, nullptr, type, nullptr, 0 /*all levels*/, true /*partly*/, found),
      0);
  const wchar_t* const boxes[] = {L"user",    L"password",    L"branch",  L"remember",
                                  L"TextBox", L"PasswordBox", L"ListBox", L"CheckBox"};
  ExpectIds(found, boxes, 4);
  if (found.last - found.first == 4) {
    Expect("the last one's rectangle", found.last[-1].rect, {140, 332, 500, 356});
  }
  LetGo(found);
  LetGoAll(user, branch, root);
}

void CheckActions() {
  SLElemData user = ElementAt({150, 130}, L"user"), branch = ElementAt({150, 210}, L"branch"),
             remember = ElementAt({150, 340}, L"remember"), focused = Record(kAddress);
  Expect("ClickElem", api::ClickElem(remember, 0, 0), 0);
  ExpectAttribute(remember, L"checked", L"false");
  Expect("CheckElem", api::CheckElem(remember, 2), 0);
  ExpectAttribute(remember, L"checked", L"true");
  ATL::CComBSTR text = {SysAllocString(L"Zo\u00eb")}, city = {SysAllocString(L"S\u00e3o Paulo")};
  Expect("SetValue", api::SetValue(user, text), 0);
  ExpectAttribute(user, L"value", L"Zo\u00eb");
  Expect("SelectItem", api::SelectItem(branch, city), 0);
  ExpectAttribute(branch, L"selected", L"S\u00e3o Paulo");
  Expect("SetFocus", api::SetFocus(branch), 0);
  Expect("GetFocusedElement", api::GetFocusedElement(window, focused), 0);
  Expect("the focus", focused.objectId, L"branch");
  LetGoAll(text, city);
  LetGoAll(user, branch, remember, focused);
}

}  // namespace

TextHeader* TextManager::Allocate(int units, int unitSize) noexcept {
  const auto size = sizeof(TextHeader) + (units + 1ull) * unitSize;
  auto* header = static_cast<TextHeader*>(HeapAlloc(textHeap, 0, size));
  *header = {this, 0, units, 1};
  UnitsOf(header)[0] = 0;
  ++buffers;
  return header;
}
void TextManager::Free(TextHeader* header) noexcept {
  if (header->length > 0) ++freedTexts;
  Expect("a buffer of the client's heap", HeapFree(textHeap, 0, header), 1);
  --buffers;
}
TextHeader* TextManager::Reallocate(TextHeader*, int, int) noexcept { return nullptr; }
TextHeader* TextManager::GetNilString() noexcept { return Allocate(0, sizeof(wchar_t)); }
TextManager* TextManager::Clone() noexcept { return this; }

extern "C" void Start() {
  textHeap = HeapCreate(0, 0, 0);
  window = WindowOfCommandLine();
  CheckTexts();
  CheckReading();
  CheckVectors();
  CheckActions();
  Expect("buffers that were not freed", buffers, 0);
  ExitProcess(failures == 0 ? 0 : 1);
}
