// SceneBroker. Answers requests from a scene and keeps account of the objects that clients hold.
#pragma once

#include <windows.h>

#include <map>
#include <string>

#include "tools/scenebroker/JsonText.h"
#include "tools/scenebroker/Scene.h"

// The statuses that an answer begins with.
enum class SceneStatus : int {
  kSuccess = 0,
  kOtherProcess = -8,  // lets a client's search go on to the next scheme
  kUnknownCommand = 100,
  kUnknownId = 101,
  kNotSupported = 102,
  kMalformedRequest = 103,
};

// How often each id was handed out and not released yet.
class HeldObjects {
 public:
  void HandOut(const std::string& id);
  bool Release(const std::string& id);

  int HandedOut() const { return handedOut_; }
  int Released() const { return released_; }
  const std::map<std::string, int>& Held() const { return held_; }

 private:
  std::map<std::string, int> held_;
  int handedOut_ = 0;
  int released_ = 0;
};

class SceneService {
 public:
  // `processId` is the process that shows the scene.
  SceneService(const Scene& scene, DWORD processId) : scene_(scene), processId_(processId) {}

  // The answer to a request's text; both are UTF-8. Never fails: a status says what is wrong.
  std::string Answer(const std::string& request);

  const HeldObjects& Objects() const { return objects_; }

 private:
  struct Request;
  struct Command;
  static const Command kCommands[];

  Json AnswerTo(const Json& request);

  Json ElementAtPoint(const Request& request);
  Json Rectangle(const Request& request);
  Json Release(const Request& request);
  Json Parent(const Request& request);
  Json Attribute(const Request& request);
  Json Focus(const Request& request);
  Json Items(const Request& request);

  Json HandOut(const std::string& id);

  const Scene& scene_;
  const DWORD processId_;
  HeldObjects objects_;
};
