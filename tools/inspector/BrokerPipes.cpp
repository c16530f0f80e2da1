#include "tools/inspector/BrokerPipes.h"

#include "wire/Addresses.h"
#include "wire/SearchOrder.h"

// If the pipe exists but is busy, WaitNamedPipe fails with ERROR_SEM_TIMEOUT.
BrokerPipe PipeOf(DWORD scheme, std::wstring_view address) {
  const std::wstring name = wire::PipeName(scheme, address);
  const bool exists =
      ::WaitNamedPipeW(name.c_str(), 1 /*ms*/) || ::GetLastError() == ERROR_SEM_TIMEOUT;
  return {scheme, name, exists};
}

std::vector<BrokerPipe> PipesToTry(DWORD scheme, std::wstring_view address) {
  if (scheme != SL_NO_URI) return {PipeOf(scheme, address)};
  std::vector<BrokerPipe> pipes;
  for (const SLUriScheme each : wire::SchemesToTry(address)) pipes.push_back(PipeOf(each, address));
  return pipes;
}
