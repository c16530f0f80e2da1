// Shows how the time of an element call is spent: the time of each of the module's steps, such as
// connect or write, compared with the time of the bare system calls of this step.
#include <array>
#include <chrono>
#include <memory>

#include "BareCall.h"
#include "Harness.h"
#include "ResidentServer.h"
#include "TesselCodes.h"
#include "TesselSLB/BrokerPipe.h"
#include "UTILITY/JbPipe.h"
#include "internal/jarchive.h"
#include "wire/Commands.h"
#include "wire/Timeouts.h"

namespace {

using namespace bench;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kSteps = 7;
using Samples = std::array<std::vector<double>, kSteps>;

// Stores the times of the steps of one call. Mark ends a step and starts the next step. The first
// step starts with the construction.
class Steps {
 public:
  explicit Steps(Samples& samples) : samples_(samples) {}
  void Mark() {
    const auto now = Clock::now();
    samples_[next_++].push_back(std::chrono::duration<double, std::micro>(now - last_).count());
    last_ = now;
  }

 private:
  Samples& samples_;
  std::size_t next_ = 0;
  Clock::time_point last_ = Clock::now();
};

void OwnCall(const ResidentServer& server, const wchar_t* object, Samples& samples) {
  Steps steps(samples);
  const std::wstring pipeName = GetBrokerPipeName(SL_TAILORED_URI, server.Address());
  if (!BrokerPipeExists(pipeName, 0 /*wait*/)) Fail("no pipe");
  steps.Mark();
  auto pipe = std::make_unique<CJbPipe>();
  pipe->SetTimeout(wire::kPipeTimeoutMilliseconds);
  pipe->SetPipeName(pipeName);
  pipe->SetAppendProcessId(false);
  if (!pipe->ConnectToServerPipe(0 /*process id*/)) Fail("no connection");
  steps.Mark();
  JArchive request;
  request << static_cast<int>(wire::Command::kAttribute) << 77 << object << L"name";
  std::wstring buffer;
  const std::wstring_view requestText = request.toString(buffer);
  steps.Mark();
  if (!pipe->WriteString(requestText)) Fail("the request is not written");
  steps.Mark();
  PipeMessage message;
  std::wstring_view text;
  if (!pipe->ReadString(message, text)) Fail("the answer is not read");
  steps.Mark();
  {
    JArchive answer;
    int status = 0;
    CComBSTR value;
    answer.fromString(text);
    answer >> status >> value;
  }
  steps.Mark();
  pipe.reset();
  steps.Mark();
}

void BareSteps(const ResidentServer& server, const std::wstring& request, Samples& samples) {
  BareCall call(server.PipeName(), request);
  Steps steps(samples);
  call.Probe();
  steps.Mark();
  call.Connect();
  steps.Mark();
  steps.Mark();  // ends the step "encode", which is empty here
  call.Write();
  steps.Mark();
  call.Read();
  steps.Mark();
  steps.Mark();  // ends the step "decode", which is empty here
  call.Close();
  steps.Mark();
}

Grid::Line LineOf(const char* name, const Samples& samples) {
  Grid::Line line = {name, {}};
  for (const auto& step : samples) line.values.push_back(Summarize(step).median);
  return line;
}

}  // namespace

int main(int count, char** arguments) {
  Report report(count, arguments);
  const ResidentServer server(L"stages", 8 /*instances*/, 0);
  struct {
    const char* name;
    const wchar_t* object;
  } static constexpr kAnswers[] = {{"60 bytes", L"s"}, {"4 KiB", L"m"}, {"1 MiB", L"l"}};
  for (const auto& answer : kAnswers) {
    const std::wstring request = std::wstring(L"[10,77,\"") + answer.object + L"\",\"name\"]";
    Samples own, bare;
    for (int i = 0, rounds = report.Quick() ? 300 : 2000; i < rounds; ++i) {
      OwnCall(server, answer.object, own);
      BareSteps(server, request, bare);
    }
    report.Print({"roundtrip",
                  std::string("where the time goes, microseconds, answer of ") + answer.name,
                  {"", "probe", "connect", "encode", "write", "wait and read", "decode", "close"},
                  {LineOf("the module's steps", own), LineOf("the bare system calls", bare)}});
  }
}
