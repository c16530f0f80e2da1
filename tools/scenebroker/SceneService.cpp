#include "tools/scenebroker/SceneService.h"

#include <algorithm>

#include "tools/scenebroker/Command.h"
#include "tools/scenebroker/SceneActions.h"
#include "tools/scenebroker/SceneIdentity.h"
#include "tools/scenebroker/SceneReading.h"

namespace {

Json ReleaseObject(ServedScene& served, const std::string& id) {
  return Json::array({0, served.objects.Release(id)});
}

constexpr struct {
  int id;
  Json (*answer)(ServedScene& served, const Json& request);
} kCommands[] = {
    {1, &Command<&ElementAtPoint>::Answer},     {2, &Command<&ElementRectangle>::Answer},
    {3, &Command<&ReleaseObject>::Answer},      {6, &Command<&ParentElement>::Answer},
    {7, &Command<&ElementIdentity>::Answer},    {8, &Command<&ElementSelector>::Answer},
    {9, &Command<&FindElements>::Answer},       {10, &Command<&ElementAttribute>::Answer},
    {11, &Command<&ClickElement>::Answer},      {12, &Command<&SetElementValue>::Answer},
    {13, &Command<&FocusElement>::Answer},      {14, &Command<&FocusedElement>::Answer},
    {15, &Command<&CheckElement>::Answer},      {16, &Command<&ElementItems>::Answer},
    {17, &Command<&SelectElementItem>::Answer}, {18, &Command<&ElementAncestry>::Answer},
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
  if (!head) return StatusAnswer(SceneStatus::kMalformedRequest);
  const auto& [id, process, object] = *head;
  if (static_cast<DWORD>(process) != processId_) return StatusAnswer(SceneStatus::kOtherProcess);
  const auto command = std::ranges::find(kCommands, id, &std::decay_t<decltype(*kCommands)>::id);
  if (command == std::end(kCommands)) return StatusAnswer(SceneStatus::kUnknownCommand);
  return command->answer(served_, request);
}
