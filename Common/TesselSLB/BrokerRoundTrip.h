// Client process. From a request to the broker's answer: one round trip, and the search for the
// scheme under which a content's broker answers.
#pragma once

#include <string_view>

#include "TesselSilverlight.h"
#include "internal/jarchive.h"

// The first value of every request.
enum class Command : int {
  kElementFromPoint = 1,
  kRectangle = 2,
  kRelease = 3,
  kParent = 6,
  kIdentity = 7,
  kSelector = 8,
  kCollection = 9,
  kAttribute = 10,
  kClick = 11,
  kSetValue = 12,
  kSetFocus = 13,
  kFocusedElement = 14,
  kCheck = 15,
  kItems = 16,
  kSelectItem = 17,
  kAncestry = 18,
};

// The record's address; empty for one that a client zeroed.
std::wstring_view AddressOf(const SLElemData& record);

// A request about an element: command, process, object.
void BuildObjectRequest(Command command, const SLElemData& record, JArchive& request);

// A request about a window or an element of it. Fills in the record's process when it is 0.
void BuildWindowRequest(Command command, SLElemData& record, JArchive& request);

// All three return 0 or a code of SLResult or the broker's own. On 0 the status has been read from
// the answer. An ArchiveException passes.

// To the broker of a scheme, which is started when its pipe is not there.
int SendMessageToBroker(DWORD scheme, const JArchive& request, JArchive& answer,
                        std::wstring_view address);

// Tries the tailored scheme, then that of the address. `scheme` receives the one that answered.
int SendMessageToBrokerAnyScheme(HWND window, DWORD& scheme, const JArchive& request,
                                 JArchive& answer, std::wstring_view address);

// Under a known scheme directly. Else searches, and when nothing answers injects the broker into
// the window's process and searches once more.
int DispatchToBroker(DWORD& scheme, const JArchive& request, JArchive& answer, HWND window,
                     std::wstring_view address);
