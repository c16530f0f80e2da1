#include "tools/scenebroker/Scene.h"

#include <utility>

std::optional<std::string> SceneElement::Attribute(const std::string& name) const {
  if (name == kCheckedState && checked) return *checked ? "true" : "false";
  if (name == kSelectedState) return selected;
  if (name == kValueState) return value;
  const auto found = attributes.find(name);
  if (found == attributes.end()) return std::nullopt;
  return found->second;
}

std::vector<std::string> SceneElement::AttributeNames() const {
  std::vector<std::string> names;
  for (const auto& [name, text] : attributes) names.push_back(name);
  for (const char* name : kStateNames) {
    if (Attribute(name)) names.push_back(name);
  }
  return names;
}

bool SceneElement::Contains(POINT point) const {
  return point.x >= rect.left && point.x < rect.right && point.y >= rect.top &&
         point.y < rect.bottom;
}

bool Scene::Add(SceneElement element) {
  if (!indexes_.emplace(element.id, elements_.size()).second) return false;
  element.position = childCounts_[element.parent]++;
  elements_.push_back(std::move(element));
  return true;
}

const SceneElement* Scene::Find(const std::string& id) const {
  const auto found = indexes_.find(id);
  return found == indexes_.end() ? nullptr : &elements_[found->second];
}

SceneElement* Scene::Find(const std::string& id) {
  return const_cast<SceneElement*>(std::as_const(*this).Find(id));
}

std::vector<const SceneElement*> Scene::Ancestors(const SceneElement& element) const {
  std::vector<const SceneElement*> ancestors;
  for (const SceneElement* next = Find(element.parent); next != nullptr;
       next = Find(next->parent)) {
    ancestors.push_back(next);
  }
  return ancestors;
}

std::vector<int> Scene::LevelsBelow(const std::string& id) const {
  std::vector<int> levels;
  levels.reserve(elements_.size());
  for (const SceneElement& element : elements_) {
    int level = element.parent == id ? 1 : 0;
    if (level == 0 && !element.parent.empty()) {
      const int parentLevel = levels[indexes_.at(element.parent)];
      if (parentLevel > 0) level = parentLevel + 1;
    }
    levels.push_back(level);
  }
  return levels;
}
