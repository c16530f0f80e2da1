// The server in its process, for as long as the client lives.
#pragma once

#include <windows.h>

#include <string>

namespace bench {

class ResidentServer {
 public:
  // `pause` in milliseconds, before an instance listens again.
  ResidentServer(const wchar_t* host, unsigned instances, unsigned pause);
  ~ResidentServer();
  ResidentServer(const ResidentServer&) = delete;
  ResidentServer& operator=(const ResidentServer&) = delete;

  // Of the content that it serves under the tailored scheme.
  const std::wstring& Address() const { return address_; }
  const std::wstring& PipeName() const { return pipeName_; }

 private:
  const std::wstring address_;
  const std::wstring pipeName_;
  PROCESS_INFORMATION process_ = {};
};

[[noreturn]] void Fail(const char* what);

}  // namespace bench
