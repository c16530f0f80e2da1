// Both processes. Computes the name of a broker's pipe from the address of the content. The client
// that opens the pipe and the host that creates it use the same functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TesselCodes.h"

namespace wire {

// Returns the name of the scheme for the log, for example "SL_HTTP_URI".
const char* SchemeName(unsigned long scheme);

// Returns the scheme that the address starts with, or nothing if it starts with none. Upper case
// does not match: "HTTP:" is not a scheme.
std::optional<SLUriScheme> GetUriScheme(std::wstring_view address);

// Returns the part of the address before its third slash, which is the scheme and the host. For a
// file, returns the part before the sixth slash. Returns the whole address if it has fewer slashes,
// and nothing if it has no scheme.
std::optional<std::wstring_view> GetUriOrigin(std::wstring_view address);

// Returns an empty name if the scheme has no pipe.
std::wstring PipeName(unsigned long scheme, std::wstring_view address);

}  // namespace wire
