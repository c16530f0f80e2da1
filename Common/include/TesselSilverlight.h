// Client process. Finds the elements of Silverlight content, describes, reads and drives them. A
// client includes this header, and links against TesselSLB_x64.dll or loads it.
//
// A client names the content by its window and its address, gets a first element from a point, the
// focus or a collection, and goes on from there. Each element is a record (SLElemData) that holds
// an object in the broker until it is destroyed.
//
// A call becomes one request to the broker of the element's content and one answer. A broker that
// does not run yet is started. The calling thread waits for all of it: up to 16 s for a broker that
// has to be started, then up to 18 s each for connecting, writing and reading, about 70 s together.
// The limit of 18 s applies to each single wait for a part of the answer. A hostile broker that
// cancels and repeats its writes can make a call longer. A function that searches tries two
// schemes. If neither broker shows the content, it waits up to 30 s for the injections of other
// clients and about 10 s for its own injector, and searches again: about 320 s together. When a
// function refills a vector of records, it first releases each old record by one more call.
//
// Result codes: SL_SUCCESS, or one of the groups that each function names.
//   round trip  SL_CANNOT_READ, SL_CANNOT_CONNECT, SL_BROKER_NOT_STARTED, SL_ARCHIVE_FAILURE, or
//               the broker's own status. SL_NOT_SERVED is the status for content that the broker
//               does not show.
//   search      those of the round trip, and SL_INVALID_ARGUMENT (no such window), SL_FAILURE,
//               SL_INJECTOR_NOT_STARTED, SL_INJECTION_FAILED
// Output arguments change only on success, unless the function says otherwise.
//
// Threads: any number may call at the same time, each with its own records and vectors. No function
// is bound to a thread. Injections lock each other out, across all processes.
//
// Texts are UTF-16. The client frees a returned BSTR with SysFreeString. A vector that a function
// fills belongs to the client, and its storage is on the process's heap. Rectangles and points are
// in the coordinates of the content's broker; the module does not convert them.
//
// Exceptions: each failure of the broker and of the pipe has a result code and a line in the log.
// These exceptions may leave a function:
// - std::bad_alloc or std::length_error: memory is exhausted, or an answer announces too many
//   elements.
// - ATL's exception with E_OUTOFMEMORY: memory for a text is exhausted.
// - ATL's exception with E_FAIL or E_INVALIDARG: a path does not fit its buffer.
// - std::system_error: the security of the injection mutex cannot be set up.
// A client that was built with a different compiler cannot catch them, and ends.
#pragma once

#include <windows.h>

#include <cstddef>
#include <utility>
#include <vector>

#include "AtlTypes.h"
#include "HeapAllocator.h"
#include "TesselApi.h"
#include "TesselCodes.h"
#include "TesselTrace.h"

struct SLElemData;

