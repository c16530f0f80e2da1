// Part of SceneBroker, tessel and the endurance programs. Serves a broker's pipe with the system's
// functions, without the module.
//
// To serve a pipe, make a ServerPipe with the name that wire::PipeName returns, and call Serve with
// a function that returns the answer to a request. Serve returns after another thread (a handler of
// Ctrl-C, for example) has called Stop; until then it serves one client at a time. An exchange that
// has begun when Stop is called is finished first, which takes a few seconds at most, and the time
// that the function needs for its answer. A program that must do more than answer, for example
// disconnect at the wrong time, calls Accept, Read, Write and Disconnect itself, in the way of
// Serve.
#pragma once

#include <windows.h>

#include <atomic>
#include <optional>
#include <string>
#include <string_view>

#include "tools/pipe/RequestServer.h"
#include "tools/pipe/Transfer.h"
#include "tools/shared/Handle.h"

namespace tools {

// Converts a message of the pipe to its text, as the module does: a unit of zero ends the text. The
// text may be ill-formed UTF-16.
std::wstring TextOfMessage(std::string_view bytes);
std::string MessageOfText(std::wstring_view text);

// All functions except Stop must be called from one thread.
class ServerPipe : public RequestServer {
 public:
  // Creates the pipe. Throws std::runtime_error if it cannot be created; another broker probably
  // has a pipe with this name.
  explicit ServerPipe(const std::wstring& name);

  void Serve(const AnswerFunction& answer, const SentFunction& sent) override;
  bool Stop() override;

  // Waits until a client connects. Returns false if Stop was called.
  bool Accept();
  // Returns the bytes of the client's next message. Returns nothing if the client left, or sent
  // nothing for 3 seconds.
  std::optional<std::string> Read();
  // Sends the bytes as one message. Returns true when the client has read all of it, and false if
  // the client left or did not read for 3 seconds.
  bool Write(std::string_view bytes);
  // Disconnects the client. Does nothing if no client is connected. Until the next call of Accept,
  // clients find the pipe busy.
  void Disconnect();

  // Sends the bytes and disconnects at once. Of a long message, the client reads at most the
  // beginning.
  void DisconnectDuringWrite(std::string_view bytes);
  // Waits until the client leaves or Stop is called.
  void AwaitLeave();
  // Waits. Returns early if Stop is called.
  void Pause(DWORD milliseconds);

 private:
  BOOL StartWrite(std::string_view bytes);

  const Handle stop_;
  std::atomic<bool> stopped_ = false;
  Handle pipe_;
  Transfer transfer_;
};

}  // namespace tools
