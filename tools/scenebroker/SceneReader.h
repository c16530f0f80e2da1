// Part of SceneBroker. Reads scene files, which docs/scene.md describes.
#pragma once

#include <string>

#include "tools/scenebroker/Scene.h"

// Throws SceneError if the file cannot be read or does not describe a scene.
Scene ReadSceneFile(const std::wstring& path);
