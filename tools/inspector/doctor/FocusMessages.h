// Part of tessel. The messages by which `tessel doctor` asks a broker for the focused element and
// releases it. docs/protocol.md describes them.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

std::wstring FocusRequest(DWORD process);
std::wstring ReleaseRequest(DWORD process, const std::wstring& id);

struct FocusAnswer {
  int status;
  std::wstring id;  // empty if nothing has the focus, and after a status other than 0
};

// Reads an answer by the rules by which the module reads it. Returns nothing if the module would
// refuse the answer.
std::optional<FocusAnswer> ParseFocusAnswer(std::wstring_view text);

// Returns whether the answer says that the broker has released the element.
bool ConfirmsRelease(std::wstring_view text);
