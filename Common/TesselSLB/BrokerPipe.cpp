#include "TesselSLB/BrokerPipe.h"

#include "UTILITY/JbPipe.h"
#include "logging/Log.h"
#include "wire/Addresses.h"

std::wstring GetBrokerPipeName(DWORD scheme, std::wstring_view address) {
  std::wstring name = wire::PipeName(scheme, address);
  if (name.empty()) LOG_ERROR("Invalid URI scheme");
  return name;
}

bool BrokerPipeExists(const std::wstring& name, std::int32_t wait) {
  if (name.empty()) {
    LOG_ERROR("Cannot get pipe name");
    return false;
  }
  CJbPipe pipe;
  pipe.SetPipeName(name);
  pipe.SetAppendProcessId(false);
  if (!pipe.ServerPipeExists(0 /*process id*/, wait)) {
    LOG_INFO("Cannot connect to SLBroker pipe");
    return false;
  }
  return true;
}
