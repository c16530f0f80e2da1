// Part of tessel. Lets a command end in order after Ctrl-C, or when its console is closed.
#pragma once

#include <windows.h>

// At most one object exists at a time.
class ConsoleStop {
 public:
  ConsoleStop();
  ~ConsoleStop();
  ConsoleStop(const ConsoleStop&) = delete;
  ConsoleStop& operator=(const ConsoleStop&) = delete;

  // An event that is set from the first Ctrl-C on.
  HANDLE Event() const;
};
