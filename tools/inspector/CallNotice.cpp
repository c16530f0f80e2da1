#include "tools/inspector/CallNotice.h"

#include <iostream>

namespace {

constexpr long long kSecondsBeforeNotice = 2;
constexpr long long kTimerTicksPerSecond = 10'000'000;

// Returns the due time of a timer. A negative due time is relative to now.
FILETIME FromNow(long long seconds) {
  const auto ticks = static_cast<unsigned long long>(-seconds * kTimerTicksPerSecond);
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::uint32_t SecondsRoundedUp(std::uint32_t milliseconds) { return (milliseconds + 999) / 1000; }

}  // namespace

// Uses a timer of the thread pool: reading a large tree makes many calls, and starting a thread for
// each call would take longer than the calls.
CallNotice::CallNotice(const std::string& what, std::uint32_t longestMilliseconds)
    : text_("tessel: waiting for the broker to " + what + " (at most " +
            std::to_string(SecondsRoundedUp(longestMilliseconds)) + " s)\n"),
      timer_(::CreateThreadpoolTimer(&Tell, this, nullptr /*default pool*/)) {
  if (timer_ == nullptr) return;  // no timer: the call is made without a notice
  FILETIME due = FromNow(kSecondsBeforeNotice);
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
