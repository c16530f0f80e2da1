// SceneBroker. The commands that tell an element from the others, say where in the tree it stands
// and search for elements. Every id that stands for an element of a list is an object handed out.
#pragma once

#include "tools/scenebroker/ServedScene.h"

Json ElementIdentity(ServedScene& served, const SceneElement& element, const std::string& parentId,
                     int wantsNumber);
Json ElementSelector(ServedScene& served, const SceneElement& element);
Json ElementAncestry(ServedScene& served, const SceneElement& element);
Json FindElements(ServedScene& served, const SceneElement* root, const std::string& name,
                  const std::string& type, const std::string& id, int levels, bool partly);
