// Both processes. From a content's address to the name of its broker's pipe: the same functions for
// the client that looks for the pipe and for the host that serves it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TesselCodes.h"

namespace wire {

// "SL_HTTP_URI" and so on, for the log.
const char* SchemeName(unsigned long scheme);

// The scheme of the address's prefix, which is case-sensitive.
std::optional<SLUriScheme> GetUriScheme(std::wstring_view address);

// The address up to its host, or for a file up to its folder. An address without a path is returned
// whole.
std::optional<std::wstring_view> GetUriOrigin(std::wstring_view address);

// Empty for a scheme without a pipe.
std::wstring PipeName(unsigned long scheme, std::wstring_view address);

}  // namespace wire