namespace TesselSilverlight {

// Finding a first element.

// The element at a point.
//
// window  in: `hwnd` and `sourceUri` (the content's address); `uriScheme` when it is known, else
//         the function searches; `objectId` may be empty.
//         out: `processId`, filled in from the window when it was 0, even if the call then fails,
//         and `uriScheme`, once a search has found it.
// pt      the point.
// option  passed on to the broker.
// found   out: the element, with the window, process, scheme and address of `window`; its `rect`
//         does not change. An element that the record named before is not released. If there is no
//         element: success with an empty `objectId`.
// Result: search.
TESSELSLB_API int GetElemFromPoint(SLElemData& window, const POINT& pt, int option,
                                   SLElemData& found);

// The element that has the focus in a window. Always searches.
//
// focused  in: `sourceUri`. out: as `found` above. If no element has the focus: success with an
//          empty `objectId`.
// Result: search.
TESSELSLB_API int GetFocusedElement(HWND hwnd, SLElemData& focused);

// All elements below a root that match three texts and two options. The broker defines the meaning
// of these.
//
// root    a valid record, or one with `hwnd` and `sourceUri` alone, which stands for the whole
//         content. in and out as `window` of GetElemFromPoint; must not be one of `found`.
// search1, search2, search3
//         only read; null is an empty text.
// found   out: one record for each element, `rect` included; the records that it held are released.
//         If the answer ends after its count (SL_ARCHIVE_FAILURE), it holds as many records as the
//         count says. The records that could not be read name no element.
// Result: search; SL_INVALID_OBJECT for a root that is not valid and has no window.
TESSELSLB_API int FindCollection(SLElemData& root, wchar_t* const search1, wchar_t* const search2,
                                 wchar_t* const search3, int option1, bool option2,
                                 std::vector<SLElemData, HeapAllocator<SLElemData>>& found);

// From element to element. From here on each function requires a valid record (SL_INVALID_OBJECT
// otherwise, and nothing is sent): one that has all five of process, window, object, scheme and
// address.

// The parent of an element. `parent` receives it, with the window, process, scheme and address of
// `child`. If there is no parent, `parent` does not change.
// Result: round trip, SL_INVALID_OBJECT.
TESSELSLB_API int GetParentElement(const SLElemData& child, SLElemData& parent);

// The element's ancestors, with a number for each. The broker defines the meaning of the numbers.
//
// ancestors  out: as `found` of FindCollection, except for `rect`, which is empty. `elem` must not
//            be one of them.
// numbers    out: appended to. After SL_ARCHIVE_FAILURE the numbers read so far stay.
// Result: round trip, SL_INVALID_OBJECT.
TESSELSLB_API int GetAncestryInfo(const SLElemData& elem,
                                  std::vector<SLElemData, HeapAllocator<SLElemData>>& ancestors,
                                  std::vector<long, HeapAllocator<long>>& numbers);

// The elements that make up the element's default selector. `chain`: as `ancestors` above.
// Result: round trip, SL_INVALID_OBJECT.
TESSELSLB_API int GetDefaultSelectorHierarchy(
    const SLElemData& elem, std::vector<SLElemData, HeapAllocator<SLElemData>>& chain);

// Reading an element.

// Identification data of an element: three texts and a number. The broker defines their meaning.
//
// parentObj  null, or a valid record of the same process and scheme (SL_INVALID_OBJECT otherwise):
//            the broker then identifies `obj` relative to this element.
// text1, text2, text3
//            out: BSTRs that the client frees; what was there before is overwritten, not freed.
//            Must not be null.
// number     out; null when it is not wanted.
// Result: round trip, SL_INVALID_OBJECT.
TESSELSLB_API int GetIdInfo(const SLElemData* parentObj, const SLElemData& obj, wchar_t** text1,
                            wchar_t** text2, wchar_t** text3, int* number);

// Not implemented: E_NOTIMPL for a valid record. Sends nothing and leaves `value` alone.
// Result: E_NOTIMPL, SL_INVALID_OBJECT.
TESSELSLB_API int GetElementValue(const SLElemData& elem, CComBSTR& value);

// The element's rectangle. An answer that ends early (SL_ARCHIVE_FAILURE) leaves the remaining
// fields unchanged.
// Result: round trip, SL_INVALID_OBJECT.
TESSELSLB_API int GetElemRectangle(const SLElemData& elem, RECT& rect);

// A named attribute as text. `name` is only read; a literal needs a cast:
// const_cast<wchar_t*>(L"text"). `*value` receives a BSTR that the client frees; what was there
// before is overwritten, not freed.
// Result: round trip, SL_INVALID_OBJECT; SL_INVALID_ARGUMENT for a null or empty name, or a null
// `value`.
TESSELSLB_API int GetAttribute(const SLElemData& elem, wchar_t* const name, wchar_t** value);

// The texts of the items of a list-like element, appended to `items`. `flag` reaches the broker as
// true or false. After SL_ARCHIVE_FAILURE the items read so far stay.
// Result: round trip, SL_INVALID_OBJECT.
TESSELSLB_API int GetItems(const SLElemData& elem, int flag,
                           std::vector<CComBSTR, HeapAllocator<CComBSTR>>& items);

// Acting on an element. Success means that the broker has accepted the command.

// Clicks the element. The two ints are reserved: neither read nor sent.
// Result: round trip, SL_INVALID_OBJECT.
TESSELSLB_API int ClickElem(const SLElemData& elem, int reserved1, int reserved2);

// Sets the element's value. An empty text is a valid value.
// Result: round trip, SL_INVALID_OBJECT; SL_INVALID_ARGUMENT for a null text.
TESSELSLB_API int SetValue(const SLElemData& elem, const CComBSTR& text);

// Gives the element the focus.
// Result: round trip, SL_INVALID_OBJECT.
TESSELSLB_API int SetFocus(const SLElemData& elem);

// Checks (not 0) or unchecks (0) the element.
// Result: round trip, SL_INVALID_OBJECT.
TESSELSLB_API int CheckElem(const SLElemData& elem, int check);

// Selects the item of that text.
// Result: round trip, SL_INVALID_OBJECT; SL_ARCHIVE_FAILURE also for a null text.
TESSELSLB_API int SelectItem(const SLElemData& elem, const CComBSTR& item);

// Letting go.

// Tells the broker that the client no longer holds the element. The record keeps its fields, and
// its destruction tells the broker again. To let go early and only once, clear the object's id
// after the call:
//
//     TesselSilverlight::ReleaseObj(record);
//     SysFreeString(record.objectId);
//     record.objectId = nullptr;
//
// The record's destruction then sends nothing; it only logs "Invalid SL object". When the broker is
// gone, clear the id without this call. Otherwise each release searches for the broker, and may
// start one.
// Result: round trip, SL_INVALID_OBJECT; SL_FAILURE also when the broker refuses.
TESSELSLB_API int ReleaseObj(SLElemData& obj);

}  // namespace TesselSilverlight

