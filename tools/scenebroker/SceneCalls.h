// Part of SceneBroker. The tables of commands. Each table is in the file that answers its commands.
#pragma once

#include <span>

#include "tools/scenebroker/ServedScene.h"
#include "wire/Commands.h"

struct SceneCall {
  wire::Command command;
  Json (*answer)(ServedScene& served, const Json& request);
};

std::span<const SceneCall> ReadingCalls();   // SceneReading.cpp
std::span<const SceneCall> IdentityCalls();  // SceneIdentity.cpp
std::span<const SceneCall> ActionCalls();    // SceneActions.cpp
