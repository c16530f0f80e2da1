// Runs in the client. Builds requests, sends them to the broker and receives the answers. If the
// scheme is not known, finds the scheme whose broker shows the content.
#pragma once

#include <string_view>

#include "TesselSilverlight.h"
#include "internal/jarchive.h"
#include "wire/Commands.h"

// Returns the address of the record's content. Returns an empty text if a client has filled the
// record with zero bytes.
std::wstring_view SourceUriOf(const SLElemData& record);

// BuildObjectRequest and BuildWindowRequest replace the content of `request`. The caller then
// appends the arguments of the command.

// Builds a request about an element: command, process id, object id.
void BuildObjectRequest(wire::Command command, const SLElemData& record, JArchive& request);

// Builds a request about a window or an element in it: command, process id, object id. The object
// id may be empty. If the record's process id is 0, sets it to the id of the window's process.
void BuildWindowRequest(wire::Command command, SLElemData& record, JArchive& request);

// The three functions below send a request. They return 0, an SLResult or a status that the broker
// defines. After 0 the caller reads the results from `answer`: the first read returns the value
// after the status. The functions throw ArchiveException if the request cannot be written as text
// or the answer does not begin with a status.

// Sends the request to the broker of `scheme`. If the broker's pipe does not exist, starts the
// broker first.
int SendMessageToBroker(DWORD scheme, const JArchive& request, JArchive& answer,
                        std::wstring_view address);

// Sends the request to the broker that serves only this site (SL_TAILORED_URI). If the result is
// SL_NOT_SERVED, sends the request to the broker of the scheme that the address begins with. On
// success `scheme` receives the scheme of the broker that answered.
int SendMessageToBrokerAnyScheme(DWORD& scheme, const JArchive& request, JArchive& answer,
                                 std::wstring_view address);

// If `scheme` is not SL_NO_URI, sends the request to the broker of `scheme` and never injects a
// broker. If `scheme` is SL_NO_URI, calls SendMessageToBrokerAnyScheme. If this call returns
// SL_NOT_SERVED, injects a broker into the window's process and calls SendMessageToBrokerAnyScheme
// once more.
int DispatchToBroker(DWORD& scheme, const JArchive& request, JArchive& answer, HWND window,
                     std::wstring_view address);
