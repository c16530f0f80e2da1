#include "ResidentServer.h"

#include <cstdio>
#include <cstdlib>

#include "wire/Addresses.h"

namespace bench {

namespace {

std::wstring ProgramBeside(const wchar_t* name) {
  wchar_t path[1000];
  const std::wstring own(path, ::GetModuleFileNameW(nullptr, path, 1000));
  return own.substr(0, own.rfind(L'\\') + 1) + name;
}

}  // namespace

ResidentServer::ResidentServer(const wchar_t* host, unsigned instances, unsigned pause)
    : address_(L"http://" + (host + std::to_wstring(::GetCurrentProcessId())) + L"/page"),
      pipeName_(wire::PipeName(SL_TAILORED_URI, address_)) {
  std::wstring commandLine = L"\"" + ProgramBeside(L"bench_server.exe") + L"\" " +
                             std::to_wstring(::GetCurrentProcessId()) + L" " + pipeName_ + L" " +
                             std::to_wstring(instances) + L" " + std::to_wstring(pause);
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE /*inherit*/, 0,
                        nullptr, nullptr, &startup, &process_))
    Fail("the server does not start");
  for (int i = 0; !::WaitNamedPipeW(pipeName_.c_str(), 100); ++i) {
    if (i == 1000) Fail("the server does not listen");
    ::Sleep(10);
  }
  ::Sleep(200);  // wait until all instances of the pipe listen
}

ResidentServer::~ResidentServer() {
  ::TerminateProcess(process_.hProcess, 0);
  ::WaitForSingleObject(process_.hProcess, 5000);
  ::CloseHandle(process_.hThread);
  ::CloseHandle(process_.hProcess);
}

void Fail(const char* what) {
  std::fprintf(stderr, "%s (last error %lu)\n", what, ::GetLastError());
  std::exit(1);
}

}  // namespace bench
