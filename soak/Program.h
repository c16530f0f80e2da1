// A program of an endurance run, whose output goes to a file: a pipe would fill while nobody reads.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace soak {

class Program {
 public:
  Program(std::wstring commandLine, std::filesystem::path output);
  ~Program();  // ends it by force if it still runs, and removes its output
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  DWORD Id() const { return process_.dwProcessId; }
  bool Runs() const;
  // Its exit code; STILL_ACTIVE when it does not end in time.
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
