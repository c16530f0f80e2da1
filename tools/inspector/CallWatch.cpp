#include "tools/inspector/CallWatch.h"

#include <string_view>

#include "wire/Timeouts.h"

void CallWatch::Announce(const std::string& what, std::uint32_t longestMilliseconds) {
  what_ = what;
  longestMilliseconds_ = longestMilliseconds;
}

void CallWatch::Begin(const tessel::Call& call) {
  lastCall_ = call;
  if (notices_) StartNotice(call);
  statistics_.Begin(call.function);
}

// For a release, makes the text of the notice itself. Nobody calls Announce before a release,
// because destructors release the elements.
void CallWatch::StartNotice(const tessel::Call& call) {
  if (std::string_view(call.function) == "ReleaseObj") {
    notice_.emplace("release element " + tessel::Quoted(call.elementId),
                    wire::kLongestRoundTripMilliseconds);
  } else {
    notice_.emplace(what_, longestMilliseconds_);
  }
}

void CallWatch::End(const tessel::Call& /*call*/, int code) noexcept {
  statistics_.End();
  notice_.reset();
  lastCode_ = code;
}
