// Part of tessel. Asks a broker through its pipe with the system's functions, without the module.
#pragma once

#include <string>

namespace tools {

bool PipeExists(const std::wstring& name);

// Connects to the pipe, sends the request, and returns the answer. Each of the three steps has the
// time-out of the module's clients. Throws std::runtime_error if there is no answer. The message
// says which step failed.
std::wstring AskPipe(const std::wstring& name, const std::wstring& request);

}  // namespace tools
