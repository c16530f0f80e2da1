// Runs in the client. Finds the user-interface elements of Silverlight content, and describes,
// reads and drives them. A client includes this header, and links against TesselSLB_x64.dll (the
// module) or loads it.
//
// A client finds a first element by a point, by the focus or by search texts, and finds further
// elements from this element. A client holds each element in a record (SLElemData). The broker
// keeps an object for the record until the record is destroyed. If the client ends without
// destroying the record, the object stays in the broker.
//
// Words:
// - Broker: the program that answers the requests about the content.
// - Scheme: selects the broker (SLUriScheme). There is one broker each for http, https and file. A
//   tailored broker serves one site alone: all addresses that are the same up to the third slash,
//   so that protocol, host and port are the same. File addresses must be the same up to the sixth
//   slash. All addresses that begin with none of http:, https: and file: share one tailored broker.
// - Launcher: sllauncher.exe of the Silverlight runtime. It starts a broker.
// - Injector: slinject.exe in the module's folder. It starts a broker in the process that owns the
//   window of the content.
// - Valid record: a record whose process, window, object, scheme and address are all set. An
//   `objectId` of length 0 counts as not set.
//
// Calls: a call sends one request to the broker and receives one answer. If the broker's pipe does
// not exist, the call first starts the broker. The calling thread waits up to 16 s for a broker
// that it starts (15 s for its pipe, and one second more), and up to 18 s each to connect, to write
// and to read: 70 s at most. An answer may arrive in parts, and the 18 s apply to each part. So a
// hostile broker can make a call last several times as long.
//
// Search: GetElemFromPoint and FindCollection search for the broker if `uriScheme` is SL_NO_URI.
// GetFocusedElement always searches. A search asks the tailored broker first. If this broker
// returns SL_NOT_SERVED, the search asks the broker of the scheme that the address begins with:
// http:, https: or file:. Only small letters match. If the address begins with anything else, for
// example with "HTTP:", no second broker is asked. A tailored broker that cannot be started ends
// the search with SL_BROKER_NOT_STARTED. If the broker that was asked last returns SL_NOT_SERVED,
// the search runs the injector and asks the same brokers once more. Only one injection runs at a
// time in a logon session: an injection waits up to 30 s for the injections of other clients, and
// about 10 s for its own injector. A search takes about 320 s at most.
//
// Results: each function returns SL_SUCCESS or one of the results that its comment names.
// - Round-trip codes: SL_CANNOT_READ, SL_CANNOT_CONNECT, SL_BROKER_NOT_STARTED, SL_ARCHIVE_FAILURE,
//   or a status of the broker.
// - Search codes: the round-trip codes, and the codes of an injection: SL_FAILURE,
//   SL_INJECTOR_NOT_STARTED, SL_INJECTION_FAILED, and SL_INVALID_ARGUMENT (no such window). The
//   window is checked only when a broker is injected. A call that injects no broker sends its
//   request even if the window does not exist. Its result is then usually a status of the broker,
//   or SL_BROKER_NOT_STARTED if no broker runs.
// A status is a number that the broker chooses. The functions return it unchanged. A broker that
// does not show the content answers with the status SL_NOT_SERVED. Brokers should use 100 for an
// unknown command, 101 for an unknown element, 102 for something that the element does not support
// or have, and 103 for a broken request. SL_NOT_SERVED always comes from a broker. All other SL_
// codes are the module's own. If a broker sends one of them as its status, the client cannot see
// the difference.
//
// Output arguments change only on success, unless the function's comment says otherwise.
//
// If the broker ends during a call, the result is SL_CANNOT_READ or SL_CANNOT_CONNECT. The next
// call starts a new broker. If the new broker cannot be started, for example because the launcher
// is missing, the call returns SL_BROKER_NOT_STARTED. A new broker does not know the old objects
// and answers with a status, usually 101. So after SL_CANNOT_READ, SL_CANNOT_CONNECT or
// SL_BROKER_NOT_STARTED, free `objectId` and set it to null in all records of this broker (the last
// two lines of the example at ReleaseObj). Otherwise the destruction of each record tries to start
// a broker, and may wait 16 s or longer. If the broker has not ended but hangs, it keeps these
// objects until it ends.
//
// Threads: any number of threads may call at the same time, each with its own records and vectors.
// A record may be used on another thread than the one that received it.
//
// Texts are UTF-16. The client frees a BSTR that it received through a wchar_t** with
// SysFreeString. A record frees its own texts. A vector that a function fills belongs to the
// client, and its storage is on the process's heap. The broker defines the coordinates of
// rectangles and points; the module does not convert them.
//
// Exceptions: each failure of the broker and of the pipe has a result code and a line in the log.
// These exceptions may leave a function:
// - std::bad_alloc or std::length_error: memory is exhausted, or an answer announces too many
//   elements.
// - ATL's exception with E_OUTOFMEMORY: memory for a text is exhausted.
// - ATL's exception with E_FAIL or E_INVALIDARG: the module's folder has such a long path that the
//   path of slinject.exe or SLBroker.xap in this folder does not fit into MAX_PATH characters.
// - std::system_error: the security of the mutex that allows only one injection at a time cannot be
//   set up.
// A client can catch these exceptions only if the same compiler built the client and the DLL. In
// any other client they end the process.
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

