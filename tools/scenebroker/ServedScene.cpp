#include "tools/scenebroker/ServedScene.h"

void HeldObjects::HandOut(const std::string& id) {
  onTheWay_.push_back(id);
  ++handedOut_;
}

bool HeldObjects::Release(const std::string& id) {
  const auto held = held_.find(id);
  if (held == held_.end()) return false;
  if (--held->second == 0) held_.erase(held);
  ++released_;
  return true;
}

void HeldObjects::Settle(bool delivered) {
  if (delivered) {
    for (const std::string& id : onTheWay_) ++held_[id];
  } else {
    undelivered_ += static_cast<int>(onTheWay_.size());
  }
  onTheWay_.clear();
}
