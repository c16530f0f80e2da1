#include "tools/scenebroker/SceneService.h"

#include "tools/scenebroker/RequestCall.h"
#include "tools/scenebroker/SceneActions.h"
#include "tools/scenebroker/SceneIdentity.h"
#include "tools/scenebroker/SceneReading.h"
#include "wire/Commands.h"

namespace {

Json ReleaseObject(ServedScene& served, const std::string& id) {
  return Json::array({0, served.objects.Release(id)});
}

using wire::Command;

constexpr struct {
  Command command;
  Json (*answer)(ServedScene& served, const Json& request);
} kCalls[] = {
    {Command::kElementFromPoint, &RequestCall<&ElementAtPoint>::Answer},
    {Command::kRectangle, &RequestCall<&ElementRectangle>::Answer},
    {Command::kRelease, &RequestCall<&ReleaseObject>::Answer},
    {Command::kParent, &RequestCall<&ParentElement>::Answer},
    {Command::kIdentity, &RequestCall<&ElementIdentity>::Answer},
    {Command::kSelector, &RequestCall<&ElementSelector>::Answer},
    {Command::kCollection, &RequestCall<&FindElements>::Answer},
    {Command::kAttribute, &RequestCall<&ElementAttribute>::Answer},
    {Command::kClick, &RequestCall<&ClickElement>::Answer},
    {Command::kSetValue, &RequestCall<&SetElementValue>::Answer},
    {Command::kSetFocus, &RequestCall<&FocusElement>::Answer},
    {Command::kFocusedElement, &RequestCall<&FocusedElement>::Answer},
    {Command::kCheck, &RequestCall<&CheckElement>::Answer},
    {Command::kItems, &RequestCall<&ElementItems>::Answer},
    {Command::kSelectItem, &RequestCall<&SelectElementItem>::Answer},
    {Command::kAncestry, &RequestCall<&ElementAncestry>::Answer},
};

}  // namespace

SceneAnswer SceneService::Answer(const std::string& request) {
  const Json parsed = Json::parse(request, nullptr /*callback*/, false /*throws*/);
  const int changesBefore = served_.changes;
  const std::string text = AnswerTo(parsed).dump();
  return {text, served_.changes == changesBefore ? 0 : parsed[0].get<int>()};
}

Json SceneService::AnswerTo(const Json& request) {
  const auto head = request.is_array() ? ValuesAs<int, int, std::string>(request, 0) : std::nullopt;
  if (!head) return StatusAnswer(wire::kMalformedRequest);
  const auto& [number, process, object] = *head;
  if (static_cast<DWORD>(process) != processId_) return StatusAnswer(wire::kNotServed);
  for (const auto& [command, answer] : kCalls) {
    if (number == static_cast<int>(command)) return answer(served_, request);
  }
  return StatusAnswer(wire::kUnknownCommand);
}
