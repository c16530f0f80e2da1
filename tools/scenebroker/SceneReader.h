// SceneBroker. Scene files; docs/scene.md describes them.
#pragma once

#include <string>

#include "tools/scenebroker/Scene.h"

// Throws SceneError.
Scene ReadSceneFile(const std::wstring& path);
