#include "BrokerLife.h"

#include <fstream>
#include <stdexcept>

namespace soak {

namespace {

std::wstring OwnFolder() {
  wchar_t path[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  return std::filesystem::path(path).parent_path().wstring() + L"\\";
}

std::string Utf8(const std::wstring& text) {
  std::string utf8(text.size() * 3, '\0');
  utf8.resize(static_cast<std::size_t>(
      ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), utf8.data(),
                            static_cast<int>(utf8.size()), nullptr, nullptr)));
  return utf8;
}

std::filesystem::path TemporaryFile(DWORD run, int broker, const wchar_t* name) {
  return std::filesystem::temp_directory_path() /
         (L"soak-" + std::to_wstring(run) + L"-" + Letter(broker) + name);
}

// A name of its own for each life: what a killed process has open goes only with it.
std::filesystem::path LogFile(DWORD run, int broker) {
  static int life = 0;
  return TemporaryFile(run, broker, (L"-" + std::to_wstring(++life) + L".log").c_str());
}

std::filesystem::path WriteScene(DWORD run, int broker) {
  const std::filesystem::path path = TemporaryFile(run, broker, L".json");
  std::string elements;
  for (int i = 0; i < kElements; ++i) {
    const RECT rect = i == 0 ? RECT{0, 0, 640, 480} : ElementRect(i);
    const std::string name = Utf8(ElementName(broker, i));
    elements +=
        std::string(i == 0 ? "" : ",\n") + R"({"id": ")" + Utf8(ElementId(broker, i)) + R"(", )";
    if (i != 0) elements += R"("parent": ")" + Utf8(ElementId(broker, 0)) + R"(", )";
    elements += R"("rect": [)" + std::to_string(rect.left) + "," + std::to_string(rect.top) + "," +
                std::to_string(rect.right) + "," + std::to_string(rect.bottom) +
                R"(], "attributes": {"name": ")" + name + R"(", "type": "Box"}, "items": [")" +
                name + R"( one", ")" + name + R"( two"], "states": {"value": "", "checked": )" +
                R"(false, "selected": ")" + name + R"( one"}})";
  }
  std::ofstream(path, std::ios::binary)
      << R"({"version": 1, "address": ")" << Utf8(SceneAddress(broker, run))
      << R"(", "title": "soak", "elements": [)" << elements << "]}";
  return path;
}

std::wstring CommandLine(DWORD run, int broker) {
  return OwnFolder() + L"SceneBroker.exe \"" + WriteScene(run, broker).wstring() + L"\"";
}

}  // namespace

BrokerLife::BrokerLife(SharedState& state, DWORD run, int broker)
    : program_(CommandLine(run, broker), LogFile(run, broker)) {
  std::string output;
  for (int i = 0; (output = program_.Output()).find("ready") == std::string::npos; ++i) {
    if (i > 3000 || !program_.Runs())
      throw std::runtime_error("a broker does not start: " + output);
    ::Sleep(10);
  }
  const std::string pipeName = Fact(output, "pipe");
  pipeName_.assign(pipeName.begin(), pipeName.end());
  window_ = reinterpret_cast<HWND>(std::stoull(Fact(output, "window"), nullptr, 0));
  state.brokers[broker].window = window_;
  state.brokers[broker].process = std::stoul(Fact(output, "process"));
}

std::string BrokerLife::Fact(const std::string& output, const std::string& key) const {
  const std::size_t start = output.rfind("\n" + key + ": ");
  const std::size_t value = (start == std::string::npos ? 0 : start + 1) + key.size() + 2;
  return output.substr(value, output.find_first_of("\r\n", value) - value);
}

bool BrokerLife::CloseInOrder() const {
  ::PostMessageW(window_, WM_CLOSE, 0, 0);
  const DWORD code = program_.Wait(20000);
  const std::string output = program_.Output();
  const std::string summary = output.substr(std::min(output.rfind("handed out: "), output.size()));
  const bool balanced =
      code == 0 && summary.starts_with("handed out: ") && Fact("\n" + summary, "still held") == "0";
  if (!balanced) std::printf("\na broker ended with code %lu: %s\n", code, summary.c_str());
  return balanced;
}

void Misbehave(const std::wstring& pipeName, Misbehaviour how, DWORD milliseconds,
               std::minstd_rand& random) {
  // None of them is a right answer to a call that hands something out.
  static constexpr const wchar_t* kNonsense[] = {
      L"[77]",     L"nonsense", L"{}", L"[0,2147483647]", L"[\"0\"]", L"[0.0]", L"[[[[[[[[[[[[",
      L"[0,null]", L"\xFEFF",   L"[",  L"[4294967296]"};
  const ULONGLONG end = ::GetTickCount64() + milliseconds;
  const HANDLE event = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HANDLE pipe = INVALID_HANDLE_VALUE;
  while (::GetTickCount64() < end) {
    if (pipe == INVALID_HANDLE_VALUE) {
      pipe = ::CreateNamedPipeW(pipeName.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1, 0, 0, 0,
                                nullptr);
      ::Sleep(5);
      continue;
    }
    OVERLAPPED overlapped = {};
    overlapped.hEvent = event;
    wchar_t request[2000];
    DWORD bytes = 0;
    const auto finish = [&](BOOL done) {
      if (!done && ::GetLastError() == ERROR_PIPE_CONNECTED) return true;
      if (!done && ::GetLastError() != ERROR_IO_PENDING) return false;
      if (::WaitForSingleObject(event, 200) == WAIT_TIMEOUT) ::CancelIo(pipe);
      return ::GetOverlappedResult(pipe, &overlapped, &bytes, TRUE) != 0;
    };
    if (finish(::ConnectNamedPipe(pipe, &overlapped)) &&
        finish(::ReadFile(pipe, request, sizeof(request), nullptr, &overlapped)) &&
        how != Misbehaviour::kVanishes) {
      if (how == Misbehaviour::kIsSlow) ::Sleep(random() % 300);
      const std::wstring answer =
          how == Misbehaviour::kIsSlow ? L"[77]" : kNonsense[random() % std::size(kNonsense)];
      const DWORD size = static_cast<DWORD>(answer.size() * sizeof(wchar_t) - random() % 2);
      if (finish(::WriteFile(pipe, answer.data(), size, nullptr, &overlapped)))
        ::FlushFileBuffers(pipe);
    }
    ::DisconnectNamedPipe(pipe);
  }
  if (pipe != INVALID_HANDLE_VALUE) ::CloseHandle(pipe);
  ::CloseHandle(event);
}

}  // namespace soak
