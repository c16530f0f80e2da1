// The server for the benchmarks of calls. It sends fixed answers. It can serve many instances of
// the pipe, so that one instance always listens while other instances answer.
//
// bench_server CLIENT-PROCESS PIPE INSTANCES PAUSE: an instance waits PAUSE milliseconds before it
// listens again. The server ends when the client's process ends.
#include <windows.h>
// shellapi.h needs windows.h before it
#include <shellapi.h>

#include <cwchar>
#include <string>
#include <thread>

namespace {

constexpr std::size_t kSmall = 60 / sizeof(wchar_t);
constexpr std::size_t kMiddle = 4096 / sizeof(wchar_t);
constexpr std::size_t kLarge = (1u << 20) / sizeof(wchar_t);

std::wstring OneText(std::size_t units) {
  return L"[0,\"" + std::wstring(units - 6, L'v') + L"\"]";
}

// Returns items of 20 characters. The last item is longer, so that the answer has exactly `units`
// units.
std::wstring Items(std::size_t units) {
  constexpr std::size_t kItem = 20;
  const std::size_t count = (units - 20) / (kItem + 3);
  std::wstring text = L"[0," + std::to_wstring(count);
  for (std::size_t i = 1; i < count; ++i) text += L",\"" + std::wstring(kItem, L'i') + L"\"";
  return text + L",\"" + std::wstring(units - text.size() - 4, L'j') + L"\"]";
}

// The id of the object in the request selects the answer.
const std::wstring& AnswerTo(const wchar_t* request) {
  static const std::wstring small = OneText(kSmall), middle = OneText(kMiddle),
                            large = OneText(kLarge), middleItems = Items(kMiddle),
                            largeItems = Items(kLarge), other = L"[0,true]";
  const wchar_t* const quote = std::wcschr(request, L'"');
  switch (quote == nullptr ? L'\0' : quote[1]) {
    case L's':
      return small;
    case L'm':
      return middle;
    case L'l':
      return large;
    case L'M':
      return middleItems;
    case L'L':
      return largeItems;
    default:
      return other;
  }
}

void Serve(const wchar_t* name, DWORD instances, DWORD pause) {
  const HANDLE pipe = ::CreateNamedPipeW(
      name, PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, instances,
      0 /*out buffer*/, 0 /*in buffer*/, 20000 /*default time-out*/, nullptr /*security*/);
  for (;;) {
    ::ConnectNamedPipe(pipe, nullptr);
    wchar_t request[1000];
    DWORD bytes = 0;
    if (::ReadFile(pipe, request, sizeof(request) - sizeof(wchar_t), &bytes, nullptr)) {
      request[bytes / sizeof(wchar_t)] = L'\0';
      const std::wstring& answer = AnswerTo(request);
      ::WriteFile(pipe, answer.data(), static_cast<DWORD>(answer.size() * sizeof(wchar_t)), &bytes,
                  nullptr);
      ::FlushFileBuffers(pipe);
    }
    ::DisconnectNamedPipe(pipe);
    if (pause != 0) ::Sleep(pause);
  }
}

}  // namespace

int main() {
  int count = 0;
  wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  if (count != 5) return 2;
  const HANDLE client = ::OpenProcess(SYNCHRONIZE, FALSE, std::stoul(arguments[1]));
  const DWORD instances = std::stoul(arguments[3]);
  const DWORD pause = std::stoul(arguments[4]);
  for (DWORD i = 0; i < instances; ++i) std::thread(Serve, arguments[2], instances, pause).detach();
  ::WaitForSingleObject(client, INFINITE);
  ::ExitProcess(0);  // also ends the threads that still serve
}
