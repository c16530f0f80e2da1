#include "BrokerLife.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "Scene.h"

namespace soak {

namespace {

constexpr DWORD kEndMilliseconds = 20000;

std::wstring OwnFolder() {
  wchar_t path[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  return std::filesystem::path(path).parent_path().wstring() + L"\\";
}

std::filesystem::path TemporaryFile(DWORD run, int broker, const wchar_t* name) {
  return std::filesystem::temp_directory_path() /
         (L"soak-" + std::to_wstring(run) + L"-" + Letter(broker) + name);
}

// Returns a different file name for each start of a broker, because the broker's killed process may
// still have its file open.
std::filesystem::path LogFile(DWORD run, int broker) {
  static int life = 0;
  return TemporaryFile(run, broker, (L"-" + std::to_wstring(++life) + L".log").c_str());
}

std::wstring CommandLine(DWORD run, int broker, const std::wstring& options) {
  const std::filesystem::path scene = TemporaryFile(run, broker, L".json");
  std::ofstream(scene, std::ios::binary) << SceneText(broker, run);
  return OwnFolder() + L"SceneBroker.exe \"" + scene.wstring() + L"\"" + options;
}

}  // namespace

BrokerLife::BrokerLife(DWORD run, int broker, const std::wstring& options)
    : program_(CommandLine(run, broker, options), LogFile(run, broker)) {
  const std::string output = OutputUntilReady();
  const std::string pipeName = Fact(output, "pipe");
  pipeName_.assign(pipeName.begin(), pipeName.end());
  life_.window = static_cast<DWORD>(std::stoull(Fact(output, "window"), nullptr, 0));
  life_.process = std::stoul(Fact(output, "process"));
}

std::string BrokerLife::OutputUntilReady() const {
  for (int i = 0;; ++i) {
    // Look whether the broker runs before reading its output, because a broker may crash as soon as
    // it has printed "ready".
    const bool runs = program_.Runs();
    const std::string output = program_.Output();
    if (output.find("ready") != std::string::npos) return output;
    if (i > 3000 || !runs) throw std::runtime_error("a broker does not start: " + output);
    ::Sleep(10);
  }
}

std::string BrokerLife::Fact(const std::string& output, const std::string& key) const {
  const std::size_t start = output.rfind("\n" + key + ": ");
  const std::size_t value = (start == std::string::npos ? 0 : start + 1) + key.size() + 2;
  return output.substr(value, output.find_first_of("\r\n", value) - value);
}

void BrokerLife::Kill() const {
  program_.Kill();
  program_.Wait(kEndMilliseconds);
}

DWORD BrokerLife::AwaitEnd() const { return program_.Wait(kEndMilliseconds); }

bool BrokerLife::CloseInOrder() const {
  ::PostMessageW(reinterpret_cast<HWND>(static_cast<ULONG_PTR>(life_.window)), WM_CLOSE, 0, 0);
  const DWORD code = program_.Wait(kEndMilliseconds);
  const std::string output = program_.Output();
  const std::string summary = output.substr(std::min(output.rfind("handed out: "), output.size()));
  const bool balanced =
      code == 0 && summary.starts_with("handed out: ") && Fact("\n" + summary, "still held") == "0";
  if (!balanced) std::printf("\na broker ended with code %lu: %s\n", code, summary.c_str());
  return balanced;
}

long BrokerLife::FaultCount() const {
  const std::string output = program_.Output(), line = "\nfault: ";
  long count = 0;
  for (std::size_t i = 0; (i = output.find(line, i)) != std::string::npos; i += line.size())
    ++count;
  return count;
}

}  // namespace soak
