// Part of SceneBroker. The form that a scene file describes. The broker answers requests from it.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

inline constexpr char kCheckedState[] = "checked";
inline constexpr char kSelectedState[] = "selected";
inline constexpr char kValueState[] = "value";
inline constexpr std::initializer_list<const char*> kStateNames = {kCheckedState, kSelectedState,
                                                                   kValueState};

// All texts are UTF-8.
struct SceneElement {
  // The attributes include the states.
  std::optional<std::string> Attribute(const std::string& name) const;
  std::vector<std::string> AttributeNames() const;
  bool Contains(POINT point) const;

  std::string id;
  std::string parent;  // empty for a root
  int position = 0;    // among its parent's children, or among the roots; set by Scene::Add
  RECT rect = {};
  std::map<std::string, std::string> attributes;
  std::optional<std::vector<std::string>> items;  // no value: the element is not a list
  std::optional<bool> checked;
  std::optional<std::string> selected;
  std::optional<std::string> value;
};

class Scene {
 public:
  // Returns false if another element has the id. Add a parent before its children.
  bool Add(SceneElement element);

  // Return null if no element has the id.
  const SceneElement* Find(const std::string& id) const;
  SceneElement* Find(const std::string& id);

  // From the parent up to the root.
  std::vector<const SceneElement*> Ancestors(const SceneElement& element) const;

  // Returns, for each element, how many levels it lies below the element with this id. It is 0 if
  // the element does not lie below. With an empty id the roots lie at level 1.
  std::vector<int> LevelsBelow(const std::string& id) const;

  const std::vector<SceneElement>& Elements() const { return elements_; }

  std::string address;
  std::string title;
  std::string focus;  // the id of the element that has the focus; empty if none has it

 private:
  std::vector<SceneElement> elements_;  // in drawing order
  std::unordered_map<std::string, std::size_t> indexes_;
  std::unordered_map<std::string, int> childCounts_;
};
