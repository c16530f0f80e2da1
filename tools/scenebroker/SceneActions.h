// SceneBroker. The commands that change the scene. They answer with a status alone.
#pragma once

#include "tools/scenebroker/ServedScene.h"

Json ClickElement(ServedScene& served, SceneElement& element);
Json SetElementValue(ServedScene& served, SceneElement& element, const std::string& text);
Json FocusElement(ServedScene& served, SceneElement& element);
Json CheckElement(ServedScene& served, SceneElement& element, bool checked);
Json SelectElementItem(ServedScene& served, SceneElement& element, const std::string& item);
