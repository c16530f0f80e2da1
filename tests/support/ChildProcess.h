// A real process that a test starts, reads from and, at the latest in its own destruction, ends.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

class ChildProcess {
 public:
  explicit ChildProcess(std::wstring commandLine, const wchar_t* directory = nullptr) {
    SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
    HANDLE childOutput = nullptr;
    // Room for a child that a test reads only at the end.
    ::CreatePipe(&output_, &childOutput, &inherit, 1 << 20);
    ::SetHandleInformation(output_, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = childOutput;
    PROCESS_INFORMATION started = {};
    const BOOL ok =
        ::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE /*inherit*/,
                         CREATE_NEW_PROCESS_GROUP, nullptr, directory, &startup, &started);
    ::CloseHandle(childOutput);
    if (!ok) throw std::runtime_error("cannot start a child process");
    ::CloseHandle(started.hThread);
    process_ = started.hProcess;
    id_ = started.dwProcessId;
  }
  ~ChildProcess() {
    ::TerminateProcess(process_, 99);
    ::WaitForSingleObject(process_, 5000);
    ::CloseHandle(process_);
    ::CloseHandle(output_);
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  DWORD Id() const { return id_; }

  // The next line that the child prints, without its end; empty at the end of its output.
  std::string ReadLine() {
    std::string line;
    char character = 0;
    DWORD read = 0;
    while (::ReadFile(output_, &character, 1, &read, nullptr) && read == 1 && character != '\n') {
      if (character != '\r') line += character;
    }
    return line;
  }

  std::string ReadToEnd() {
    std::string text;
    char buffer[4096];
    DWORD read = 0;
    while (::ReadFile(output_, buffer, sizeof(buffer), &read, nullptr) && read > 0) {
      text.append(buffer, read);
    }
    return text;
  }

  // Its exit code; STILL_ACTIVE when it does not end in time.
  DWORD Wait(DWORD milliseconds = 30000) {
    ::WaitForSingleObject(process_, milliseconds);
    DWORD code = 0;
    ::GetExitCodeProcess(process_, &code);
    return code;
  }

  void Kill() { ::TerminateProcess(process_, 99); }

 private:
  HANDLE output_ = nullptr;
  HANDLE process_ = nullptr;
  DWORD id_ = 0;
};

// "build/…/bin/" of the running test, where its parts lie too.
inline std::wstring TestFolder() {
  wchar_t path[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring folder(path);
  return folder.substr(0, folder.rfind(L'\\') + 1);
}
