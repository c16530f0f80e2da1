// Client process. Whether a broker answers, and how one is started with the Silverlight launcher.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

// `wait` in milliseconds. Keeps no connection.
bool BrokerPipeExists(DWORD scheme, std::wstring_view address, std::int32_t wait);

// The launcher's origin argument, in double quotes; empty for a scheme without one. The tailored
// scheme's is made by LaunchBroker.
std::wstring GetBrokerOrigin(DWORD scheme);

bool FindLauncher(std::wstring& path);

// Starts the broker and waits up to 15 s for its pipe. True: the pipe is there.
bool LaunchBroker(DWORD scheme, std::wstring_view address);
