// Part of SceneBroker. A scene while it is served: the current state of the form, and the objects
// that clients hold.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/scenebroker/Scene.h"
#include "tools/scenebroker/SceneMap.h"
#include "tools/scenebroker/SceneText.h"
#include "wire/Statuses.h"

inline Json StatusAnswer(wire::Status status) { return Json::array({static_cast<int>(status)}); }

// Counts, for each id, how many objects clients hold. An object is an element that an answer has
// handed out. The client must release it, once for each time that it was handed out.
class HeldObjects {
 public:
  void HandOut(const std::string& id);
  // Returns false if no client holds an object with this id.
  bool Release(const std::string& id);

  // Call this after each answer. `delivered` says whether the client received the answer, and with
  // it the objects that were handed out since the last call of Settle.
  void Settle(bool delivered);

  int HandedOut() const { return handedOut_; }
  int Undelivered() const { return undelivered_; }
  int Released() const { return released_; }
  const std::map<std::string, int>& Held() const { return held_; }

 private:
  // The ids of the objects in answers for which Settle has not yet been called.
  std::vector<std::string> onTheWay_;
  std::map<std::string, int> held_;
  int handedOut_ = 0;
  int undelivered_ = 0;
  int released_ = 0;
};

struct ServedScene {
  explicit ServedScene(Scene loaded) : scene(std::move(loaded)), map(scene.Elements()) {}
  ServedScene(const ServedScene&) = delete;
  ServedScene& operator=(const ServedScene&) = delete;

  Scene scene;
  const SceneMap map;
  HeldObjects objects;
  int changes = 0;  // the number of times that a command changed the scene
};
