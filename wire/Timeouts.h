// Client process. How long a call waits, in milliseconds, for a broker and for its answer.
#pragma once

#include <cstdint>

namespace wire {

// Connecting, writing and reading have this time each.
inline constexpr std::uint32_t kPipeTimeoutMilliseconds = 18000;

// A broker that the launcher starts: until its pipe exists, and then until it is asked.
inline constexpr std::uint32_t kLaunchedPipeTimeoutMilliseconds = 15000;
inline constexpr std::uint32_t kPauseAfterLaunchMilliseconds = 1000;

inline constexpr std::uint32_t kLongestRoundTripMilliseconds =
    kLaunchedPipeTimeoutMilliseconds + kPauseAfterLaunchMilliseconds + 3 * kPipeTimeoutMilliseconds;

// An injection waits for those of other clients, then gives its own injector this many rounds.
inline constexpr std::uint32_t kInjectionMutexTimeoutMilliseconds = 30000;
inline constexpr std::uint32_t kPauseAfterInjectorStartMilliseconds = 150;
inline constexpr std::uint32_t kInjectorRoundMilliseconds = 1000;
inline constexpr int kInjectorRounds = 10;

inline constexpr std::uint32_t kLongestInjectionMilliseconds =
    kInjectionMutexTimeoutMilliseconds + kPauseAfterInjectorStartMilliseconds +
    kInjectorRounds * kInjectorRoundMilliseconds;

}  // namespace wire
