// Part of SceneBroker. The commands that change the scene. The answers of these commands hold only
// a status.
#include <algorithm>
#include <utility>

#include "tools/scenebroker/RequestCall.h"
#include "tools/scenebroker/SceneCalls.h"

namespace {

template <class State, class Value>
Json Change(ServedScene& served, State& state, const Value& value) {
  if (std::exchange(state, value) != value) ++served.changes;
  return StatusAnswer(wire::kSuccess);
}

Json FocusElement(ServedScene& served, SceneElement& element) {
  return Change(served, served.scene.focus, element.id);
}

Json ClickElement(ServedScene& served, SceneElement& element) {
  if (element.checked) Change(served, element.checked, !*element.checked);
  return FocusElement(served, element);
}

Json SetElementValue(ServedScene& served, SceneElement& element, const std::string& text) {
  if (!element.value) return StatusAnswer(wire::kNotSupported);
  return Change(served, element.value, text);
}

Json CheckElement(ServedScene& served, SceneElement& element, bool checked) {
  if (!element.checked) return StatusAnswer(wire::kNotSupported);
  return Change(served, element.checked, checked);
}

Json SelectElementItem(ServedScene& served, SceneElement& element, const std::string& item) {
  if (!element.items || std::ranges::count(*element.items, item) == 0) {
    return StatusAnswer(wire::kNotSupported);
  }
  return Change(served, element.selected, item);
}

using wire::Command;

constexpr SceneCall kCalls[] = {
    {Command::kClick, &RequestCall<&ClickElement>::Answer},
    {Command::kSetValue, &RequestCall<&SetElementValue>::Answer},
    {Command::kSetFocus, &RequestCall<&FocusElement>::Answer},
    {Command::kCheck, &RequestCall<&CheckElement>::Answer},
    {Command::kSelectItem, &RequestCall<&SelectElementItem>::Answer},
};

}  // namespace

std::span<const SceneCall> ActionCalls() { return kCalls; }
