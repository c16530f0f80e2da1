// SceneBroker. Answers requests from a scene: which command a request is, and for whom.
#pragma once

#include <windows.h>

#include <string>

#include "tools/scenebroker/ServedScene.h"

struct SceneAnswer {
  std::string text;
  int changedBy = 0;  // the command, when it changed the scene
};

class SceneService {
 public:
  // `processId` is the process that shows the scene.
  SceneService(ServedScene& served, DWORD processId) : served_(served), processId_(processId) {}

  // The answer to a request's text; both are UTF-8. Never fails: a status says what is wrong.
  SceneAnswer Answer(const std::string& request);

 private:
  Json AnswerTo(const Json& request);

  ServedScene& served_;
  const DWORD processId_;
};
