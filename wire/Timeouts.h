// Runs in the client. How long a call waits for a broker and for its answer, in milliseconds.
#pragma once

#include <cstdint>

namespace wire {

// Connecting, writing and reading each have this time-out.
inline constexpr std::uint32_t kPipeTimeoutMilliseconds = 18000;

// After a call has started a broker, the call waits for the broker's pipe. Then the call pauses
// before it connects.
inline constexpr std::uint32_t kLaunchedPipeTimeoutMilliseconds = 15000;
inline constexpr std::uint32_t kPauseAfterLaunchMilliseconds = 1000;

inline constexpr std::uint32_t kLongestRoundTripMilliseconds =
    kLaunchedPipeTimeoutMilliseconds + kPauseAfterLaunchMilliseconds + 3 * kPipeTimeoutMilliseconds;

// To inject a broker, a client first waits for the injections of other clients. Then it starts its
// injector, pauses, and waits for the injector to end. This wait is divided into rounds, because
// the client nudges the window before each round (posts a mouse move and resizes the window).
inline constexpr std::uint32_t kInjectionMutexTimeoutMilliseconds = 30000;
inline constexpr std::uint32_t kPauseAfterInjectorStartMilliseconds = 150;
inline constexpr std::uint32_t kInjectorRoundMilliseconds = 1000;
inline constexpr int kInjectorRounds = 10;

inline constexpr std::uint32_t kLongestInjectionMilliseconds =
    kInjectionMutexTimeoutMilliseconds + kPauseAfterInjectorStartMilliseconds +
    kInjectorRounds * kInjectorRoundMilliseconds;

}  // namespace wire
