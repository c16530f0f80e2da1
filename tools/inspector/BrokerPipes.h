// Part of tessel. The pipes by which a client reaches brokers.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "TesselCodes.h"

// All schemes with a broker of their own.
inline constexpr SLUriScheme kBrokerSchemes[] = {SL_TAILORED_URI, SL_HTTP_URI, SL_HTTPS_URI,
                                                 SL_FILE_URI};

struct BrokerPipe {
  DWORD scheme;
  std::wstring name;
  bool exists;
};

// Looks whether the pipe exists. Does not connect to it.
BrokerPipe PipeOf(DWORD scheme, std::wstring_view address);

// Returns the schemes whose brokers a call asks, in this order. SL_NO_URI stands for a call that
// searches for the broker.
std::vector<SLUriScheme> SchemesOfCall(DWORD scheme, std::wstring_view address);

// Returns the pipes of the brokers that a call with this scheme asks. The call asks the first pipe
// first.
std::vector<BrokerPipe> PipesToTry(DWORD scheme, std::wstring_view address);