// Returns the element at a point.
//
// window  in: set `hwnd` and `sourceUri` (the address of the content). Set `uriScheme` if it is
//         known. `objectId` is sent to the broker, and is usually null.
//         out: `processId` is set to the window's process if it was 0, even if the call then fails.
//         `uriScheme` is set if a search succeeded.
// pt      the point.
// option  a number for the broker, which defines its meaning.
// found   out: the element, with the window, process, scheme and address of `window`. The `rect` of
//         `found` does not change. If there is no element, the result is SL_SUCCESS and `objectId`
//         has the length 0. In this case `objectId` is usually not null, so test
//         SysStringLen(objectId). Pass a new record: if `found` already names an element, the call
//         does not release that element, and its object stays in the broker.
// Result: the search codes.
TESSELSLB_API int GetElemFromPoint(SLElemData& window, const POINT& pt, int option,
                                   SLElemData& found);

// Returns the element that has the focus in a window.
//
// focused  in: a new record. Set `sourceUri`. All other fields are ignored, even a known scheme.
//          out: the element, with the window `hwnd`, its process and the scheme. The other fields
//          do not change. If no element has the focus, the result is SL_SUCCESS and `objectId` has
//          the length 0, as for `found` of GetElemFromPoint.
// Result: the search codes.
TESSELSLB_API int GetFocusedElement(HWND hwnd, SLElemData& focused);

// Finds all elements below a root that match three texts and two options. The broker defines the
// meaning of the texts and options, and the order of the elements.
//
// root    in and out: the same fields as for `window` of GetElemFromPoint. If `objectId` is empty,
//         the root stands for the whole content. The root must not be a record of `found`.
// search1, search2, search3
//         the texts, which are not changed. Null counts as an empty text.
// found   out: a new record for each element, with the element's rectangle in `rect`. After the
//         status, the answer contains the number of elements. When this number has been read, the
//         records that `found` held before the call are released, by one call each. If the answer
//         then ends too early (SL_ARCHIVE_FAILURE), `found` has as many records as the answer
//         announced, and the records that were not read are empty.
// Result: the search codes, or SL_INVALID_OBJECT for a root without a window.
TESSELSLB_API int FindCollection(SLElemData& root, wchar_t* const search1, wchar_t* const search2,
                                 wchar_t* const search3, int option1, bool option2,
                                 std::vector<SLElemData, HeapAllocator<SLElemData>>& found);

// Finding elements from an element. GetParentElement and all functions below it require a valid
// record of the element. For any other record they return SL_INVALID_OBJECT and send nothing.

// Returns the parent of an element.
//
// parent  out: the parent, with the window, process, scheme and address of `child`. Its `rect` does
//         not change. If there is no parent, the result is SL_SUCCESS and `parent` does not change.
//         Pass a new record, as for `found` of GetElemFromPoint.
// Result: the round-trip codes, or SL_INVALID_OBJECT.
TESSELSLB_API int GetParentElement(const SLElemData& child, SLElemData& parent);

// Returns the ancestors of an element, with a number for each. The broker defines their order, the
// meaning of the numbers, and whether the element itself is included.
//
// ancestors  out: as `found` of FindCollection, but `rect` is empty. The vector must not contain
//            `elem`.
// numbers    out: the numbers are appended. After SL_ARCHIVE_FAILURE the vector also contains the
//            numbers that were read before the failure.
// Result: the round-trip codes, or SL_INVALID_OBJECT.
TESSELSLB_API int GetAncestryInfo(const SLElemData& elem,
                                  std::vector<SLElemData, HeapAllocator<SLElemData>>& ancestors,
                                  std::vector<long, HeapAllocator<long>>& numbers);

// Returns a list of elements that the broker chooses for the element. The list is called the
// default selector. The broker defines its meaning and its order.
//
// chain  out: as `ancestors` of GetAncestryInfo.
// Result: the round-trip codes, or SL_INVALID_OBJECT.
TESSELSLB_API int GetDefaultSelectorHierarchy(
    const SLElemData& elem, std::vector<SLElemData, HeapAllocator<SLElemData>>& chain);

// Reading an element.

// Returns three texts and a number that identify an element. The broker defines their meaning.
//
// parentObj  null, or an element relative to which the broker identifies `obj`. If it is not null,
//            it must be a valid record with the process and the scheme of `obj`, otherwise the
//            result is SL_INVALID_OBJECT.
// text1, text2, text3
//            out: BSTRs that the client frees. The arguments must not be null. Before the call,
//            free old BSTRs and set their pointers to null: success overwrites the pointers, and a
//            failure leaves them unchanged.
// number     out: the number. The argument may be null.
// Result: the round-trip codes, or SL_INVALID_OBJECT.
TESSELSLB_API int GetIdInfo(const SLElemData* parentObj, const SLElemData& obj, wchar_t** text1,
                            wchar_t** text2, wchar_t** text3, int* number);

