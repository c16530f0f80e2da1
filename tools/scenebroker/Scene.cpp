#include "tools/scenebroker/Scene.h"

#include <algorithm>
#include <utility>

namespace {

LONG Middle(LONG low, LONG high) {
  return static_cast<LONG>(low + (static_cast<long long>(high) - low) / 2);
}

}  // namespace

std::optional<std::string> SceneElement::Attribute(const std::string& name) const {
  if (name == "checked" && checked) return *checked ? "true" : "false";
  if (name == "selected") return selected;
  if (name == "value") return value;
  const auto found = attributes.find(name);
  if (found == attributes.end()) return std::nullopt;
  return found->second;
}

std::vector<std::string> SceneElement::AttributeNames() const {
  std::vector<std::string> names;
  for (const auto& [name, text] : attributes) names.push_back(name);
  if (checked) names.push_back("checked");
  if (selected) names.push_back("selected");
  if (value) names.push_back("value");
  return names;
}

bool SceneElement::Contains(POINT point) const {
  return point.x >= rect.left && point.x < rect.right && point.y >= rect.top &&
         point.y < rect.bottom;
}

bool Scene::Add(SceneElement element) {
  if (!indexes_.emplace(element.id, elements_.size()).second) return false;
  elements_.push_back(std::move(element));
  return true;
}

const SceneElement* Scene::Find(const std::string& id) const {
  const auto found = indexes_.find(id);
  return found == indexes_.end() ? nullptr : &elements_[found->second];
}

const SceneElement* Scene::ElementAt(POINT point) const {
  const auto found =
      std::find_if(elements_.rbegin(), elements_.rend(),
                   [&](const SceneElement& element) { return element.Contains(point); });
  return found == elements_.rend() ? nullptr : &*found;
}

POINT Scene::PointOf(const SceneElement& element) const {
  const RECT& rect = element.rect;
  const POINT centre = {Middle(rect.left, rect.right), Middle(rect.top, rect.bottom)};
  if (rect.left == rect.right || rect.top == rect.bottom) return centre;
  const POINT points[] = {centre,
                          {rect.left, rect.top},
                          {rect.right - 1, rect.top},
                          {rect.left, rect.bottom - 1},
                          {rect.right - 1, rect.bottom - 1}};
  const auto found = std::find_if(std::begin(points), std::end(points),
                                  [&](POINT point) { return ElementAt(point) == &element; });
  return found == std::end(points) ? centre : *found;
}
