#include "tools/inspector/BrokerPipes.h"

#include "tools/pipe/PipeExchange.h"
#include "wire/Addresses.h"
#include "wire/SearchOrder.h"

BrokerPipe PipeOf(DWORD scheme, std::wstring_view address) {
  const std::wstring name = wire::PipeName(scheme, address);
  return {scheme, name, tools::PipeExists(name)};
}

std::vector<SLUriScheme> SchemesOfCall(DWORD scheme, std::wstring_view address) {
  if (scheme != SL_NO_URI) return {static_cast<SLUriScheme>(scheme)};
  return wire::SchemesToTry(address);
}

std::vector<BrokerPipe> PipesToTry(DWORD scheme, std::wstring_view address) {
  std::vector<BrokerPipe> pipes;
  for (const SLUriScheme each : SchemesOfCall(scheme, address)) {
    pipes.push_back(PipeOf(each, address));
  }
  return pipes;
}
