// Part of SceneBroker. The commands that find one element, read it or release it.
#include "tools/scenebroker/RequestCall.h"
#include "tools/scenebroker/SceneCalls.h"

namespace {

// Returns an answer with the id of one element, and counts the element as handed out. If `id` is
// empty, the answer names no element and nothing is counted.
Json HandOut(ServedScene& served, const std::string& id) {
  if (!id.empty()) served.objects.HandOut(id);
  return Json::array({0, id});
}

Json ElementAtPoint(ServedScene& served, const SceneElement* /*root*/, int x, int y,
                    int /*option*/) {
  const SceneElement* element = served.map.At({x, y});
  return HandOut(served, element == nullptr ? "" : element->id);
}

Json FocusedElement(ServedScene& served, const SceneElement* /*root*/) {
  return HandOut(served, served.scene.focus);
}

Json ParentElement(ServedScene& served, const SceneElement& element) {
  return HandOut(served, element.parent);
}

Json ElementRectangle(ServedScene& /*served*/, const SceneElement& element) {
  const RECT& rect = element.rect;
  return Json::array({0, rect.left, rect.top, rect.right, rect.bottom});
}

Json ElementAttribute(ServedScene& /*served*/, const SceneElement& element,
                      const std::string& name) {
  const std::optional<std::string> text = element.Attribute(name);
  if (!text) return StatusAnswer(wire::kNotSupported);
  return Json::array({0, *text});
}

Json ElementItems(ServedScene& /*served*/, const SceneElement& element, bool /*option*/) {
  if (!element.items) return StatusAnswer(wire::kNotSupported);
  Json answer = Json::array({0, element.items->size()});
  for (const std::string& item : *element.items) answer.push_back(item);
  return answer;
}

Json ReleaseObject(ServedScene& served, const std::string& id) {
  return Json::array({0, served.objects.Release(id)});
}

using wire::Command;

constexpr SceneCall kCalls[] = {
    {Command::kElementFromPoint, &RequestCall<&ElementAtPoint>::Answer},
    {Command::kRectangle, &RequestCall<&ElementRectangle>::Answer},
    {Command::kRelease, &RequestCall<&ReleaseObject>::Answer},
    {Command::kParent, &RequestCall<&ParentElement>::Answer},
    {Command::kAttribute, &RequestCall<&ElementAttribute>::Answer},
    {Command::kFocusedElement, &RequestCall<&FocusedElement>::Answer},
    {Command::kItems, &RequestCall<&ElementItems>::Answer},
};

}  // namespace

std::span<const SceneCall> ReadingCalls() { return kCalls; }
