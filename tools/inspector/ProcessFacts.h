// Part of tessel. Facts about a process.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

struct ProcessFacts {
  DWORD id = 0;
  std::wstring path;               // empty if this user may not open the process
  std::optional<bool> is64Bit;     // nothing if this could not be read
  std::optional<DWORD> integrity;  // the last part of the integrity level's SID
};

ProcessFacts ReadProcessFacts(DWORD id);

// Returns "process N (PATH)". The path is printable.
std::string ProcessText(const ProcessFacts& process);

// Returns the usual name of the level, for example "medium".
std::string IntegrityName(DWORD integrity);
