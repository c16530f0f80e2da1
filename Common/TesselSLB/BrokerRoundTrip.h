// Client process. Builds the requests, carries a request to the broker and its answer back, and
// searches for the scheme under which the broker of a content answers.
#pragma once

#include <string_view>

#include "TesselSilverlight.h"
#include "internal/jarchive.h"
#include "wire/Commands.h"

// The address of the record's content; empty for a record whose memory a client has zeroed.
std::wstring_view SourceUriOf(const SLElemData& record);

// Both replace what `request` held. The caller appends the arguments of its command.

// A request about an element: command, process, object.
void BuildObjectRequest(wire::Command command, const SLElemData& record, JArchive& request);

// A request about a window, or an element of it. Fills in the record's process when it is 0.
void BuildWindowRequest(wire::Command command, SLElemData& record, JArchive& request);

// All three return 0, a code of SLResult, or a status that only the broker knows. After 0 the
// caller reads its results from `answer`: the status is already read. They throw ArchiveException
// when the request cannot become a text, or the answer does not begin with a status.

// Asks the broker of this scheme, which is started when its pipe does not exist.
int SendMessageToBroker(DWORD scheme, const JArchive& request, JArchive& answer,
                        std::wstring_view address);

// Asks the broker of the tailored scheme, then that of the address's own scheme, until one serves
// the content. `scheme` receives the scheme of the broker that returned 0.
int SendMessageToBrokerAnyScheme(DWORD& scheme, const JArchive& request, JArchive& answer,
                                 std::wstring_view address);

// Asks the broker of `scheme`. For SL_NO_URI it searches as above; when no broker serves the
// content, it injects one into the window's process and searches once more.
int DispatchToBroker(DWORD& scheme, const JArchive& request, JArchive& answer, HWND window,
                     std::wstring_view address);
