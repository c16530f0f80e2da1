// Part of SceneBroker. The form that a scene file describes, with its elements. The broker answers
// requests about this form.
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
  // Returns the text of the attribute or state `name`, or no value if the element does not have it.
  std::optional<std::string> Attribute(const std::string& name) const;
  std::vector<std::string> AttributeNames() const;
  bool Contains(POINT point) const;

  std::string id;
  std::string parent;  // the id of the parent; empty for a root
  int position = 0;  // the index among the parent's children or among the roots; Scene::Add sets it
  RECT rect = {};
  std::map<std::string, std::string> attributes;
  std::optional<std::vector<std::string>> items;  // no value if the element is not a list
  // The states; no value if the element does not have this state.
  std::optional<bool> checked;
  std::optional<std::string> selected;
  std::optional<std::string> value;
};

class Scene {
 public:
  // Returns false, and adds nothing, if another element has the same id. Add a parent before its
  // children.
  bool Add(SceneElement element);

  // Returns null if no element has the id.
  const SceneElement* Find(const std::string& id) const;
  SceneElement* Find(const std::string& id);

  // Returns the ancestors of the element, from the parent up to the root.
  std::vector<const SceneElement*> Ancestors(const SceneElement& element) const;

  // Returns, for each element of the scene, how many levels it lies below the element with the id
  // `id`: 1 for a child, 2 for a child of a child, 0 if it does not lie below that element. If `id`
  // is empty, all elements lie below the scene, and the roots have level 1.
  std::vector<int> LevelsBelow(const std::string& id) const;

  const std::vector<SceneElement>& Elements() const { return elements_; }

  std::string address;
  std::string title;
  std::string focus;  // the id of the element that has the focus; empty if no element has the focus

 private:
  std::vector<SceneElement> elements_;  // the elements, in drawing order
  std::unordered_map<std::string, std::size_t> indexes_;
  std::unordered_map<std::string, int> childCounts_;
};
