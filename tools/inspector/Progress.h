// Part of tessel. Shows on a terminal how far a long reading is: how much is done, how many calls
// are made in a second, and how long the rest will take.
#pragma once

#include <chrono>
#include <string>

#include "tools/inspector/Inspection.h"

// Prints one line to standard error, writes it again and again while the work goes on, and erases
// it at the end. Prints nothing if standard error is not a terminal.
class Progress {
 public:
  // `what` names what is counted, in the plural. `all` is the final count.
  Progress(const Inspection& inspection, const char* what, std::size_t all);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Says how many are done. Prints at most four lines in a second.
  void Show(std::size_t done);

 private:
  using Clock = std::chrono::steady_clock;

  std::string Line(std::size_t done, Clock::duration elapsed) const;
  void Print(const std::string& line);

  const Inspection& inspection_;
  const char* const what_;
  const std::size_t all_;
  const HANDLE terminal_;
  const Clock::time_point start_ = Clock::now();
  const long long callsBefore_;
  Clock::time_point lastPrint_ = start_;
  std::size_t width_ = 0;  // the number of columns that the line on the terminal takes
};
