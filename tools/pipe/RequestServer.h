// Part of SceneBroker and tessel. What all servers of a broker's pipe have in common.
#pragma once

#include <functional>
#include <string>

namespace tools {

class RequestServer {
 public:
  using AnswerFunction = std::function<std::wstring(const std::wstring& request)>;
  using SentFunction = std::function<void(bool delivered)>;

  virtual ~RequestServer() = default;

  // Serves one client after the other until Stop is called. Passes each request to `answer`, and
  // sends the text that `answer` returns. If this text is empty, disconnects the client without an
  // answer. Then calls `sent`: with true if the client received the text, otherwise with false.
  // Calls both functions on the thread that called Serve.
  virtual void Serve(const AnswerFunction& answer, const SentFunction& sent) = 0;

  // Ends Serve. May be called from any thread, any number of times, also before Serve. Returns true
  // for the first call, and false for later calls, which do nothing.
  virtual bool Stop() = 0;
};

}  // namespace tools
