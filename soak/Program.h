// Runs in the conductor (soak_conductor). A child process of the conductor. The output of the child
// goes to a file, because a pipe would fill up while nobody reads it.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace soak {

class Program {
 public:
  Program(std::wstring commandLine, std::filesystem::path output);
  ~Program();  // kills the process if it still runs, and removes the output file
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  DWORD Id() const { return process_.dwProcessId; }
  bool Runs() const;
  // Returns the exit code, or STILL_ACTIVE if the process has not ended in time.
  DWORD Wait(DWORD milliseconds) const;
  void Kill() const;
  void Suspend() const;
  void Resume() const;
  std::string Output() const;

 private:
  const std::filesystem::path output_;
  PROCESS_INFORMATION process_ = {};
};

}  // namespace soak
