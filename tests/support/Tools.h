// The two tools as processes that a test starts, asks and ends.
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

// As an argument, which its process reads back as the same text.
inline std::wstring Quoted(const std::string& text) {
  std::wstring argument = L" \"";
  std::size_t backslashes = 0;
  for (const wchar_t character : tools::Wide(text)) {
    if (character == L'"') argument.append(backslashes + 1, L'\\');
    backslashes = character == L'\\' ? backslashes + 1 : 0;
    argument += character;
  }
  return argument.append(backslashes, L'\\') + L'"';
}

// Exit code and output. What a tool says of its waiting on a busy machine is left out.
inline std::pair<DWORD, std::string> ToolOutput(const std::wstring& commandLine) {
  ChildProcess process(TestFolder() + commandLine);
  std::string text = process.ReadToEnd();
  std::erase(text, '\r');
  text = std::regex_replace(text, std::regex("tessel: waiting for [^\n]*\n"), "");
  return {process.Wait(), text};
}

// Expects the whole output of a success, a part of that of a failure.
inline void RunTool(const std::wstring& commandLine, DWORD code, const std::string& output) {
  const auto [exitCode, text] = ToolOutput(commandLine);
  EXPECT_EQ(exitCode, code) << tools::Narrow(commandLine);
  EXPECT_TRUE(code == 0 ? text == output : text.find(output) != text.npos)
      << tools::Narrow(commandLine) << ": " << text;
}

struct SceneFile {
  explicit SceneFile(const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
  ~SceneFile() { std::filesystem::remove(path); }
  const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     (std::to_wstring(::GetCurrentProcessId()) + L"-scene-ä.json");
};

// A SceneBroker that is ready, with the facts that it printed.
class SceneBroker : public ChildProcess {
 public:
  explicit SceneBroker(const std::string& scene, const std::wstring& options = L"")
      : ChildProcess(TestFolder() + L"SceneBroker.exe" + Quoted(scene) + options) {
    for (std::string line; (line = ReadLine()) != "ready" && !line.empty();) {
      facts_.emplace(line.substr(0, line.find(": ")), line.substr(line.find(": ") + 2));
    }
  }

  // The first of a key, or a later one.
  const std::string& Fact(const std::string& key, int index = 0) const {
    const auto [first, last] = facts_.equal_range(key);
    if (std::distance(first, last) <= index)
      throw std::runtime_error("the broker printed no " + key);
    return std::next(first, index)->second;
  }

  // A request's text, in which '?' stands for the broker's process.
  std::string Request(const std::string& text) const {
    return std::regex_replace(text, std::regex("[?]"), Fact("process"));
  }

  std::string Ask(const std::string& request) const {
    RawClient client(tools::Wide(Fact("pipe")));
    client.Send(tools::Wide(Request(request)));
    return tools::Narrow(client.Receive());
  }

  // Runs the inspector's command on its window, or on another one.
  std::wstring InspectorLine(const std::string& command, const std::string& window = "") const {
    return L"tessel.exe " + tools::Wide(command) + L" --address" + Quoted(Fact("address")) +
           L" --window" + Quoted(window.empty() ? Fact("window") : window);
  }

  // The lines behind the served ones, after its window was closed.
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
