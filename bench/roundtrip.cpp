// Measures an element call of the public interface to a running server. Compares the call with the
// system calls that it consists of, and with CallNamedPipeW, the system function that connects,
// writes, reads and closes in one call.
#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <utility>

#include "BareCall.h"
#include "Harness.h"
#include "ResidentServer.h"
#include "TesselSilverlight.h"

namespace {

using namespace bench;
using namespace TesselSilverlight;

// The answers of the server, see server.cpp. The object id in the request selects the answer.
struct Answer {
  const char* name;
  wchar_t text;  // the object id that selects an answer with one text
  // The object id that selects an answer of the same size with many items. 0: no such answer.
  wchar_t items;
  std::size_t bytes;
};
constexpr Answer kAnswers[] = {
    {"60 bytes", L's', 0, 60}, {"4 KiB", L'm', L'M', 4096}, {"1 MiB", L'l', L'L', 1u << 20}};

class Element {
 public:
  Element(const ResidentServer& server, wchar_t object) {
    record_.processId = 77;
    record_.hwnd = ::GetDesktopWindow();
    record_.objectId = ::SysAllocStringLen(&object, 1);
    record_.uriScheme = SL_TAILORED_URI;
    record_.sourceUri = server.Address().c_str();
  }
  // Frees and clears the id, so that the destructor of `record_` does not ask the server to release
  // an object. The server has no objects.
  ~Element() { ::SysFreeString(std::exchange(record_.objectId, nullptr)); }

  // ReadAttribute and ReadItems return the number of UTF-16 units that they received.
  std::size_t ReadAttribute() const {
    static wchar_t name[] = L"name";
    wchar_t* value = nullptr;
    if (GetAttribute(record_, name, &value) != SL_SUCCESS) Fail("GetAttribute");
    const std::size_t units = ::SysStringLen(value);
    ::SysFreeString(value);
    return units;
  }
  std::size_t ReadItems() const {
    std::vector<CComBSTR, HeapAllocator<CComBSTR>> items;
    if (GetItems(record_, 1, items) != SL_SUCCESS) Fail("GetItems");
    std::size_t units = 0;
    for (const CComBSTR& item : items) units += item.Length();
    return units;
  }

 private:
  SLElemData record_;
};

std::wstring RequestOf(wchar_t object) {
  return L"[10,77,\"" + std::wstring(1, object) + L"\",\"name\"]";
}

// Different ways to send the same request and get the same answer.
struct Ways {
  Ways(const ResidentServer& server, const Answer& answer)
      : pipeName(server.PipeName()),
        bytes(answer.bytes),
        request(RequestOf(answer.text)),
        buffer(answer.bytes),
        element(server, answer.text) {}

  void Bare() {
    if (BareCall(pipeName, request).Run() != bytes) Fail("bare: another answer");
  }
  void SleepingCall() {
    if (BareCall(pipeName, request, WhileBusy::kSleep).Run() != bytes) Fail("bare: another answer");
  }
  void Call() {
    if (element.ReadAttribute() != bytes / sizeof(wchar_t) - 6) Fail("call: another answer");
  }
  void OneCall() {
    DWORD read = 0;
    if (!::CallNamedPipeW(pipeName.c_str(), request.data(),
                          static_cast<DWORD>(request.size() * sizeof(wchar_t)), buffer.data(),
                          static_cast<DWORD>(buffer.size()), &read, NMPWAIT_USE_DEFAULT_WAIT) ||
        read != bytes)
      Fail("CallNamedPipeW");
  }

