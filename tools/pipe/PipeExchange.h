// Part of tessel and the endurance programs. Sends one request to a pipe and reads the answer,
// without the module and within a time limit, whatever the server of the pipe does.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>

namespace tools {

enum class PipeEnd {
  kAnswered,     // an answer has arrived
  kAbsent,       // there is no such pipe
  kDenied,       // this user may not open the pipe
  kBusy,         // the pipe's only instance served other clients all the time
  kNotMessages,  // the pipe transfers bytes instead of messages
  kLeft,         // the server closed the connection without an answer
  kSilent,       // no answer came in time
  kTooLong,      // the answer is longer than the caller allows
};

struct PipeExchange {
  PipeEnd end;
  DWORD serverProcess;  // 0 if the pipe could not be opened
  std::wstring answer;
};

// Does not connect to the pipe.
bool PipeExists(const std::wstring& pipe);

// Connects to the pipe and disconnects at once. Returns the process id of the server, or 0 if the
// pipe cannot be opened now.
DWORD ServerOf(const std::wstring& pipe);

// Returns at the latest when GetTickCount64() reaches `deadline`. The answer may have at most
// `longest` UTF-16 units.
PipeExchange ExchangeMessages(const std::wstring& pipe, const std::wstring& request,
                              ULONGLONG deadline, std::size_t longest);

}  // namespace tools
