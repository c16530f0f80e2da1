// Starts the tools tessel.exe and SceneBroker.exe as processes, and reads their output.
#pragma once

#include <gmock/gmock.h>

#include <atomic>
#include <map>
#include <regex>

#include "support/ChildProcess.h"
#include "support/RawClient.h"
#include "support/Text.h"
#include "tools/shared/ConsoleText.h"

// Returns a blank and the text as a quoted argument of a command line. Doubles backslashes before a
// double quote and at the end, because a program reads two backslashes there as one.
inline std::wstring Quoted(const std::string& text) {
  const std::wregex quote(L"(\\\\*)\""), tail(L"(\\\\+)$");
  const std::wstring inner = std::regex_replace(tessel::Wide(text), quote, L"$1$1\\\"");
  return L" \"" + std::regex_replace(inner, tail, L"$1$1") + L'"';
}

// Returns the exit code and the output. Removes the notices that tessel prints when a call takes
// long.
inline std::pair<DWORD, std::string> ToolOutput(const std::wstring& commandLine) {
  ChildProcess process(TestFolder() + commandLine);
  const std::string text = process.ReadToEnd();
  const std::regex notice("tessel: waiting for [^\n]*\n");
  return {process.Wait(), std::regex_replace(text, notice, "")};
}

// Runs a tool. Expects the exit code `code`, and an output that contains `output`.
inline void RunTool(const std::wstring& commandLine, DWORD code, const std::string& output) {
  EXPECT_THAT(ToolOutput(commandLine), testing::Pair(code, testing::HasSubstr(output)))
      << tessel::Narrow(commandLine);
}

struct SceneFile {
  explicit SceneFile(const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
  ~SceneFile() { std::filesystem::remove(path); }
  inline static std::atomic<int> count = 0;
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / (std::to_wstring(::GetCurrentProcessId()) +
                                                L"-scene-ä" + std::to_wstring(++count) + L".json");
};

// The path of a file that does not exist yet. The destructor removes the file. The constructor
// does, too: the name contains the process id, and Wine may have given the same id to an earlier
// process that crashed and left the file.
struct NewFile {
  explicit NewFile(const std::string& name)
      : path(std::filesystem::temp_directory_path() /
             tessel::Wide(std::to_string(::GetCurrentProcessId()) + "-ä-" + name)) {
    std::filesystem::remove(path);
  }
  ~NewFile() { std::filesystem::remove(path); }
  std::string Name() const { return tessel::Narrow(path.wstring()); }
  const std::filesystem::path path;
};

// A running SceneBroker, and the facts that it prints as lines "KEY: VALUE" at its start. The
// constructor waits for the line "ready".
class SceneBroker : public ChildProcess {
 public:
  explicit SceneBroker(const std::string& scene, const std::wstring& options = L"")
      : ChildProcess(TestFolder() + L"SceneBroker.exe" + Quoted(scene) + options) {
    for (std::string line; (line = ReadLine()) != "ready" && !line.empty();) {
      facts_.insert_or_assign(Cut(line, ": ").first, Cut(line, ": ").second);
    }
  }

  // Returns the last fact with this key.
  const std::string& Fact(const std::string& key) const { return facts_.at(key); }

  // Returns the request with '?' replaced by the broker's process id.
  std::string Request(const std::string& text) const {
    return std::regex_replace(text, std::regex("[?]"), Fact("process"));
  }

  std::string Ask(const std::string& request) const {
    RawClient client(tessel::Wide(Fact("pipe")));
    client.Send(tessel::Wide(Request(request)));
    return tessel::Narrow(client.Receive());
  }

  // Returns the inspector's command line. Adds this broker's window if `command` names no window.
  std::wstring InspectorLine(const std::string& command) const {
    const std::string window = " --window=" + Fact("window");
    return L"tessel.exe " + tessel::Wide(command) + L" --address" + Quoted(Fact("address")) +
           tessel::Wide(command.find("--window") == command.npos ? window : "");
  }

  // Closes the broker's window and returns the lines of its summary.
  std::string CloseAndReadSummary() {
    const std::string output = CloseAndRead(0);
    return output.substr(output.find("handed out: "));
  }

  // Closes the broker's window and returns all lines that were not read yet.
  std::string CloseAndRead(DWORD exitCode) {
    ::PostMessageW(tools::HandleFromText(Fact("window")), WM_CLOSE, 0, 0);
    const std::string output = ReadToEnd();
    EXPECT_EQ(Wait(), exitCode);
    return output;
  }

 private:
  std::map<std::string, std::string> facts_;
};

// A running `tessel tap`. It serves the pipe of a tailored broker, passes the requests of clients
// on to `broker`, and records them with their answers. The constructor waits for the line "ready".
struct Tap : ChildProcess {
  Tap(const SceneBroker& broker, const NewFile& recording)
      : ChildProcess(TestFolder() + L"tessel.exe tap --address" + Quoted(broker.Fact("address")) +
                     L" --scheme" + Quoted(broker.Fact("scheme")) + L" --record" +
                     Quoted(recording.Name())) {
    while (!ReadLine().starts_with("ready") && Wait(0) == STILL_ACTIVE) continue;
  }
};
