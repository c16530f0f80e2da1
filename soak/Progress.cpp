#include "Progress.h"

#include <cstdio>
#include <utility>

namespace soak {

namespace {

std::string NameOf(int code) {
  if (code == kBadAlloc) return "bad_alloc";
  if (code == kLengthError) return "length_error";
  return std::to_string(code);
}

}  // namespace

void Progress::Show() {
  thread_ = std::jthread([this](std::stop_token stop) {
    long long calls = Calls();
    while (!stop.stop_requested()) {
      ::Sleep(1000);
      const long long before = std::exchange(calls, Calls());
      std::printf("\r%s   ", Line(calls - before).c_str());
      std::fflush(stdout);
    }
  });
}

void Progress::Hide() {
  thread_ = {};
  std::printf("\n");
}

long long Progress::Calls() const {
  long long calls = 0;
  for (int row = 0; row <= kPhaseKinds; ++row) {
    for (const auto& count : state_.codes[row]) calls += count;
  }
  return calls;
}

std::string Progress::Codes() const {
  std::string text;
  for (int code = kLowestCode; code < kLowestCode + kCodes; ++code) {
    long long count = 0;
    for (int row = 0; row <= kPhaseKinds; ++row) count += Count(row, code);
    if (code != 0 && count != 0) text += " " + NameOf(code) + ":" + std::to_string(count);
  }
  return text;
}

std::string Progress::Table() const {
  std::string text;
  for (int row = 0; row <= kPhaseKinds; ++row) {
    std::string codes;
    for (int code = kLowestCode; code < kLowestCode + kCodes; ++code) {
      if (const long long count = Count(row, code); count != 0)
        codes += " " + NameOf(code) + ":" + std::to_string(count);
    }
    text += std::string("  ") + (row == kPhaseKinds ? "in several phases" : PhaseName(row)) + ":" +
            codes + "\n";
  }
  return text;
}

long long Progress::Count(int row, int code) const { return state_.codes[row][code - kLowestCode]; }

std::string Progress::Line(long long rate) const {
  const ULONGLONG end = end_, now = ::GetTickCount64();
  std::string text =
      end == 0 ? "warming up" : std::to_string(end > now ? (end - now) / 1000 : 0) + " s left";
  text += ", " + std::to_string(Calls()) + " calls, " + std::to_string(rate) + "/s;" + Codes() +
          "; unexpected " + std::to_string(state_.unexpected) + ", wrong " +
          std::to_string(state_.wrong);
  const char* separator = "; handles/blocks ";
  for (const auto& client : state_.clients) {
    text += separator + std::to_string(client.handles) + "/" + std::to_string(client.blocks);
    separator = " ";
  }
  return text;
}

}  // namespace soak
