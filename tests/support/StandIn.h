// A stand-in for a program that the module starts: the launcher or the injector. It is a copy of
// test_parts.exe with the name of that program. Each start is recorded in a file whose name
// contains an id: the injector's argument --pid, or the host or the scheme for which the launcher
// must start a broker. A stand-in for the launcher starts no process. It serves as the broker
// itself. The destructor deletes the copy and the files, and ends the stand-ins that still serve.
#pragma once

#include <windows.h>

#include "support/ChildProcess.h"
#include "support/Text.h"

class StandIn {
 public:
  // `kind` is "sllauncher" or "slinject".
  explicit StandIn(const std::wstring& kind) : kind_(kind) {
    std::filesystem::create_directories(folder_);
    // Overwrites a copy that a killed test has left.
    ::CopyFileW((TestFolder() + L"test_parts.exe").c_str(), Program().c_str(), FALSE);
  }
  ~StandIn() {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      const std::wstring name = entry.path().filename().wstring();
      if (name.starts_with(kind_ + L"-serve"))
        End(std::stoul(Split(FileText(entry.path()), "\n").at(3)));
      if (name.starts_with(kind_ + L"-")) std::filesystem::remove(entry.path(), ignored);
    }
    std::filesystem::remove(Program(), ignored);
  }
  StandIn(const StandIn&) = delete;

  std::filesystem::path Program() const { return folder_ / (kind_ + L".exe"); }

  // Returns these lines for each start: the command line, the folder, "flags show-command", and the
  // process id. An injector adds the line "end" when it ends.
  Texts Record(const std::wstring& id) const {
    return Split(FileText(folder_ / (kind_ + L"-" + id + L".txt")), "\n");
  }

  // For an injector only. Sets how long the injection takes, the exit code, and the command line of
  // a broker to start. Programs that this process starts inherit the setting.
  static void Prepare(DWORD milliseconds, int exitCode, const std::wstring& broker = L"") {
    const std::wstring setting = std::to_wstring(milliseconds) + L' ' + std::to_wstring(exitCode);
    ::SetEnvironmentVariableW(L"TEST_INJECTOR", (setting + L' ' + broker).c_str());
  }

 private:
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
