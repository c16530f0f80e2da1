#include "Impostor.h"

#include <stdexcept>

#include "Nonsense.h"
#include "tools/pipe/PipeExchange.h"

namespace soak {

namespace {

constexpr int kMostTries = 4000;  // 20 seconds, because there are 5 ms between two attempts

std::unique_ptr<tools::ServerPipe> TakePipe(const std::wstring& name) {
  for (int i = 1;; ++i) {
    try {
      return std::make_unique<tools::ServerPipe>(name);
    } catch (const std::runtime_error&) {
      if (i == kMostTries) throw;
    }
    ::Sleep(5);
  }
}

}  // namespace

Impostor::Impostor(const std::wstring& pipeName, const Timeline& timeline)
    : timeline_(timeline), pipe_(TakePipe(pipeName)) {}

void Impostor::Stop() {
  pipe_->Stop();
  thread_.join();
}

void Impostor::Serve() {
  for (; pipe_->Accept(); pipe_->Disconnect()) {
    if (pipe_->Read()) pipe_->Write(AllNonsense()[timeline_.At(timeline_.Now()).detail].bytes);
  }
}

void AwaitNoPipe(const std::wstring& pipeName) {
  for (int i = 0; i < kMostTries; ++i) {
    if (!tools::PipeExists(pipeName)) return;
    ::Sleep(5);
  }
  throw std::runtime_error("a pipe does not go");
}

}  // namespace soak
