#include "tools/recording/Recorder.h"

#include <chrono>
#include <cmath>
#include <cstdio>

#include "tools/recording/RecordingLines.h"
#include "tools/shared/ConsoleText.h"

namespace tools {
namespace {

using Clock = std::chrono::steady_clock;

std::string TimeNow() {
  SYSTEMTIME now;
  ::GetSystemTime(&now);
  char text[64];
  std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", now.wYear, now.wMonth,
                now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
  return text;
}

// Rounds to microseconds, because more digits only make the line longer.
double MillisecondsSince(Clock::time_point start) {
  const std::chrono::duration<double, std::micro> passed = Clock::now() - start;
  return std::round(passed.count()) / 1000;
}

[[noreturn]] void Fail(const std::string& path, const std::string& what, const std::string& cure) {
  throw RecordingError(path + ": cannot " + what + " (error " + std::to_string(::GetLastError()) +
                       "); " + cure);
}

// Never replaces a file, because a recording of a rare failure cannot be made again.
HANDLE CreateNew(const std::wstring& path) {
  const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr /*template*/);
  if (file != INVALID_HANDLE_VALUE) return file;
  const std::string name = tessel::Narrow(path);
  if (::GetLastError() == ERROR_FILE_EXISTS) {
    throw RecordingError(name + ": the file exists; remove it, or choose another name");
  }
  Fail(name, "create the file", "check the path");
}

}  // namespace

Recorder::Recorder(const std::wstring& path)
    : path_(tessel::Narrow(path)), file_(CreateNew(path)) {}

void Recorder::Begin(const RecordingHeader& header) { Write(LineOf(header)); }

Exchange Recorder::Record(const std::wstring& request,
                          const std::function<std::wstring(const std::wstring&)>& answer) {
  Exchange exchange = {TimeNow(), request, {}, 0};
  const auto start = Clock::now();
  exchange.answer = answer(request);
  exchange.milliseconds = MillisecondsSince(start);
  Write(LineOf(exchange));
  ++exchanges_;
  return exchange;
}

void Recorder::Write(const std::string& line) {
  const std::string text = line + '\n';
  DWORD written = 0;
  const BOOL ok = ::WriteFile(file_.get(), text.data(), static_cast<DWORD>(text.size()), &written,
                              nullptr /*overlapped*/);
  if (!ok || written != text.size()) {
    Fail(path_, "write the file", "make room on the disk, and record again");
  }
}

}  // namespace tools
