// Part of SceneBroker. The notice windows: additional windows of the module (see
// AdditionalWindow_Create). When a request has changed the scene, SceneBroker posts a message, the
// notice, to each of them. The thread of the scene's window receives and prints it.
#pragma once

#include <windows.h>

#include <vector>

#include "TesselHost.h"
#include "tools/scenebroker/HostModule.h"

inline constexpr int kMostNoticeWindows = 10;

class NoticeWindows {
 public:
  // Makes no windows, and needs no module.
  NoticeWindows() : count_(0) {}

  // Throws std::runtime_error if `count` is not 0 and the module has no additional windows.
  NoticeWindows(const HostModule& module, int count);
  NoticeWindows(const NoticeWindows&) = delete;
  NoticeWindows& operator=(const NoticeWindows&) = delete;

  // Call Open and Close on the thread that dispatches the windows' messages. Open throws
  // std::runtime_error if a window cannot be created.
  void Open();
  void Close();

  // Posts a notice to every window. `command` is the number of the command that changed the scene.
  // May be called from any thread.
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
