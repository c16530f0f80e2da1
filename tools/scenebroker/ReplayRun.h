// Part of SceneBroker. Serves a recording with a window of its own.
#pragma once

#include <string>

// Runs until Ctrl-C, or until the window is closed. Returns whether all requests were those of the
// recording. Throws std::runtime_error if the recording cannot be read or served.
bool RunReplay(const std::wstring& path);
