#include "tools/pipe/ServerPipe.h"

#include <sddl.h>

#include <array>
#include <stdexcept>

namespace tools {

namespace {

// Clients of low integrity must be able to open the pipe.
constexpr wchar_t kSecurity[] = L"S:(ML;;NW;;;LW)D:(A;;0x1F01FF;;;WD)";

constexpr DWORD kExchangeMilliseconds = 3000;
constexpr DWORD kPauseAfterFailureMilliseconds = 10;
constexpr DWORD kLeaveCheckMilliseconds = 10;  // how often to check whether the client has left

HANDLE NewEvent() {
  return ::CreateEventW(nullptr, TRUE /*manual reset*/, FALSE /*signalled*/, nullptr);
}

HANDLE CreatePipe(const std::wstring& name) {
  SECURITY_ATTRIBUTES attributes = {sizeof(attributes), nullptr, FALSE /*inherit*/};
  if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(
          kSecurity, SDDL_REVISION_1, &attributes.lpSecurityDescriptor, nullptr /*size*/)) {
    return INVALID_HANDLE_VALUE;
  }
  const HANDLE pipe = ::CreateNamedPipeW(
      name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
      PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1 /*instances*/, 0 /*output buffer*/,
      0 /*input buffer*/, 0 /*default time-out*/, &attributes);
  const DWORD error = ::GetLastError();
  ::LocalFree(attributes.lpSecurityDescriptor);
  ::SetLastError(error);
  return pipe;
}

}  // namespace

std::wstring TextOfMessage(std::string_view bytes) {
  std::wstring text((bytes.size() + 1) / sizeof(wchar_t), L'\0');
  bytes.copy(reinterpret_cast<char*>(text.data()), bytes.size());
  return text.substr(0, text.find(L'\0'));
}

std::string MessageOfText(std::wstring_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

ServerPipe::ServerPipe(const std::wstring& name) : stop_(NewEvent()) {
  const HANDLE pipe = CreatePipe(name);
  if (pipe == INVALID_HANDLE_VALUE) {
    throw std::runtime_error("cannot create the pipe (error " + std::to_string(::GetLastError()) +
                             "): another broker or a tap serves it; end that one first");
  }
  pipe_.reset(pipe);
}

void ServerPipe::Serve(const AnswerFunction& answer, const SentFunction& sent) {
  for (; Accept(); Disconnect()) {
    const auto request = Read();
    if (!request) continue;
    const std::string message = MessageOfText(answer(TextOfMessage(*request)));
    sent(!message.empty() && Write(message));
  }
}

bool ServerPipe::Stop() {
  if (stopped_.exchange(true)) return false;
  ::SetEvent(stop_.get());
  return true;
}

bool ServerPipe::Accept() {
  while (!stopped_) {
    const Transfer::Outcome outcome =
        transfer_.Finish(pipe_.get(), ::ConnectNamedPipe(pipe_.get(), transfer_.Overlapped()),
                         INFINITE, stop_.get());
    if (outcome.error == ERROR_SUCCESS || outcome.error == ERROR_PIPE_CONNECTED) return true;
    // A client that connects while Stop is called stays connected until the pipe is closed.
    if (stopped_) break;
    // A client that has already left occupies the pipe until it is disconnected.
    Disconnect();
    if (outcome.error != ERROR_NO_DATA) Pause(kPauseAfterFailureMilliseconds);
  }
  return false;
}

std::optional<std::string> ServerPipe::Read() {
  std::string message;
  std::array<char, 4096> part;
  for (;;) {
    const auto size = static_cast<DWORD>(part.size());
    const BOOL started =
        ::ReadFile(pipe_.get(), part.data(), size, nullptr, transfer_.Overlapped());
    const Transfer::Outcome outcome = transfer_.Finish(pipe_.get(), started, kExchangeMilliseconds);
    if (outcome.error != ERROR_SUCCESS && outcome.error != ERROR_MORE_DATA) return std::nullopt;
    message.append(part.data(), outcome.bytes);
    if (outcome.error == ERROR_SUCCESS) return message;
  }
}

bool ServerPipe::Write(std::string_view bytes) {
  const BOOL started = StartWrite(bytes);
  if (transfer_.Finish(pipe_.get(), started, kExchangeMilliseconds).error != ERROR_SUCCESS) {
    return false;
  }
  return ::FlushFileBuffers(pipe_.get()) != 0;
}

void ServerPipe::Disconnect() { ::DisconnectNamedPipe(pipe_.get()); }

void ServerPipe::DisconnectDuringWrite(std::string_view bytes) {
  const BOOL started = StartWrite(bytes);
  Disconnect();
  transfer_.Finish(pipe_.get(), started, INFINITE);
}

void ServerPipe::AwaitLeave() {
  while (!stopped_ &&
         ::PeekNamedPipe(pipe_.get(), nullptr /*buffer*/, 0, nullptr, nullptr, nullptr))
    Pause(kLeaveCheckMilliseconds);
}

void ServerPipe::Pause(DWORD milliseconds) { ::WaitForSingleObject(stop_.get(), milliseconds); }

BOOL ServerPipe::StartWrite(std::string_view bytes) {
  return ::WriteFile(pipe_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), nullptr,
                     transfer_.Overlapped());
}

}  // namespace tools
