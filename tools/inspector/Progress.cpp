#include "tools/inspector/Progress.h"

#include <algorithm>
#include <iostream>

namespace {

constexpr std::chrono::milliseconds kInterval(250);

bool ErrorsGoToTerminal() {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace

Progress::Progress(const Inspection& inspection, const char* what, std::size_t all)
    : inspection_(inspection),
      what_(what),
      all_(all),
      isShown_(ErrorsGoToTerminal()),
      callsBefore_(inspection.Calls()) {}

Progress::~Progress() {
  if (width_ > 0) Print("");
}

void Progress::Show(std::size_t done) {
  const Clock::time_point now = Clock::now();
  if (!isShown_ || done == 0 || now - lastPrint_ < kInterval) return;
  lastPrint_ = now;
  Print(Line(done, now - start_));
}

std::string Progress::Line(std::size_t done, Clock::duration elapsed) const {
  const double seconds = std::chrono::duration<double>(elapsed).count();
  const auto calls = static_cast<double>(inspection_.Calls() - callsBefore_);
  const double left =
      static_cast<double>(all_ - std::min(done, all_)) * seconds / static_cast<double>(done);
  return "tessel: " + std::to_string(done) + " of " + std::to_string(all_) + ' ' + what_ + ", " +
         std::to_string(static_cast<long long>(calls / seconds)) + " calls/s, " +
         std::to_string(static_cast<long long>(left) + 1) + " s left";
}

// Leaves the cursor at the start of the line, so that other messages overwrite the line.
void Progress::Print(const std::string& line) {
  const std::size_t blanks = width_ > line.size() ? width_ - line.size() : 0;
  std::cerr << line << std::string(blanks, ' ') << '\r' << std::flush;
  width_ = line.size();
}
