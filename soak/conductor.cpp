// soak_conductor [MINUTES] [SEED] controls an endurance run. MINUTES includes the warm-up. Two
// client processes call two brokers all the time, while the brokers fail at random in every way.
// Prints a verdict at the end.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <memory>
#include <random>

#include "Deadline.h"
#include "FaultyBroker.h"
#include "Progress.h"

namespace {

using namespace soak;

// How often each failure happens, relative to the others. The first kEvents numbers are for the
// events, the other numbers for the faults. The fault "hang" is rare, because it takes long.
constexpr int kWeights[kEvents + kFaults] = {6, 6, 6, 10, 3, 1, 4, 4, 3, 3, 3, 3, 3, 3, 3, 3, 4};

std::wstring OwnProgram(const wchar_t* name) {
  wchar_t path[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  return (std::filesystem::path(path).parent_path() / name).wstring();
}

class Conductor {
 public:
  Conductor(double minutes, unsigned seed) : minutes_(minutes), seed_(seed), random_(seed) {
    for (int i = 0; i < kBrokers; ++i)
      brokers_[i] = std::make_unique<FaultyBroker>(*state_, run_, i);
    for (int i = 0; i < kClients; ++i) {
      const std::wstring line = L"\"" + OwnProgram(L"soak_client.exe") + L"\" " +
                                std::to_wstring(run_) + L" " + std::to_wstring(i) + L" " +
                                std::to_wstring(seed + static_cast<unsigned>(i));
      clients_[i] = std::make_unique<Program>(
          line, std::filesystem::temp_directory_path() /
                    (L"soak-" + std::to_wstring(run_) + L"-client" + std::to_wstring(i) + L".log"));
    }
  }

  int Run() {
    progress_.Show();
    WarmUp();
    const ULONGLONG end = EndOfRun(start_, minutes_);
    progress_.SetEnd(end);
    while (::GetTickCount64() < end && ClientsRun()) DisturbAtRandom();
    return Judge();
  }

 private:
  bool ClientsRun() const {
    for (const auto& client : clients_) {
      if (!client->Runs()) return false;
    }
    return true;
  }

  // Makes every kind of failure happen once. Then makes random failures until the clients have
  // finished their own warm-up, in which they count their resources for the first time.
  void WarmUp() {
    for (int failure = 0; failure < kEvents + kFaults; ++failure)
      Disturb(*brokers_[failure % kBrokers], failure);
    brokers_[0]->SendAllNonsense();
    state_->warm = 1;
    while (state_->ready < kClients && ClientsRun()) DisturbAtRandom();
  }

  void DisturbAtRandom() {
    ::Sleep(300 + random_() % 1500);
    Disturb(*brokers_[random_() % kBrokers], anyFailure_(random_));
  }

  // `failure` is the value of an Event, or kEvents plus the value of a FaultKind.
  void Disturb(FaultyBroker& broker, int failure) {
    if (failure < kEvents) {
      broker.RunEvent(static_cast<Event>(failure), random_);
      ++events_[failure];
    } else {
      broker.RunFault(static_cast<tools::FaultKind>(failure - kEvents), random_);
    }
  }

  int Judge() {
    state_->stop = 1;
    bool good = true;
    std::string clients;
    for (const auto& client : clients_) {
      good = client->Wait(60000) == 0 && good;
      clients += client->Output();
    }
    // The clients have ended, so the brokers must have got back every object.
    long ended = 0, unbalanced = 0;
    for (const auto& broker : brokers_) {
      broker->EndInOrder();
      ended += broker->Ended();
      unbalanced += broker->Unbalanced();
    }
    progress_.Hide();
    std::printf("%s", clients.c_str());
    PrintFigures(ended, unbalanced);
    good = PrintFaults() && good;
    good = good && state_->wrong == 0 && state_->unexpected == 0 && unbalanced == 0;
    std::printf("verdict of the clients: %s\n", good ? "nothing lost" : "LOST");
    return good ? 0 : 1;
  }

  void PrintFigures(long ended, long unbalanced) const {
    std::printf("seed %u: %lld calls; codes by the phase of the broker:\n%s", seed_,
                progress_.Calls(), progress_.Table().c_str());
    std::printf("brokers:");
    for (int i = 0; i < kEvents; ++i)
      std::printf("%s %s %ld", i == 0 ? "" : ",", kEventNames[i], events_[i]);
    std::printf("\n");
    const long reports = state_->reports;
    for (long i = 0; i < reports && i < SharedState::kReports; ++i)
      std::printf("! %s\n", state_->report[i]);
    std::printf(
        "wrong answers %lld, unexpected codes %lld, broker lives that ended in order %ld, of these "
        "with objects left %ld\n",
        state_->wrong.load(), state_->unexpected.load(), ended, unbalanced);
  }

  // Prints how many requests each fault has hit. Returns false if a fault has not happened.
  bool PrintFaults() const {
    bool all = true;
    std::printf("faults:");
    for (std::size_t i = 0; i < kFaults; ++i) {
      long count = 0;
      for (const auto& broker : brokers_) count += broker->FaultCounts()[i];
      std::printf("%s %s %ld", i == 0 ? "" : ",", tools::kFaultForms[i].name, count);
      all = all && count > 0;
    }
    std::printf("%s\n", all ? "; each has happened" : "; NOT EACH HAS HAPPENED");
    return all;
  }

  const DWORD run_ = ::GetCurrentProcessId();
  const SharedMemory state_{run_};
  const ULONGLONG start_ = ::GetTickCount64();
  const double minutes_;
  const unsigned seed_;
  std::minstd_rand random_;
  std::discrete_distribution<int> anyFailure_{std::begin(kWeights), std::end(kWeights)};
  Progress progress_{*state_};
  std::unique_ptr<FaultyBroker> brokers_[kBrokers];
  std::unique_ptr<Program> clients_[kClients];
  long events_[kEvents] = {};
};

}  // namespace

int main(int count, char** arguments) {
  const double minutes = count > 1 ? std::atof(arguments[1]) : 5;
  const unsigned seed = count > 2 ? static_cast<unsigned>(std::strtoul(arguments[2], nullptr, 10))
                                  : std::random_device()();
  std::printf("seed %u, %g minutes\n", seed, minutes);
  try {
    return Conductor(minutes, seed).Run();
  } catch (const std::exception& error) {
    std::printf("\n%s\n", error.what());
    return 1;
  }
}
