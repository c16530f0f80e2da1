#include "Program.h"

// winternl.h needs windows.h before it
#include <winternl.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

// The system exports these functions, but no header declares them.
extern "C" NTSYSAPI NTSTATUS NTAPI NtSuspendProcess(HANDLE process);
extern "C" NTSYSAPI NTSTATUS NTAPI NtResumeProcess(HANDLE process);

namespace soak {

namespace {

constexpr int kMostStarts = 3;

}  // namespace

Program::Program(std::wstring commandLine, std::filesystem::path output)
    : output_(std::move(output)) {
  SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
  const HANDLE file =
      ::CreateFileW(output_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, &inherit,
                    CREATE_ALWAYS, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("cannot write a program's output");
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = startup.hStdError = file;
  BOOL started = FALSE;
  DWORD error = ERROR_INTERNAL_ERROR;
  // Under Wine, about one start in several hundred fails with ERROR_INTERNAL_ERROR when the machine
  // is busy. Then try again.
  for (int i = 0; i < kMostStarts && !started && error == ERROR_INTERNAL_ERROR; ++i) {
    started = ::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE /*inherit*/,
                               CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &startup, &process_);
    error = ::GetLastError();
  }
  ::CloseHandle(file);
  if (!started) throw std::runtime_error("cannot start a program: " + std::to_string(error));
}

Program::~Program() {
  Kill();
  Wait(5000);
  ::CloseHandle(process_.hThread);
  ::CloseHandle(process_.hProcess);
  std::error_code ignored;
  std::filesystem::remove(output_, ignored);
}

bool Program::Runs() const { return Wait(0) == STILL_ACTIVE; }

DWORD Program::Wait(DWORD milliseconds) const {
  ::WaitForSingleObject(process_.hProcess, milliseconds);
  DWORD code = 0;
  ::GetExitCodeProcess(process_.hProcess, &code);
  return code;
}

void Program::Kill() const { ::TerminateProcess(process_.hProcess, 99); }

void Program::Suspend() const { ::NtSuspendProcess(process_.hProcess); }

void Program::Resume() const { ::NtResumeProcess(process_.hProcess); }

std::string Program::Output() const {
  std::ifstream file(output_, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace soak
