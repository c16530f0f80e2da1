// A process that a test starts and whose output it reads. The destructor ends the process if it
// still runs.
#pragma once

#include <windows.h>

#include <cwchar>
#include <stdexcept>
#include <string>

class ChildProcess {
 public:
  explicit ChildProcess(std::wstring commandLine) {
    SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
    HANDLE childOutput = nullptr;
    // The pipe holds 1 MiB, so that a child does not block if the test reads its output late.
    ::CreatePipe(&output_, &childOutput, &inherit, 1 << 20);
    ::SetHandleInformation(output_, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = childOutput;
    const BOOL ok =
        ::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE /*inherit*/,
                         CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &startup, &process_);
    const DWORD error = ::GetLastError();
    ::CloseHandle(childOutput);
    if (!ok) throw std::runtime_error("cannot start a child process: " + std::to_string(error));
  }
  ~ChildProcess() {
    Kill();
    ::WaitForSingleObject(process_.hProcess, 5000);
    for (HANDLE handle : {process_.hThread, process_.hProcess, output_}) ::CloseHandle(handle);
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  DWORD Id() const { return process_.dwProcessId; }

  // Returns the next line that the child prints, without the line break. Returns an empty text at
  // the end of the output.
  std::string ReadLine() { return ReadUntil('\n'); }
  std::string ReadToEnd() { return ReadUntil('\0'); }

  // Returns the exit code, or STILL_ACTIVE if the process has not ended in time.
  DWORD Wait(DWORD milliseconds = 30000) {
    ::WaitForSingleObject(process_.hProcess, milliseconds);
    DWORD code = 0;
    ::GetExitCodeProcess(process_.hProcess, &code);
    return code;
  }

  void Kill() { ::TerminateProcess(process_.hProcess, 99); }

 private:
  // Reads up to `end` or the end of the output, without carriage returns.
  std::string ReadUntil(char end) {
    std::string text;
    DWORD read = 0;
    for (char next; ::ReadFile(output_, &next, 1, &read, nullptr) && read == 1 && next != end;) {
      if (next != '\r') text += next;
    }
    return text;
  }

  HANDLE output_ = nullptr;
  PROCESS_INFORMATION process_ = {};
};

// Returns the folder of the running test, with a backslash at the end. This folder also contains
// the stand-in programs.
inline std::wstring TestFolder() {
  wchar_t path[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  return {path, ::wcsrchr(path, L'\\') + 1};
}
