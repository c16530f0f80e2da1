#include "TesselSLB/HiddenProcess.h"

std::optional<HiddenProcess> StartHidden(const std::wstring& program, std::wstring commandLine,
                                         const wchar_t* directory) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = SW_HIDE;
  PROCESS_INFORMATION started = {};
  if (!::CreateProcessW(program.c_str(), commandLine.data(), nullptr /*process security*/,
                        nullptr /*thread security*/, FALSE /*inherit handles*/, 0 /*flags*/,
                        nullptr /*environment*/, directory, &startup, &started)) {
    return std::nullopt;
  }
  return HiddenProcess{SafeHandle(started.hProcess), SafeHandle(started.hThread),
                       started.dwProcessId};
}