// Names an element, or only a window and its content's address. It owns the broker's object:
// destroying the record, or assigning to it, releases the object by a call to the broker (see
// ReleaseObj). A record without an object makes no call and logs "Invalid SL object". Records can
// be moved, which releases nothing, but not copied.
struct SLElemData {
  SLElemData() = default;
  SLElemData(const SLElemData&) = delete;
  SLElemData& operator=(const SLElemData&) = delete;
  SLElemData(SLElemData&& other) noexcept { Take(other); }
  SLElemData& operator=(SLElemData&& other) noexcept {
    if (this != &other) {
      Clear();
      Take(other);
    }
    return *this;
  }
  ~SLElemData() { Clear(); }

  DWORD processId = 0;  // 0 in a record that names only a window; the call sets it
  HWND hwnd = nullptr;  // the window that shows the content
  BSTR objectId = nullptr;
  DWORD uriScheme = SL_NO_URI;
  RECT rect = {};
  CStringW sourceUri;

 private:
  void Clear() noexcept {
    try {
      TesselSilverlight::ReleaseObj(*this);
    } catch (...) {
      // Memory is exhausted. The broker keeps its object, because a destructor must not end the
      // client.
    }
    hwnd = nullptr;
    processId = 0;
    uriScheme = SL_NO_URI;
    ::SysFreeString(objectId);
    objectId = nullptr;
    rect = {};
    sourceUri.Empty();
  }

  void Take(SLElemData& other) noexcept {
    processId = std::exchange(other.processId, 0);
    hwnd = std::exchange(other.hwnd, nullptr);
    objectId = std::exchange(other.objectId, nullptr);
    uriScheme = std::exchange(other.uriScheme, SL_NO_URI);
    rect = std::exchange(other.rect, RECT{});
    sourceUri = std::move(other.sourceUri);
  }
};

static_assert(sizeof(SLElemData) == 56 && alignof(SLElemData) == 8);
static_assert(offsetof(SLElemData, hwnd) == 8 && offsetof(SLElemData, objectId) == 16 &&
              offsetof(SLElemData, uriScheme) == 24 && offsetof(SLElemData, rect) == 28 &&
              offsetof(SLElemData, sourceUri) == 48);
