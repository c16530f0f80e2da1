#include "tools/scenebroker/HostModule.h"

#include <stdexcept>

#include "tools/shared/ConsoleText.h"

HostModule::HostModule(const std::wstring& path) : module_(::LoadLibraryW(path.c_str())) {
  if (module_) return;
  throw std::runtime_error("cannot load " + tessel::Narrow(path) + " (error " +
                           std::to_string(::GetLastError()) +
                           "); put it beside the broker, or name it with --dll");
}

void* HostModule::FindExport(const char* name) const {
  auto* const address = reinterpret_cast<void*>(::GetProcAddress(module_.get(), name));
  if (address == nullptr) {
    throw std::runtime_error(std::string("the loaded module has no ") + name +
                             "; name TesselSLB_x64.dll with --dll");
  }
  return address;
}
