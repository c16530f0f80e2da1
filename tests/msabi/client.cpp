// Calls every element function of the module. A broker serves the sign-in form in the window that
// the environment variable WINDOW names. The program is linked without a C++ runtime. expected.txt
// holds its output. Its exit code is the number of texts that were not freed.
#include "Interface.h"

namespace api = TesselSilverlight;

// The string manager of this client, which allocates and frees texts. The DLL has its own manager.
struct TextManager {
  virtual TextHeader* Allocate(int units, int unitSize) noexcept {
    const auto size = sizeof(TextHeader) + (units + 1ull) * unitSize;
    auto* header = static_cast<TextHeader*>(HeapAlloc(GetProcessHeap(), 8 /*zeroed*/, size));
    *header = {this, 0, units, 1};
    ++buffers;
    return header;
  }
  virtual void Free(TextHeader* text) noexcept { buffers -= HeapFree(GetProcessHeap(), 0, text); }
  virtual TextHeader* Reallocate(TextHeader*, int, int) noexcept { return nullptr; }
  virtual TextHeader* GetNilString() noexcept { return Allocate(0, sizeof(wchar_t)); }
  virtual TextManager* Clone() noexcept { return this; }

  int buffers = 0;  // the number of buffers that are allocated and not yet freed
};

namespace {

constinit TextManager ours;
constinit HWND__* window = nullptr;

TextHeader* HeaderOf(wchar_t* text) { return reinterpret_cast<TextHeader*>(text) - 1; }

SLElemData Record(const wchar_t* address = L"http://msabi.example/") {
  TextHeader* header = ours.Allocate(wcslen(address), sizeof(wchar_t));
  header->length = header->capacity;
  return {0, window, nullptr, 0, {}, wcscpy(reinterpret_cast<wchar_t*>(header + 1), address)};
}

void Show(const char* call, int code) { printf("%s: %d, buffers %d\n", call, code, ours.buffers); }

void ShowAndFree(wchar_t* text) {
  for (auto* at = text; at && *at; ++at) printf(*at < 0x80 ? "%c" : "\\u%04x", *at);
  printf("\n");
  SysFreeString(text);
}
void ShowAndFree(ATL::CComBSTR text) { ShowAndFree(text.text); }
void ShowAndFree(long number) { printf("%ld\n", number); }
void ShowAndFree(SLElemData& element) {
  const auto& [left, top, right, bottom] = element.rect;
  printf("  scheme %lu, [%ld %ld %ld %ld], ", element.uriScheme, left, top, right, bottom);
  TextHeader* header = HeaderOf(element.sourceUri);
  printf("%S (%s, %d, %ld), ", element.sourceUri,
         header->manager == &ours ? "ours" : "the module's", header->length, header->references);
  printf("released: %d, ", api::ReleaseObj(element));
  ShowAndFree(element.objectId);
  if (--header->references <= 0) header->manager->Free(header);
}

template <class T>
void ShowAndFree(Vector<T> vector) {
  for (T* element = vector.first; element != vector.last; ++element) ShowAndFree(*element);
  printf("storage freed: %d\n", HeapFree(GetProcessHeap(), 0, vector.first));
}

// Makes the DLL replace the text of a record in both ways: it shares an unlocked text, and copies a
// text that is locked (its reference count is -1).
void ShowTexts() {
  SLElemData from = Record(), found = Record(L"replaced"), locked = Record(), copied = Record(L"");
  Show("GetElemFromPoint", api::GetElemFromPoint(from, {150, 130}, 0 /*option*/, found));
  ShowAndFree(from);
  ShowAndFree(found);
  HeaderOf(locked.sourceUri)->references = -1;
  Show("GetElemFromPoint, locked", api::GetElemFromPoint(locked, {150, 130}, 0 /*option*/, copied));
  ShowAndFree(locked);
  ShowAndFree(copied);
}

void ShowActions(const SLElemData& user, const SLElemData& branch, const SLElemData& remember) {
  Show("ClickElem", api::ClickElem(remember, 0, 0));
  Show("CheckElem", api::CheckElem(remember, 2));
  ATL::CComBSTR text = {SysAllocString(L"Zo\u00eb")}, city = {SysAllocString(L"S\u00e3o Paulo")};
  Show("SetValue", api::SetValue(user, text));
  Show("SelectItem", api::SelectItem(branch, city));
  Show("SetFocus", api::SetFocus(branch));
  SysFreeString(text.text);
  SysFreeString(city.text);
}

void ShowReading(const SLElemData& user) {
  SLElemData parent = Record();
  Show("GetParentElement", api::GetParentElement(user, parent));
  tagRECT rect = {};
  Show("GetElemRectangle", api::GetElemRectangle(user, rect));
  printf("%ld %ld %ld %ld\n", rect.left, rect.top, rect.right, rect.bottom);
  ATL::CComBSTR value = {};
  Show("GetElementValue", api::GetElementValue(user, value));
  wchar_t name[] = L"value", *texts[4] = {};
  Show("GetAttribute", api::GetAttribute(user, name, &texts[0]));
  int number = -1;
  Show("GetIdInfo", api::GetIdInfo(&parent, user, &texts[1], &texts[2], &texts[3], &number));
  for (wchar_t* text : texts) ShowAndFree(text);
  printf("%d\n", number);
  ShowAndFree(parent);
}

// The vector `chain` is full, so the DLL must allocate new storage to append to it.
void ShowVectors(const SLElemData& user, const SLElemData& branch) {
  auto* storage = static_cast<SLElemData*>(HeapAlloc(GetProcessHeap(), 0, sizeof(SLElemData)));
  *storage = Record();
  Show("GetFocusedElement", api::GetFocusedElement(window, *storage));
  Vector<SLElemData> chain = {storage, storage + 1, storage + 1}, ancestors = {};
  Show("GetDefaultSelectorHierarchy", api::GetDefaultSelectorHierarchy(user, chain));
  ShowAndFree(chain);
  Vector<ATL::CComBSTR> items = {};
  Show("GetItems", api::GetItems(branch, 1, items));
  ShowAndFree(items);
  Vector<long> numbers = {};
  Show("GetAncestryInfo", api::GetAncestryInfo(user, ancestors, numbers));
  ShowAndFree(ancestors);
  ShowAndFree(numbers);
}

}  // namespace

extern "C" void Start() {
  window = reinterpret_cast<HWND__*>(_wcstoui64(_wgetenv(L"WINDOW"), nullptr, 16));
  ShowTexts();
  SLElemData root = Record();
  Vector<SLElemData> boxes = {};
  wchar_t type[] = L"Box";
  Show("FindCollection", api::FindCollection(root, nullptr, type, nullptr, 0, true, boxes));
  ShowAndFree(root);
  ShowActions(boxes.first[0], boxes.first[2], boxes.first[3]);
  ShowReading(boxes.first[0]);
  ShowVectors(boxes.first[0], boxes.first[2]);
  ShowAndFree(boxes);
  exit(ours.buffers);
}
