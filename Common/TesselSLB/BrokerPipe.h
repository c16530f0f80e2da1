// Runs in the client and in the broker. Computes the name of a broker's pipe and checks whether the
// pipe exists.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

// Returns the pipe's name. Returns an empty name and logs an error if the scheme has no pipe.
std::wstring GetBrokerPipeName(DWORD scheme, std::wstring_view address);

// Returns true if the pipe exists or appears within `wait` milliseconds. Otherwise, and for an
// empty name, writes a line to the log and returns false. Does not connect to the pipe.
bool BrokerPipeExists(const std::wstring& name, std::int32_t wait);
