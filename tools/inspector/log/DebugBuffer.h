// Part of tessel. Reads the debugger output of all processes of this logon session. A process
// writes a text into a buffer that all processes share, if a viewer has made the buffer and if no
// debugger is attached to the process. Only one viewer can read the buffer.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "tools/shared/Handle.h"

struct DebugText {
  DWORD process;
  std::string text;  // at most 4091 bytes
};

class DebugBuffer {
 public:
  // Throws InspectorError if another viewer has the buffer.
  DebugBuffer();
  ~DebugBuffer();
  DebugBuffer(const DebugBuffer&) = delete;
  DebugBuffer& operator=(const DebugBuffer&) = delete;

  // An event that is set while a text is in the buffer. A wait for the event resets it.
  HANDLE Filled() const { return filled_.get(); }

  // Call this function after a wait for Filled(). Takes the text, and lets the next process write.
  DebugText Take();

 private:
  struct Content;
  struct Unmapper {
    void operator()(const void* view) const { ::UnmapViewOfFile(view); }
  };

  bool TryToTake();

  tools::Handle free_, filled_, buffer_;
  std::unique_ptr<const Content, Unmapper> content_;
};
