// Both processes. The pipe of a broker: its name, and whether it exists.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

// Empty, with a line in the log, for a scheme without a pipe.
std::wstring GetBrokerPipeName(DWORD scheme, std::wstring_view address);

// Waits up to `wait` milliseconds for the pipe, and keeps no connection. False, with a line in the
// log, for an empty name.
bool BrokerPipeExists(const std::wstring& name, std::int32_t wait);
