// Starts the two tools as processes, and reads their output.
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>

#include "support/ChildProcess.h"
#include "support/RawClient.h"
#include "tools/shared/ConsoleText.h"

// Returns the text as a quoted argument of a command line.
inline std::wstring Quoted(const std::string& text) {
  std::wstring argument = L" \"";
  std::size_t backslashes = 0;
  for (const wchar_t character : tessel::Wide(text)) {
    if (character == L'"') argument.append(backslashes + 1, L'\\');
    backslashes = character == L'\\' ? backslashes + 1 : 0;
    argument += character;
  }
  return argument.append(backslashes, L'\\') + L'"';
}

// Returns the exit code and the output. Removes the notices that tessel prints when a call takes
// long.
inline std::pair<DWORD, std::string> ToolOutput(const std::wstring& commandLine) {
  ChildProcess process(TestFolder() + commandLine);
  std::string text = process.ReadToEnd();
  std::erase(text, '\r');
  text = std::regex_replace(text, std::regex("tessel: waiting for [^\n]*\n"), "");
  return {process.Wait(), text};
}

// Expects this exit code. If it is 0, the output must equal `output`; otherwise the output must
// contain `output`.
inline void RunTool(const std::wstring& commandLine, DWORD code, const std::string& output) {
  const auto [exitCode, text] = ToolOutput(commandLine);
  EXPECT_EQ(exitCode, code) << tessel::Narrow(commandLine);
  EXPECT_TRUE(code == 0 ? text == output : text.find(output) != text.npos)
      << tessel::Narrow(commandLine) << ": " << text;
}

struct SceneFile {
  explicit SceneFile(const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
  ~SceneFile() { std::filesystem::remove(path); }
  const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     (std::to_wstring(::GetCurrentProcessId()) + L"-scene-ä.json");
};

// A running SceneBroker and the facts that it printed. The constructor waits until it is ready.
class SceneBroker : public ChildProcess {
 public:
  explicit SceneBroker(const std::string& scene, const std::wstring& options = L"")
      : ChildProcess(TestFolder() + L"SceneBroker.exe" + Quoted(scene) + options) {
    for (std::string line; (line = ReadLine()) != "ready" && !line.empty();) {
      facts_.emplace(line.substr(0, line.find(": ")), line.substr(line.find(": ") + 2));
    }
  }

  // Returns the fact number `index` (from 0) with this key.
  const std::string& Fact(const std::string& key, int index = 0) const {
    const auto [first, last] = facts_.equal_range(key);
    if (std::distance(first, last) <= index)
      throw std::runtime_error("the broker printed no " + key);
    return std::next(first, index)->second;
  }

  // Returns the request with '?' replaced by the broker's process id.
  std::string Request(const std::string& text) const {
    return std::regex_replace(text, std::regex("[?]"), Fact("process"));
  }

  std::string Ask(const std::string& request) const {
    RawClient client(tessel::Wide(Fact("pipe")));
    client.Send(tessel::Wide(Request(request)));
    return tessel::Narrow(client.Receive());
  }

  // Returns a command line of the inspector, for this broker's window or for another window.
  std::wstring InspectorLine(const std::string& command, const std::string& window = "") const {
    return L"tessel.exe " + tessel::Wide(command) + L" --address" + Quoted(Fact("address")) +
           L" --window" + Quoted(window.empty() ? Fact("window") : window);
  }

  // Closes the broker's window and returns the lines of its summary.
  std::string CloseAndReadSummary() {
    ::PostMessageW(tools::HandleFromText(Fact("window")), WM_CLOSE, 0, 0);
    std::string output = ReadToEnd();
    std::erase(output, '\r');
    EXPECT_EQ(Wait(), 0u);
    return output.substr(output.find("handed out: "));
  }

 private:
  std::multimap<std::string, std::string> facts_;
};
