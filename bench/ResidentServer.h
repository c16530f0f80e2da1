// Starts bench_server, and ends it in the destructor.
#pragma once

#include <windows.h>

#include <string>

namespace bench {

class ResidentServer {
 public:
  // The server has `instances` instances of the pipe. After an instance has served a client, it
  // waits `pause` milliseconds before it listens again. `host` becomes a part of the address.
  ResidentServer(const wchar_t* host, unsigned instances, unsigned pause);
  ~ResidentServer();
  ResidentServer(const ResidentServer&) = delete;
  ResidentServer& operator=(const ResidentServer&) = delete;

  // The address of the content that the server serves as a tailored broker.
  const std::wstring& Address() const { return address_; }
  const std::wstring& PipeName() const { return pipeName_; }

 private:
  const std::wstring address_;
  const std::wstring pipeName_;
  PROCESS_INFORMATION process_ = {};
};

[[noreturn]] void Fail(const char* what);

}  // namespace bench
