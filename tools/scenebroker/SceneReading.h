// SceneBroker. The commands that read one element or look one up. Every id that they answer is an
// object handed out.
#pragma once

#include "tools/scenebroker/ServedScene.h"

Json ElementAtPoint(ServedScene& served, const SceneElement* root, int x, int y, int option);
Json FocusedElement(ServedScene& served, const SceneElement* root);
Json ParentElement(ServedScene& served, const SceneElement& element);
Json ElementRectangle(ServedScene& served, const SceneElement& element);
Json ElementAttribute(ServedScene& served, const SceneElement& element, const std::string& name);
Json ElementItems(ServedScene& served, const SceneElement& element, bool option);
