// SceneBroker. A form as a scene file describes it: what the broker's answers are read from.
#pragma once

#include <windows.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Texts are UTF-8.
struct SceneElement {
  // An attribute, or a state read as one.
  std::optional<std::string> Attribute(const std::string& name) const;
  std::vector<std::string> AttributeNames() const;
  bool Contains(POINT point) const;

  std::string id;
  std::string parent;  // empty for a root
  RECT rect = {};
  std::map<std::string, std::string> attributes;
  std::optional<std::vector<std::string>> items;  // none: not a list
  std::optional<bool> checked;
  std::optional<std::string> selected;
  std::optional<std::string> value;
};

inline constexpr std::string_view kStateNames[] = {"checked", "selected", "value"};

class Scene {
 public:
  // False when the id is taken.
  bool Add(SceneElement element);

  // Null when there is none.
  const SceneElement* Find(const std::string& id) const;

  // The last drawn of those that contain the point. Null when there is none.
  const SceneElement* ElementAt(POINT point) const;

  // Its centre, or a corner if that is covered; the centre again if the corners are covered too.
  POINT PointOf(const SceneElement& element) const;

  const std::vector<SceneElement>& Elements() const { return elements_; }

  std::string address;
  std::string title;
  std::string focus;  // empty: no element has it

 private:
  std::vector<SceneElement> elements_;  // in drawing order
  std::map<std::string, std::size_t> indexes_;
};
