// Measures how long the command `tessel tree` takes with different options, for a scene of 1,000
// elements that SceneBroker serves. SceneBroker prints a line for each request, so the number of
// these lines is the number of calls.
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "Harness.h"
#include "ResidentServer.h"

namespace {

using namespace bench;
using Path = std::filesystem::path;

constexpr int kPanels = 9, kFields = 110;
constexpr int kElements = 1 + kPanels + kPanels * kFields;

Path ProgramFolder() {
  wchar_t path[1000];
  return Path(std::wstring(path, ::GetModuleFileNameW(nullptr, path, 1000))).parent_path();
}

Path OwnFile(const wchar_t* end) {
  return std::filesystem::temp_directory_path() /
         (L"bench-tree-" + std::to_wstring(::GetCurrentProcessId()) + end);
}

std::string Element(const std::string& id, const std::string& parent, int size,
                    const std::string& rest) {
  return R"({"id": ")" + id + R"(", "parent": ")" + parent + R"(", "rect": [0, 0, )" +
         std::to_string(size) + ", 20], " + rest +
         R"("attributes": {"name": "A name", "type": "B"}})";
}

// A page with panels that have fields. Every tenth field is a list.
std::string Scene(const std::string& address) {
  std::string scene = R"({"version": 1, "title": ")" + address + R"(", "address": ")" + address +
                      R"(", "elements": [{"id": "page", "rect": [0, 0, 900, 700]})";
  for (int i = 0; i < kPanels; ++i) {
    const std::string panel = "panel" + std::to_string(i);
    scene += ",\n" + Element(panel, "page", 800, "");
    for (int j = 0; j < kFields; ++j) {
      scene += ",\n" + Element(panel + "-" + std::to_string(j), panel, 50,
                               j % 10 == 0 ? R"("items": ["one", "two"], )" : "");
    }
  }
  return scene + "]}\n";
}

// A process whose output goes to a file.
class Program {
 public:
  Program(const wchar_t* name, const std::wstring& arguments, const Path& outputFile) {
    SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
    const HANDLE output = ::CreateFileW(outputFile.c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                        &inherit, CREATE_ALWAYS, 0, nullptr /*template*/);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = output;
    std::wstring commandLine = L"\"" + (ProgramFolder() / name).wstring() + L"\" " + arguments;
    if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE /*inherit*/, 0,
                          nullptr, nullptr, &startup, &process_))
      Fail("a program does not start");
    ::CloseHandle(output);
  }
  ~Program() {
    ::TerminateProcess(process_.hProcess, 1);
    Wait();
    ::CloseHandle(process_.hThread);
    ::CloseHandle(process_.hProcess);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  DWORD Wait() const {
    DWORD code = 1;
    ::WaitForSingleObject(process_.hProcess, INFINITE);
    ::GetExitCodeProcess(process_.hProcess, &code);
    return code;
  }

 private:
  PROCESS_INFORMATION process_ = {};
};

std::ptrdiff_t CountLines(const Path& file, const std::string& begin) {
  std::ifstream lines(file);
  std::ptrdiff_t count = 0;
  for (std::string line; std::getline(lines, line);) count += line.starts_with(begin);
  return count;
}

// One way to call `tessel tree`.
struct Choice {
  const char* name;
  std::wstring options;
  std::vector<double> seconds = {};
  std::ptrdiff_t calls = 0;

  void Run(const std::wstring& content, const Path& brokerOutput) {
    using Clock = std::chrono::steady_clock;
    const std::ptrdiff_t before = CountLines(brokerOutput, "served: ");
    const auto start = Clock::now();
    const Program tessel(L"tessel.exe", L"tree --json " + options + content, OwnFile(L".out"));
    if (tessel.Wait() != 0) Fail("tessel fails");
    seconds.push_back(std::chrono::duration<double>(Clock::now() - start).count());
    calls = CountLines(brokerOutput, "served: ") - before;
  }
};

}  // namespace

int main(int count, char** arguments) {
  Report report(count, arguments);
  const std::string address = "bench-tree-" + std::to_string(::GetCurrentProcessId());
  const Path scene = OwnFile(L".json"), brokerOutput = OwnFile(L".txt"), picture = OwnFile(L".svg");
  std::ofstream(scene) << Scene(address);
  Choice choices[] = {{"everything, the default", L""},
                      {"--read parents", L"--read parents"},
                      {"--read attributes", L"--read attributes"},
                      {"--read items", L"--read items"},
                      {"--read states", L"--read states"},
                      {"--svg", L"--svg \"" + picture.wstring() + L"\""}};
  {
    const Program broker(L"SceneBroker.exe", L"\"" + scene.wstring() + L"\"", brokerOutput);
    for (int i = 0; CountLines(brokerOutput, "ready") == 0; ++i) {
      if (i == 1000) Fail("SceneBroker does not start");
      ::Sleep(100);
    }
    const std::wstring name(address.begin(), address.end());
    const int rounds = report.Quick() ? 1 : 5;
    for (int round = 0; round < rounds; ++round) {
      // Each round begins with another choice, because other load on the machine may come and go.
      for (std::size_t i = 0; i < std::size(choices); ++i) {
        choices[(i + static_cast<std::size_t>(round)) % std::size(choices)].Run(
            L" --window " + name + L" --address " + name, brokerOutput);
      }
    }
  }
  Grid grid = {
      "tree", "a scene of 1,000 elements", {"", "calls per element", "median, s", "ratio"}, {}};
  const double base = Summarize(choices[0].seconds).median;
  for (const Choice& choice : choices) {
    const double median = Summarize(choice.seconds).median;
    grid.lines.push_back(
        {choice.name, {static_cast<double>(choice.calls) / kElements, median, median / base}});
  }
  report.Print(grid);
  for (const Path& file : {scene, brokerOutput, picture, OwnFile(L".out")})
    std::filesystem::remove(file);
}
