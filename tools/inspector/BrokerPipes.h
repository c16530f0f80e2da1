// Part of tessel. The pipes by which a client reaches brokers.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

struct BrokerPipe {
  DWORD scheme;
  std::wstring name;
  bool exists;
};

// Looks whether the pipe exists. Does not connect to it.
BrokerPipe PipeOf(DWORD scheme, std::wstring_view address);

// Returns the pipes that a call tries, in this order. SL_NO_URI stands for a call that searches for
// the broker.
std::vector<BrokerPipe> PipesToTry(DWORD scheme, std::wstring_view address);