// Not implemented. Sends nothing and does not change `value`.
// Result: E_NOTIMPL, SL_INVALID_OBJECT.
TESSELSLB_API int GetElementValue(const SLElemData& elem, CComBSTR& value);

// Returns the rectangle of an element. After SL_ARCHIVE_FAILURE, `rect` contains the sides that
// were read before the failure; the other sides are unchanged.
// Result: the round-trip codes, or SL_INVALID_OBJECT.
TESSELSLB_API int GetElemRectangle(const SLElemData& elem, RECT& rect);

// Returns a named attribute as text.
//
// name   the attribute's name. The function does not change it. A string literal needs a cast:
//        const_cast<wchar_t*>(L"text").
// value  out: a BSTR that the client frees. Before the call, free an old BSTR and set its pointer
//        to null: success overwrites the pointer, and a failure leaves it unchanged.
// Result: the round-trip codes, or SL_INVALID_OBJECT; SL_INVALID_ARGUMENT for a null or empty name,
// or a null `value`. A positive status usually means that the element has no such attribute (102)
// or no longer exists (101).
TESSELSLB_API int GetAttribute(const SLElemData& elem, wchar_t* const name, wchar_t** value);

// Appends the texts of the items of a list-like element to `items`. After SL_ARCHIVE_FAILURE,
// `items` also contains the texts that were read before the failure. The broker defines the
// meaning of `flag`. The request tells the broker only whether `flag` is 0.
// Result: the round-trip codes, or SL_INVALID_OBJECT. A positive status usually means that the
// element has no items (102) or no longer exists (101).
TESSELSLB_API int GetItems(const SLElemData& elem, int flag,
                           std::vector<CComBSTR, HeapAllocator<CComBSTR>>& items);

// Acting on an element. Success means that the broker has accepted the command. The action may
// still be running.

// Clicks the element. The two reserved arguments are ignored.
// Result: the round-trip codes, or SL_INVALID_OBJECT.
TESSELSLB_API int ClickElem(const SLElemData& elem, int reserved1, int reserved2);

// Sets the element's value. An empty text is a valid value.
// Result: the round-trip codes, or SL_INVALID_OBJECT; SL_INVALID_ARGUMENT for a null text.
TESSELSLB_API int SetValue(const SLElemData& elem, const CComBSTR& text);

// Gives the element the focus.
// Result: the round-trip codes, or SL_INVALID_OBJECT.
TESSELSLB_API int SetFocus(const SLElemData& elem);

// Unchecks the element if `check` is 0, otherwise checks it.
// Result: the round-trip codes, or SL_INVALID_OBJECT.
TESSELSLB_API int CheckElem(const SLElemData& elem, int check);

// Selects the item that has this text.
// Result: the round-trip codes, or SL_INVALID_OBJECT. A null text returns SL_ARCHIVE_FAILURE and
// sends nothing.
TESSELSLB_API int SelectItem(const SLElemData& elem, const CComBSTR& item);

// Releasing an element.

// Tells the broker that the client no longer holds the element. The record keeps its fields, so its
// destruction tells the broker again. To release an element early and only once, clear the object's
// id after the call:
//
//     TesselSilverlight::ReleaseObj(record);
//     SysFreeString(record.objectId);
//     record.objectId = nullptr;
//
// The destruction of a record without an object sends nothing. It logs the error "Invalid SL
// object", which is harmless.
// Result: the round-trip codes, or SL_INVALID_OBJECT; SL_FAILURE if the broker answers with status
// 0 that it has not released the element.
TESSELSLB_API int ReleaseObj(SLElemData& obj);

}  // namespace TesselSilverlight

// Names an element, or only a window and the address of its content. The record owns the broker's
// object: destroying a valid record, or assigning to it, calls ReleaseObj. This call may block like
// any other call. Destroying a vector of n valid records makes n calls. Records can be moved but
// not copied. A move takes the object out of the source record without a call.
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

  DWORD processId = 0;          // the process of the window; 0 if not known yet
  HWND hwnd = nullptr;          // the window that shows the content
  BSTR objectId = nullptr;      // the broker's id of the element; the record frees it
  DWORD uriScheme = SL_NO_URI;  // an SLUriScheme
  RECT rect = {};               // the element's rectangle; only FindCollection sets it
  CStringW sourceUri;           // the address of the content

 private:
  void Clear() noexcept {
    try {
      TesselSilverlight::ReleaseObj(*this);
    } catch (...) {
      // ReleaseObj threw, for example because memory is exhausted. Ignore the exception, because a
      // destructor must not throw. The broker keeps the object.
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
