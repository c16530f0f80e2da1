// SceneBroker. The module's additional windows: they bring the notice that a request changed the
// scene onto the thread of the scene's window.
#pragma once

#include <windows.h>

#include <vector>

#include "TesselHost.h"
#include "tools/scenebroker/HostModule.h"

inline constexpr int kMostNoticeWindows = 10;

class NoticeWindows {
 public:
  // Throws std::runtime_error when some are wanted and the module has none to give.
  NoticeWindows(const HostModule& module, int count);
  NoticeWindows(const NoticeWindows&) = delete;
  NoticeWindows& operator=(const NoticeWindows&) = delete;

  // Both on the thread that dispatches their messages. Open throws std::runtime_error.
  void Open();
  void Close();

  // From any thread.
  void Post(int command) const;

  const std::vector<HWND>& Handles() const { return handles_; }

 private:
  const int count_;
  std::vector<HWND> handles_;
  decltype(&AdditionalWindow_Create) create_ = nullptr;
  decltype(&AdditionalWindow_Destroy) destroy_ = nullptr;
  decltype(&AdditionalWindow_PostMessage) post_ = nullptr;
  decltype(&AdditionalWindow_RegisterCallback) registerCallback_ = nullptr;
};
