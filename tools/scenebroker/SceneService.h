// Part of SceneBroker. Answers the requests of clients from the scene.
#pragma once

#include <windows.h>

#include <string>

#include "tools/scenebroker/ServedScene.h"

struct SceneAnswer {
  std::string text;
  int changedBy = 0;  // the number of the command if it changed the scene, else 0
};

class SceneService {
 public:
  // `processId` is the process that shows the scene. Requests must name this process.
  SceneService(ServedScene& served, DWORD processId) : served_(served), processId_(processId) {}

  // Returns the answer to a request. Request and answer are UTF-8. A request that cannot be served
  // is answered with a status that says why.
  SceneAnswer Answer(const std::string& request);

 private:
  Json AnswerTo(const Json& request);

  ServedScene& served_;
  const DWORD processId_;
};
