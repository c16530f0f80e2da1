// The module's interface for a client that Microsoft's compiler would compile. This file repeats
// the names and layouts of the public header on purpose. So the client and the DLL share no source
// code, only the binary interface.
#pragma once

using DWORD = unsigned long;
struct HWND__;
struct tagPOINT {
  long x, y;
};
struct tagRECT {
  long left, top, right, bottom;
};

// The header of a text such as SLElemData::sourceUri. The pointer to a text points to its first
// unit, which follows the header.
struct TextHeader {
  struct TextManager* manager;
  int length, capacity;
  long references;
};
static_assert(sizeof(TextHeader) == 24);

struct SLElemData {
  DWORD processId;
  HWND__* hwnd;
  wchar_t* objectId;
  DWORD uriScheme;
  tagRECT rect;
  wchar_t* sourceUri;
};
static_assert(sizeof(SLElemData) == 56);

namespace ATL {
class CComBSTR {
 public:
  wchar_t* text;
};
}  // namespace ATL

template <class T>
class HeapAllocator {};

namespace std {
template <class T, class Allocator>
class vector {
 public:
  T *first, *last, *end;
};
}  // namespace std
template <class T>
using Vector = std::vector<T, HeapAllocator<T>>;

namespace TesselSilverlight {
using Element = const SLElemData&;
int GetElemFromPoint(SLElemData& window, const tagPOINT& at, int option, SLElemData& found);
int GetFocusedElement(HWND__* window, SLElemData& found);
int FindCollection(SLElemData& root, wchar_t* const name, wchar_t* const type, wchar_t* const id,
                   int levels, bool partly, Vector<SLElemData>& found);
int GetParentElement(Element child, SLElemData& parent);
int GetAncestryInfo(Element child, Vector<SLElemData>& ancestors, Vector<long>& numbers);
int GetDefaultSelectorHierarchy(Element element, Vector<SLElemData>& chain);
int GetIdInfo(const SLElemData* parent, Element element, wchar_t** name, wchar_t** type,
              wchar_t** id, int* number);
int GetElementValue(Element element, ATL::CComBSTR& value);
int GetElemRectangle(Element element, tagRECT& rect);
int GetAttribute(Element element, wchar_t* const name, wchar_t** value);
int GetItems(Element element, int flag, Vector<ATL::CComBSTR>& items);
int ClickElem(Element element, int, int);
int SetValue(Element element, const ATL::CComBSTR& text);
int SetFocus(Element element);
int CheckElem(Element element, int check);
int SelectItem(Element element, const ATL::CComBSTR& item);
int ReleaseObj(SLElemData& element);
}  // namespace TesselSilverlight

extern "C" {
void* GetProcessHeap();
void* HeapAlloc(void* heap, DWORD flags, unsigned long long size);
int HeapFree(void* heap, DWORD flags, void* block);
wchar_t* SysAllocString(const wchar_t* text);
void SysFreeString(wchar_t* text);
int printf(const char* format, ...);
unsigned long long wcslen(const wchar_t* text);
wchar_t* wcscpy(wchar_t* to, const wchar_t* from);
const wchar_t* _wgetenv(const wchar_t* name);
unsigned long long _wcstoui64(const wchar_t* digits, wchar_t** end, int base);
[[noreturn]] void exit(int code);
}
