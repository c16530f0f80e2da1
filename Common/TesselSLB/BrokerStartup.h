// Runs in the client. Starts a broker with the Silverlight launcher.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

// Returns the value of the launcher's /origin argument for http, https and file, in double quotes.
// Returns an empty text and logs an error for all other schemes. For SL_TAILORED_URI (a broker for
// one site only), LaunchBroker itself builds the value from the address.
std::wstring GetBrokerOrigin(DWORD scheme);

// Sets `path` to the launcher's program file. Returns false and logs an error if the launcher is
// not installed.
bool FindLauncher(std::wstring& path);

// Starts the broker and waits up to 15 s for its pipe. Returns true if the pipe appears in time.
bool LaunchBroker(DWORD scheme, std::wstring_view address);
