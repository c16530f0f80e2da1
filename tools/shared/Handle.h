// Part of tessel, SceneBroker and the endurance programs. An owner of a system handle. Null and
// INVALID_HANDLE_VALUE both mean "no handle".
#pragma once

#include <windows.h>

#include <memory>

namespace tools {

struct HandleCloser {
  void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

inline Handle OwnHandle(HANDLE handle) {
  return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

}  // namespace tools
