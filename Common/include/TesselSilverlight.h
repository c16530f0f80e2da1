// Client process. Finds, reads and releases the elements of Silverlight content: this header is
// what a client includes, TesselSLB_x64.dll what it links against or loads.
//
// A call becomes one request to the broker of the element's content and one answer; a broker that
// does not run yet is started. The calling thread does all of it and waits: up to 16 s for a broker
// that has to be started, then up to 18 s each for connecting, writing and reading. Where a
// function says that it searches, this may happen for two schemes in turn, then injection adds up
// to 30 s of waiting for other injections and about 10 s for its own, and the search runs once
// more.
//
// Threads: any number may call at once, each with records of its own; the module takes no lock.
//
// Texts are UTF-16. Rectangles and points are in the coordinates that the broker of the content
// uses; the module carries them as they are.
//
// Exceptions: no failure of the broker or of the system leaves a function, each has a result code
// and a line in the log. Exhausted memory does: std::bad_alloc or std::length_error from the
// storage of a vector, ATL's exception (E_OUTOFMEMORY) from a text, and ATL's E_FAIL or
// E_INVALIDARG where a path does not fit its buffer. A client of another compiler than the module's
// cannot catch them.
#pragma once

#include <windows.h>

#include <cstddef>
#include <utility>
#include <vector>

#include "AtlTypes.h"
#include "HeapAllocator.h"
#include "TesselApi.h"
#include "TesselTrace.h"

struct SLElemData;

// Which broker serves an element.
enum SLUriScheme : unsigned long {
  SL_NO_URI = 0,  // not known yet: the searching functions find it
  SL_HTTP_URI = 1,
  SL_HTTPS_URI = 2,
  SL_FILE_URI = 3,
  SL_TAILORED_URI = 4,  // a broker of this content's own
};

// What the functions return. Any other value is the broker's own status, passed on unchanged.
enum SLResult : int {
  SL_SUCCESS = 0,
  SL_FAILURE = -3,  // no pipe name for the scheme; mutex not had; broker refused a release
  SL_INVALID_ARGUMENT = -5,
  SL_CANNOT_READ = -6,         // the broker sent no answer within 18 s, or left
  SL_CANNOT_CONNECT = -7,      // the broker's pipe cannot be opened or written to
  SL_NOT_SERVED = -8,          // the broker's status for content that it does not show
  SL_BROKER_NOT_STARTED = -9,  // no launcher, or no broker 15 s after its start
  SL_INJECTOR_NOT_STARTED = -10,
  SL_INJECTION_FAILED = -11,  // the injector failed or took too long
  SL_ARCHIVE_FAILURE = -12,   // the answer is too short, or not what was asked for
  SL_INVALID_OBJECT = -13,    // the record does not name an element
};

namespace TesselSilverlight {

// The element at a point.
//
// window  in: `hwnd` and `sourceUri` (the content's address); `uriScheme` when it is known, else
//         the function searches; `objectId` may be empty.
//         out: `processId`, filled in from the window when it was 0, even if the call then fails,
//         and `uriScheme`, once a search has found it.
// pt      the point.
// option  passed on to the broker.
// found   out, on success alone: the element, with the window, process, scheme and address of
//         `window`; its `rect` is left as it was. The record owns the element's object in the
//         broker; an element that it named before is forgotten, not released. No element there:
//         success with an empty `objectId`.
// Result: SL_SUCCESS, or any code but SL_INVALID_OBJECT.
TESSELSLB_API int GetElemFromPoint(SLElemData& window, const POINT& pt, int option,
                                   SLElemData& found);

// The element that has the focus in a window. Always searches.
//
// focused  in: `sourceUri`. out, on success alone: as `found` above. No element has the focus:
//          success with an empty `objectId`.
// Result: SL_SUCCESS, or any code but SL_INVALID_OBJECT.
TESSELSLB_API int GetFocusedElement(HWND hwnd, SLElemData& focused);

// The parent of an element. `parent` is left as it was when there is none, and on failure.
// Result: SL_SUCCESS, SL_INVALID_OBJECT, or a failure of the round trip (-3, -6, -7, -9, -12,
// status).
TESSELSLB_API int GetParentElement(const SLElemData& child, SLElemData& parent);

// Tells the broker that the client no longer holds the element. The record keeps its fields; its
// destruction calls this by itself.
// Result: as GetParentElement; SL_FAILURE also when the broker refuses.
TESSELSLB_API int ReleaseObj(SLElemData& obj);

// Not implemented: E_NOTIMPL for a valid record, SL_INVALID_OBJECT for any other. Sends nothing and
// leaves `value` alone.
TESSELSLB_API int GetElementValue(const SLElemData& elem, CComBSTR& value);

// The element's rectangle. An answer that ends early (SL_ARCHIVE_FAILURE) leaves the fields behind
// it as they were; any other failure leaves all of them. Result: as GetParentElement.
TESSELSLB_API int GetElemRectangle(const SLElemData& elem, RECT& rect);

// A named attribute as text: on success `*value` receives a BSTR that the caller frees with
// SysFreeString; what was there before is overwritten, not freed. Left alone on failure.
// Result: as GetParentElement; SL_INVALID_ARGUMENT for a null or empty name, or a null `value`.
TESSELSLB_API int GetAttribute(const SLElemData& elem, wchar_t* const name, wchar_t** value);

// The texts of the items of a list-like element, appended to `items`. `flag` reaches the broker as
// true or false. After SL_ARCHIVE_FAILURE the items read so far stay appended.
// Result: as GetParentElement.
TESSELSLB_API int GetItems(const SLElemData& elem, int flag,
                           std::vector<CComBSTR, HeapAllocator<CComBSTR>>& items);

}  // namespace TesselSilverlight

// Names an element, or only a window and its content's address. Owns what it holds: destroying or
// assigning to a record releases the broker's object (a call to the broker; one "Invalid SL object"
// line and no call for a record that names none). Moved without a release, never copied.
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

  DWORD processId = 0;  // 0 in a record that names only a window: filled in from it
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
      // Memory is exhausted: the broker keeps its object, the record must not take the client down.
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
