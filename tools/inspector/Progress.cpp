#include "tools/inspector/Progress.h"

#include <algorithm>

namespace {

constexpr std::chrono::milliseconds kInterval(250);

// Returns null if standard error is not a terminal.
HANDLE ErrorTerminal() {
  const HANDLE output = ::GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode = 0;
  return ::GetConsoleMode(output, &mode) ? output : nullptr;
}

}  // namespace

Progress::Progress(const Inspection& inspection, const char* what, std::size_t all)
    : inspection_(inspection),
      what_(what),
      all_(all),
      terminal_(ErrorTerminal()),
      callsBefore_(inspection.Statistics().Calls()) {}

Progress::~Progress() {
  if (width_ > 0) Print("");
}

void Progress::Show(std::size_t done) {
  const Clock::time_point now = Clock::now();
  if (terminal_ == nullptr || done == 0 || now - lastPrint_ < kInterval) return;
  lastPrint_ = now;
  Print(Line(done, now - start_));
}

std::string Progress::Line(std::size_t done, Clock::duration elapsed) const {
  const double seconds = std::chrono::duration<double>(elapsed).count();
  const auto calls = static_cast<double>(inspection_.Statistics().Calls() - callsBefore_);
  const double left =
      static_cast<double>(all_ - std::min(done, all_)) * seconds / static_cast<double>(done);
  return "tessel: " + std::to_string(done) + " of " + std::to_string(all_) + ' ' + what_ + ", " +
         std::to_string(static_cast<long long>(calls / seconds)) + " calls/s, " +
         std::to_string(static_cast<long long>(left) + 1) + " s left";
}

// Leaves the cursor at the start of the line, so that other messages overwrite the line. Writes the
// line at once, because std::cerr writes single characters, and the line would flicker.
void Progress::Print(const std::string& line) {
  const std::size_t blanks = width_ > line.size() ? width_ - line.size() : 0;
  const std::string text = line + std::string(blanks, ' ') + '\r';
  DWORD written = 0;
  ::WriteFile(terminal_, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  width_ = line.size();
}
