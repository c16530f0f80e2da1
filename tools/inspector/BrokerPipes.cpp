#include "tools/inspector/BrokerPipes.h"

#include "tools/pipe/PipeExchange.h"
#include "wire/Addresses.h"
#include "wire/SearchOrder.h"

BrokerPipe PipeOf(DWORD scheme, std::wstring_view address) {
  const std::wstring name = wire::PipeName(scheme, address);
  return {scheme, name, tools::PipeExists(name)};
}

std::vector<BrokerPipe> PipesToTry(DWORD scheme, std::wstring_view address) {
  if (scheme != SL_NO_URI) return {PipeOf(scheme, address)};
  std::vector<BrokerPipe> pipes;
  for (const SLUriScheme each : wire::SchemesToTry(address)) pipes.push_back(PipeOf(each, address));
  return pipes;
}