  const std::wstring& pipeName;
  const std::size_t bytes;
  std::wstring request;
  std::vector<char> buffer;
  const Element element;
};

constexpr const char* kBare = "the bare system calls";
constexpr const char* kSleeping = "bare calls, 50 ms sleep while busy";
constexpr const char* kCall = "element call, one text";
constexpr const char* kOneCall = "CallNamedPipeW";

void MeasureOneThread(Report& report, const ResidentServer& server) {
  for (const Answer& answer : kAnswers) {
    Ways ways(server, answer);
    Table table = {
        "roundtrip",
        std::string("one thread, answer of ") + answer.name,
        {MakeRow(kBare, [&ways] { ways.Bare(); }), MakeRow(kCall, [&ways] { ways.Call(); }),
         MakeRow(kOneCall, [&ways] { ways.OneCall(); })},
        0,
        Sampling::kCalls,
        report.Quick() ? 250u : 2500u};
    const Element ofItems(server, answer.items);
    if (answer.items != 0) {
      table.rows.push_back(MakeRow("element call, items of 20 characters", [&ofItems, &answer] {
        if (ofItems.ReadItems() < answer.bytes / sizeof(wchar_t) * 4 / 5)
          Fail("items: another answer");
      }));
    }
    report.Measure(table);
  }
}

// All threads make their calls at the same time. A sample is the total time divided by the number
// of calls.
Row MakeThreadsRow(const char* name, const ResidentServer& server, int threads,
                   void (Ways::*way)()) {
  constexpr int kCalls = 25;
  return MakeRow(
      name,
      [&server, threads, way] {
        std::vector<std::thread> clients;
        for (int i = 0; i < threads; ++i) {
          clients.emplace_back([&server, way] {
            Ways ways(server, kAnswers[0]);
            for (int call = 0; call < kCalls; ++call) (ways.*way)();
          });
        }
        for (std::thread& client : clients) client.join();
      },
      static_cast<std::size_t>(threads * kCalls));
}

void MeasureThreads(Report& report, const ResidentServer& server) {
  for (const int threads : {4, 8}) {
    report.Measure({"roundtrip",
                    std::to_string(threads) + " threads, answer of 60 bytes, time per call",
                    {MakeThreadsRow(kBare, server, threads, &Ways::Bare),
                     MakeThreadsRow(kCall, server, threads, &Ways::Call),
                     MakeThreadsRow(kOneCall, server, threads, &Ways::OneCall)}});
  }
}

void MeasureSlowServer(Report& report) {
  const ResidentServer server(L"slow", 1 /*instance*/, 5 /*ms*/);
  Ways ways(server, kAnswers[0]);
  report.Measure(
      {"roundtrip",
       "a server that listens again after 5 ms, answer of 60 bytes",
       {MakeRow(kOneCall, [&ways] { ways.OneCall(); }), MakeRow(kCall, [&ways] { ways.Call(); }),
        MakeRow(kBare, [&ways] { ways.Bare(); }),
        MakeRow(kSleeping, [&ways] { ways.SleepingCall(); })},
       0,
       Sampling::kCalls,
       report.Quick() ? 20u : 100u});
}

// Makes the calls of one thread. Returns the time of each call in seconds.
std::vector<double> TimeCalls(const ResidentServer& server, void (Ways::*way)(), int calls) {
  using Clock = std::chrono::steady_clock;
  Ways ways(server, kAnswers[0]);
  std::vector<double> samples;
  for (int i = 0; i < calls; ++i) {
    const auto start = Clock::now();
    (ways.*way)();
    samples.push_back(std::chrono::duration<double>(Clock::now() - start).count());
  }
  return samples;
}

// Makes the calls of all threads and appends their times. A call that fails ends the program.
void TimeThreads(const ResidentServer& server, void (Ways::*way)(), std::vector<double>& samples) {
  constexpr int kThreads = 8, kCalls = 25;
  std::vector<std::future<std::vector<double>>> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.push_back(std::async(std::launch::async, TimeCalls, std::cref(server), way, kCalls));
  for (auto& thread : threads) {
    const std::vector<double> times = thread.get();
    samples.insert(samples.end(), times.begin(), times.end());
  }
}

// Measures 8 threads whose calls share one instance of the pipe. Leaves out CallNamedPipeW, because
// it fails if another client takes the free instance first.
void MeasureOneInstance(Report& report, const wchar_t* host, unsigned pause, const char* title) {
  struct {
    const char* name;
    void (Ways::*way)();
    std::vector<double> samples;
  } rows[] = {
      {kSleeping, &Ways::SleepingCall, {}}, {kCall, &Ways::Call, {}}, {kBare, &Ways::Bare, {}}};
  const ResidentServer server(host, 1 /*instance*/, pause);
  const int rounds = report.Quick() ? 1 : 8;
  for (int round = 0; round < rounds; ++round) {
    for (auto& row : rows) TimeThreads(server, row.way, row.samples);
  }
  Grid grid = {"roundtrip", title, {"", "median, ms", "p99, ms", "p99 ratio", "slowest, ms"}, {}};
  const double base = Summarize(rows[0].samples).percentile99;
  for (const auto& row : rows) {
    const Statistics statistics = Summarize(row.samples);
    grid.lines.push_back(
        {row.name,
         {statistics.median * 1e3, statistics.percentile99 * 1e3, statistics.percentile99 / base,
          *std::max_element(row.samples.begin(), row.samples.end()) * 1e3}});
  }
  report.Print(grid);
}

}  // namespace

int main(int count, char** arguments) {
  Report report(count, arguments);
  const ResidentServer server(L"resident", 24 /*instances*/, 0);
  MeasureOneThread(report, server);
  MeasureThreads(report, server);
  MeasureSlowServer(report);
  MeasureOneInstance(report, L"one-slow", 5 /*ms*/,
                     "8 threads, one instance that listens again after 5 ms, one call");
  MeasureOneInstance(report, L"one-quick", 0 /*ms*/,
                     "8 threads, one instance that listens again at once, one call");
}
