// Both processes. From a content address to the name of its broker's pipe: pure functions, the same
// for the client that looks for the pipe and for the host that serves it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TesselSilverlight.h"

// "SL_HTTP_URI" and so on, for the log.
const char* SchemeName(DWORD scheme);

// By the address's prefix, which is case-sensitive.
std::optional<SLUriScheme> GetUriScheme(std::wstring_view address);

// Scheme and host of an address; the whole address when it has no path.
std::optional<std::wstring_view> GetUriOrigin(std::wstring_view address);

// Empty, with a line in the log, for a scheme without a pipe.
std::wstring GetBrokerPipeName(DWORD scheme, std::wstring_view address);
