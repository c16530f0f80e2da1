// Part of SceneBroker. Reads scene files, which docs/scene.md describes.
#pragma once

#include <string>

#include "tools/scenebroker/Scene.h"

// Throws SceneError.
Scene ReadSceneFile(const std::wstring& path);
