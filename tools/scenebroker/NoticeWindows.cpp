#include "tools/scenebroker/NoticeWindows.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "tools/scenebroker/SceneReport.h"

namespace {

constexpr UINT kLastMessage = 0xBFFF;  // the last message number for applications

// The module passes no user data to the callback, so the callback finds the notice windows here.
const NoticeWindows* openWindows = nullptr;

LONG_PTR __stdcall OnMessage(HWND window, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
  if (message < WM_APP || message > kLastMessage) return 0;
  const auto& handles = openWindows->Handles();
  const auto index = std::ranges::find(handles, window) - handles.begin();
  PrintNotice(static_cast<int>(index), static_cast<int>(message - WM_APP));
  return 1;
}

}  // namespace

NoticeWindows::NoticeWindows(const HostModule& module, int count) : count_(count) {
  if (count_ == 0) return;
  module.Bind(create_, "AdditionalWindow_Create");
  module.Bind(destroy_, "AdditionalWindow_Destroy");
  module.Bind(post_, "AdditionalWindow_PostMessage");
  module.Bind(registerCallback_, "AdditionalWindow_RegisterCallback");
}

void NoticeWindows::Open() {
  openWindows = this;
  for (int i = 0; i < count_; ++i) {
    const auto index = static_cast<unsigned long>(i);
    handles_.push_back(create_(index));
    if (handles_.back() == nullptr || !registerCallback_(index, &OnMessage)) {
      throw std::runtime_error("cannot create the additional window #" + std::to_string(i) +
                               "; read the module's log");
    }
  }
}

void NoticeWindows::Close() {
  for (std::size_t i = 0; i < handles_.size(); ++i) destroy_(static_cast<unsigned long>(i));
}

void NoticeWindows::Post(int command) const {
  for (std::size_t i = 0; i < handles_.size(); ++i) {
    post_(static_cast<unsigned long>(i), WM_APP + static_cast<UINT>(command), 0, 0);
  }
}
