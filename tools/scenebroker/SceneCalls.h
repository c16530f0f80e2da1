// Part of SceneBroker. The tables that name, for each command of a request, the function that
// answers it. Each table is in the file that has these functions.
#pragma once

#include <span>

#include "tools/scenebroker/ServedScene.h"
#include "wire/Commands.h"

struct SceneCall {
  wire::Command command;
  Json (*answer)(ServedScene& served, const Json& request);
};

std::span<const SceneCall> ReadingCalls();   // defined in SceneReading.cpp
std::span<const SceneCall> IdentityCalls();  // defined in SceneIdentity.cpp
std::span<const SceneCall> ActionCalls();    // defined in SceneActions.cpp
