// SceneBroker. A form as a scene file describes it: what the broker's answers are read from.
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

// Texts are UTF-8.
struct SceneElement {
  // An attribute, or a state read as one.
  std::optional<std::string> Attribute(const std::string& name) const;
  std::vector<std::string> AttributeNames() const;
  bool Contains(POINT point) const;

  std::string id;
  std::string parent;  // empty for a root
  int position = 0;    // among its parent's children, or among the roots; the scene counts
  RECT rect = {};
  std::map<std::string, std::string> attributes;
  std::optional<std::vector<std::string>> items;  // none: not a list
  std::optional<bool> checked;
  std::optional<std::string> selected;
  std::optional<std::string> value;
};

class Scene {
 public:
  // False when the id is taken. The parent comes first.
  bool Add(SceneElement element);

  // Null when there is none.
  const SceneElement* Find(const std::string& id) const;
  SceneElement* Find(const std::string& id);

  // From the parent up to the root.
  std::vector<const SceneElement*> Ancestors(const SceneElement& element) const;

  // For each element how many levels it lies below the one of this id, or below the scene itself
  // for an empty id; 0 for what is not below.
  std::vector<int> LevelsBelow(const std::string& id) const;

  const std::vector<SceneElement>& Elements() const { return elements_; }

  std::string address;
  std::string title;
  std::string focus;  // empty: no element has it

 private:
  std::vector<SceneElement> elements_;  // in drawing order
  std::unordered_map<std::string, std::size_t> indexes_;
  std::unordered_map<std::string, int> childCounts_;
};
