// An endurance run: soak [MINUTES] [SEED]. Two client processes call two brokers without end, while
// the brokers are killed, restarted and replaced by worse ones at random; then the verdict.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>

#include "BrokerLife.h"

namespace {

using namespace soak;

std::wstring OwnProgram(const wchar_t* name) {
  wchar_t path[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  return (std::filesystem::path(path).parent_path() / name).wstring();
}

// Codes that the faults of this run deserve, and those of a scene's elements that an action does
// not suit. All others are wrong.
constexpr int kDeserved[] = {0, -3, -6, -7, -8, -9, -12, 77, 101, 102};

class Conductor {
 public:
  Conductor(double minutes, unsigned seed)
      : seed_(seed), random_(seed), end_(static_cast<ULONGLONG>(minutes * 60000)) {
    for (int broker = 0; broker < kBrokers; ++broker) Start(broker);
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
    WarmUp();
    while (::GetTickCount64() < end_ && ClientsRun()) {
      Rest(500 + random_() % 2500);
      Disturb(static_cast<int>(random_() % kBrokers),
              static_cast<int>(random_() % (2 + kMisbehaviours)));
    }
    return Judge();
  }

 private:
  void Start(int broker) { lives_[broker] = std::make_unique<BrokerLife>(*state_, run_, broker); }

  bool ClientsRun() const {
    for (const auto& client : clients_) {
      if (!client->Runs()) return false;
    }
    return true;
  }

  // The clients' counts begin when calls and failures of every kind have been.
  void WarmUp() {
    for (int i = 0; state_->ready < kClients && ClientsRun(); ++i) {
      Rest(200 + random_() % 500);
      Disturb(i % kBrokers, 1 + i % (1 + kMisbehaviours));
    }
    end_ += ::GetTickCount64();
  }

  void Rest(DWORD milliseconds) {
    const ULONGLONG end = ::GetTickCount64() + milliseconds;
    while (::GetTickCount64() < end && ClientsRun()) {
      ShowProgress();
      ::Sleep(250);
    }
  }

  // 0: in order, 1: killed, then each kind of misbehaviour.
  void Disturb(int broker, int kind) {
    if (kind == 0) {
      if (!EndInOrder(broker)) ++unbalanced_;
      ++ordered_;
    } else {
      const std::wstring pipe = lives_[broker]->PipeName();
      lives_[broker]->Kill();
      if (kind == 1) {
        Rest(random_() % 500);
      } else {
        Misbehave(pipe, static_cast<Misbehaviour>(kind - 2), 500 + random_() % 1000, random_);
      }
      ++faults_[kind - 1];
    }
    lives_[broker].reset();
    Start(broker);
  }

  bool EndInOrder(int broker) {
    state_->pause = 1;
    for (int i = 0; i < 4000 && state_->parked < kClients * kThreads; ++i) ::Sleep(10);
    const bool parked = state_->parked == kClients * kThreads;
    const bool balanced = lives_[broker]->CloseInOrder();
    state_->pause = 0;
    if (!parked) std::printf("\na client does not come to rest\n");
    return parked && balanced;
  }

  void ShowProgress() {
    const ULONGLONG now = ::GetTickCount64();
    if (now - shown_ < 1000) return;
    const long long calls = state_->calls;
    const auto rate = (calls - shownCalls_) * 1000 / static_cast<long long>(now - shown_);
    std::printf("\r%4llu s left, %lld calls, %lld/s,%s, exceptions %lld, wrong %lld   ",
                end_ > now ? (end_ - now) / 1000 : end_ / 1000, calls, rate, Codes().c_str(),
                state_->exceptions.load(), state_->wrong.load());
    std::fflush(stdout);
    shown_ = now;
    shownCalls_ = calls;
  }

  std::string Codes() const {
    std::string text;
    for (int i = 0; i < kCodes; ++i) {
      if (i + kLowestCode != 0 && state_->codes[i] != 0)
        text += " " + std::to_string(i + kLowestCode) + ":" + std::to_string(state_->codes[i]);
    }
    return text;
  }

  long Undeserved() const {
    long count = 0;
    for (int i = 0; i < kCodes; ++i) {
      if (std::find(std::begin(kDeserved), std::end(kDeserved), i + kLowestCode) ==
          std::end(kDeserved))
        count += state_->codes[i];
    }
    return count;
  }

  int Judge() {
    state_->stop = 1;
    bool good = true;
    for (const auto& client : clients_) {
      const DWORD code = client->Wait(60000);
      std::printf("\n%s", client->Output().c_str());
      good = good && code == 0;
    }
    // What lives still has nothing handed out any more.
    for (const auto& life : lives_) {
      if (!life->CloseInOrder()) ++unbalanced_;
      ++ordered_;
    }
    const long undeserved = Undeserved();
    std::printf(
        "seed %u: %lld calls; failures by code:%s; exceptions %lld\n"
        "brokers killed %ld, talking nonsense %ld, vanishing %ld, slow %ld; ended in order %ld\n"
        "wrong answers %lld, undeserved codes %ld, broker lives with objects left %ld\n",
        seed_, state_->calls.load(), Codes().c_str(), state_->exceptions.load(), faults_[0],
        faults_[1], faults_[2], faults_[3], ordered_, state_->wrong.load(), undeserved,
        unbalanced_);
    good = good && state_->wrong == 0 && undeserved == 0 && unbalanced_ == 0;
    std::printf("verdict of the clients: %s\n", good ? "nothing lost" : "LOST");
    return good ? 0 : 1;
  }

  const DWORD run_ = ::GetCurrentProcessId();
  const SharedMemory state_{run_};
  const unsigned seed_;
  std::minstd_rand random_;
  ULONGLONG end_;  // how long the run lasts, and from the warm-up on when it ends
  std::unique_ptr<BrokerLife> lives_[kBrokers];
  std::unique_ptr<Program> clients_[kClients];
  std::array<long, 1 + kMisbehaviours> faults_ = {};
  long ordered_ = 0, unbalanced_ = 0;
  ULONGLONG shown_ = 0;
  long long shownCalls_ = 0;
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
