// Client process. Starts a broker with the Silverlight launcher.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

// The launcher's origin argument, in double quotes. Empty for a scheme without one, and for the
// tailored scheme, whose origin LaunchBroker makes of the address.
std::wstring GetBrokerOrigin(DWORD scheme);

// False, with a line in the log, if the launcher is not installed.
bool FindLauncher(std::wstring& path);

// Starts the broker and waits up to 15 s for its pipe. True if the pipe exists then.
bool LaunchBroker(DWORD scheme, std::wstring_view address);
