// Part of tessel and SceneBroker. Reads the first values of a request from its text. The text may
// be anything that a client sends.
#pragma once

#include <optional>
#include <string>

namespace tools {

// Returns the number of the command. Returns nothing if the text does not begin as a request does.
std::optional<int> CommandOf(const std::wstring& request);

// Returns the process id. Returns nothing if the text does not begin as a request does.
std::optional<unsigned long> ProcessOf(const std::wstring& request);

// Returns the request with "?" in place of the process id. Returns any other text unchanged.
std::wstring WithoutProcess(const std::wstring& request);

}  // namespace tools
