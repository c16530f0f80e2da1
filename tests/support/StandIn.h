// A stand-in for a program that the module starts: test_parts under that program's name, gone with
// the test. It writes what it was started with into a file beside it, found by an id.
#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/ChildProcess.h"

class StandIn {
 public:
  // `kind` is "sllauncher" or "slinject".
  explicit StandIn(const std::wstring& kind) : kind_(kind) {
    std::filesystem::create_directories(folder_);
    // Over what a test that was killed has left.
    ::CopyFileW((TestFolder() + L"test_parts.exe").c_str(), Program().c_str(), FALSE);
  }
  ~StandIn() {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      const std::wstring name = entry.path().filename().wstring();
      if (name.starts_with(kind_ + L"-serve")) End(std::stoul(Lines(entry.path()).at(3)));
      if (name.starts_with(kind_ + L"-")) std::filesystem::remove(entry.path(), ignored);
    }
    std::filesystem::remove(Program(), ignored);
  }
  StandIn(const StandIn&) = delete;

  std::filesystem::path Program() const { return folder_ / (kind_ + L".exe"); }

  // Command line, directory, "flags show-command", process; an injector adds "end".
  std::vector<std::string> Record(const std::wstring& id) const {
    return Lines(folder_ / (kind_ + L"-" + id + L".txt"));
  }

  // For an injector: how long it takes, its exit code, and the broker that it starts.
  void Prepare(int process, DWORD milliseconds, int exitCode,
               const std::wstring& brokerCommand = L"") const {
    std::ofstream(folder_ / (kind_ + L"-" + std::to_wstring(process) + L".in"))
        << milliseconds << ' ' << exitCode << ' ' << std::filesystem::path(brokerCommand).string();
  }

 private:
  static std::vector<std::string> Lines(const std::filesystem::path& file) {
    std::vector<std::string> lines;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
  }
  static void End(DWORD id) {
    const HANDLE process = ::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id);
    ::TerminateProcess(process, 0);
    ::WaitForSingleObject(process, 5000);
    ::CloseHandle(process);
  }

  const std::wstring kind_;
  const std::filesystem::path folder_ =
      kind_ == L"slinject" ? TestFolder() : L"C:\\Program Files (x86)\\Microsoft Silverlight";
};
