#include "tools/scenebroker/SceneService.h"

#include "tools/scenebroker/RequestCall.h"
#include "tools/scenebroker/SceneCalls.h"

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
  for (const auto calls : {ReadingCalls(), IdentityCalls(), ActionCalls()}) {
    for (const auto& [command, answer] : calls) {
      if (number == static_cast<int>(command)) return answer(served_, request);
    }
  }
  return StatusAnswer(wire::kUnknownCommand);
}
