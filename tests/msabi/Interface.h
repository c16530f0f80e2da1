// The interface as a client of Microsoft's compiler sees it. Declared here once more, from layouts
// and names alone, so that nothing but the binary interface is shared with the module.
#pragma once

using DWORD = unsigned long;
struct HWND__;
struct tagPOINT {
  long x, y;
};
struct tagRECT {
  long left, top, right, bottom;
};

// A text's pointer leads to its first unit; this stands before it.
struct TextHeader {
  struct TextManager* manager;
  int length, capacity;
  long references;
};
static_assert(sizeof(TextHeader) == 24);

struct TextManager {
  virtual TextHeader* Allocate(int units, int unitSize) noexcept;
  virtual void Free(TextHeader* header) noexcept;
  virtual TextHeader* Reallocate(TextHeader* header, int units, int unitSize) noexcept;
  virtual TextHeader* GetNilString() noexcept;
  virtual TextManager* Clone() noexcept;
};

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

#define IMPORTED __declspec(dllimport)

namespace TesselSilverlight {
using Element = const SLElemData&;
IMPORTED int GetElemFromPoint(SLElemData& window, const tagPOINT& at, int option,
                              SLElemData& found);
IMPORTED int GetFocusedElement(HWND__* window, SLElemData& found);
IMPORTED int FindCollection(SLElemData& root, wchar_t* const name, wchar_t* const type,
                            wchar_t* const id, int levels, bool partly, Vector<SLElemData>& found);
IMPORTED int GetParentElement(Element child, SLElemData& parent);
IMPORTED int GetAncestryInfo(Element child, Vector<SLElemData>& ancestors, Vector<long>& numbers);
IMPORTED int GetDefaultSelectorHierarchy(Element element, Vector<SLElemData>& chain);
IMPORTED int GetIdInfo(const SLElemData* parent, Element element, wchar_t** name, wchar_t** type,
                       wchar_t** id, int* number);
IMPORTED int GetElementValue(Element element, ATL::CComBSTR& value);
IMPORTED int GetElemRectangle(Element element, tagRECT& rect);
IMPORTED int GetAttribute(Element element, wchar_t* const name, wchar_t** value);
IMPORTED int GetItems(Element element, int flag, Vector<ATL::CComBSTR>& items);
IMPORTED int ClickElem(Element element, int, int);
IMPORTED int SetValue(Element element, const ATL::CComBSTR& text);
IMPORTED int SetFocus(Element element);
IMPORTED int CheckElem(Element element, int check);
IMPORTED int SelectItem(Element element, const ATL::CComBSTR& item);
IMPORTED int ReleaseObj(SLElemData& element);
}  // namespace TesselSilverlight

extern "C" {
IMPORTED void* GetProcessHeap();
IMPORTED void* HeapCreate(DWORD options, unsigned long long initial, unsigned long long maximum);
IMPORTED void* HeapAlloc(void* heap, DWORD flags, unsigned long long size);
IMPORTED int HeapFree(void* heap, DWORD flags, void* block);
IMPORTED wchar_t* GetCommandLineW();
IMPORTED void* GetStdHandle(DWORD which);
IMPORTED int WriteFile(void* file, const void* text, DWORD size, DWORD* written, void*);
[[noreturn]] IMPORTED void ExitProcess(DWORD code);
IMPORTED int lstrcmpW(const wchar_t* left, const wchar_t* right);
IMPORTED int wsprintfA(char* text, const char* format, ...);
IMPORTED wchar_t* SysAllocString(const wchar_t* text);
IMPORTED void SysFreeString(wchar_t* text);
}
