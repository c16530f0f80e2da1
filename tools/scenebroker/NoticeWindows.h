// Part of SceneBroker. The notice windows: additional windows of the module. When a request has
// changed the scene, these windows carry a notice to the thread of the scene's window.
#pragma once

#include <windows.h>

#include <vector>

#include "TesselHost.h"
#include "tools/scenebroker/HostModule.h"

inline constexpr int kMostNoticeWindows = 10;

class NoticeWindows {
 public:
  // Throws std::runtime_error if `count` is not 0 and the module has no additional windows.
  NoticeWindows(const HostModule& module, int count);
  NoticeWindows(const NoticeWindows&) = delete;
  NoticeWindows& operator=(const NoticeWindows&) = delete;

  // Call Open and Close on the thread that dispatches the windows' messages. Open throws
  // std::runtime_error.
  void Open();
  void Close();

  // Posts a notice of `command` to every window. May be called from any thread.
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
