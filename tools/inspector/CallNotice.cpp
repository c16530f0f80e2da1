#include "tools/inspector/CallNotice.h"

#include <iostream>

namespace {

constexpr long long kPatienceSeconds = 2;

// Negative: from now on; in units of 100 ns.
FILETIME FromNow(long long seconds) {
  const auto ticks = static_cast<unsigned long long>(-seconds * 10'000'000);
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

}  // namespace

// A timer of the pool: a thread a call would cost a tree of many elements more than its calls.
CallNotice::CallNotice(const std::string& what, int longestSeconds)
    : text_("tessel: waiting for the broker to " + what + " (at most " +
            std::to_string(longestSeconds) + " s)\n"),
      timer_(::CreateThreadpoolTimer(&Tell, this, nullptr /*default pool*/)) {
  if (timer_ == nullptr) return;  // the call does without
  FILETIME due = FromNow(kPatienceSeconds);
  ::SetThreadpoolTimer(timer_, &due, 0 /*once*/, 0 /*window*/);
}

CallNotice::~CallNotice() {
  if (timer_ == nullptr) return;
  ::SetThreadpoolTimer(timer_, nullptr /*never*/, 0, 0);
  ::WaitForThreadpoolTimerCallbacks(timer_, TRUE /*cancel pending*/);
  ::CloseThreadpoolTimer(timer_);
}

void CALLBACK CallNotice::Tell(PTP_CALLBACK_INSTANCE /*instance*/, void* notice,
                               PTP_TIMER /*timer*/) {
  std::cerr << static_cast<const CallNotice*>(notice)->text_ << std::flush;
}
