#include "tools/scenebroker/SceneService.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::size_t kFirstArgument = 3;  // behind the command, the process and the object

Json StatusAnswer(SceneStatus status) { return Json::array({static_cast<int>(status)}); }

// What a command has to do with the object that its request names.
enum class Object {
  kOptional,  // may be empty: the whole scene
  kElement,
  kAny,  // the command judges it
};

bool HasKind(const Json& value, char kind) {
  return kind == 'i'   ? AsInt32(value).has_value()
         : kind == 'b' ? value.is_boolean()
                       : value.is_string();
}

bool HasKinds(const Json& request, std::size_t first, std::string_view kinds) {
  if (request.size() < first + kinds.size()) return false;
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    if (!HasKind(request[first + i], kinds[i])) return false;
  }
  return true;
}

}  // namespace

void HeldObjects::HandOut(const std::string& id) {
  ++held_[id];
  ++handedOut_;
}

bool HeldObjects::Release(const std::string& id) {
  const auto held = held_.find(id);
  if (held == held_.end()) return false;
  if (--held->second == 0) held_.erase(held);
  ++released_;
  return true;
}

struct SceneService::Request {
  const Json& Argument(std::size_t index) const { return text[kFirstArgument + index]; }

  const Json& text;
  const std::string objectId;
  const SceneElement* element;  // null when the request names none
};

struct SceneService::Command {
  int id;
  Object object;
  std::string_view arguments;  // i: integer, b: true or false, s: text
  Json (SceneService::*answer)(const Request& request);
};

const SceneService::Command SceneService::kCommands[] = {
    {1, Object::kOptional, "iii", &SceneService::ElementAtPoint},
    {2, Object::kElement, "", &SceneService::Rectangle},
    {3, Object::kAny, "", &SceneService::Release},
    {6, Object::kElement, "", &SceneService::Parent},
    {10, Object::kElement, "s", &SceneService::Attribute},
    {14, Object::kOptional, "", &SceneService::Focus},
    {16, Object::kElement, "b", &SceneService::Items},
};

std::string SceneService::Answer(const std::string& request) {
  const Json parsed = Json::parse(request, nullptr /*callback*/, false /*throws*/);
  return AnswerTo(parsed).dump();
}

Json SceneService::AnswerTo(const Json& request) {
  if (!request.is_array() || !HasKinds(request, 0, "iis")) {
    return StatusAnswer(SceneStatus::kMalformedRequest);
  }
  if (static_cast<DWORD>(*AsInt32(request[1])) != processId_) {
    return StatusAnswer(SceneStatus::kOtherProcess);
  }
  const auto command = std::ranges::find(kCommands, *AsInt32(request[0]), &Command::id);
  if (command == std::end(kCommands)) return StatusAnswer(SceneStatus::kUnknownCommand);

  const auto id = request[2].get<std::string>();
  const SceneElement* element = scene_.Find(id);
  const bool mayBeAbsent =
      command->object == Object::kAny || (command->object == Object::kOptional && id.empty());
  if (element == nullptr && !mayBeAbsent) return StatusAnswer(SceneStatus::kUnknownId);

  if (request.size() != kFirstArgument + command->arguments.size() ||
      !HasKinds(request, kFirstArgument, command->arguments)) {
    return StatusAnswer(SceneStatus::kMalformedRequest);
  }
  return (this->*command->answer)({request, id, element});
}

Json SceneService::ElementAtPoint(const Request& request) {
  const POINT point = {*AsInt32(request.Argument(0)), *AsInt32(request.Argument(1))};
  const SceneElement* element = scene_.ElementAt(point);
  return HandOut(element == nullptr ? "" : element->id);
}

Json SceneService::Rectangle(const Request& request) {
  const RECT& rect = request.element->rect;
  return Json::array({0, rect.left, rect.top, rect.right, rect.bottom});
}

Json SceneService::Release(const Request& request) {
  return Json::array({0, objects_.Release(request.objectId)});
}

Json SceneService::Parent(const Request& request) { return HandOut(request.element->parent); }

Json SceneService::Attribute(const Request& request) {
  const std::optional<std::string> text =
      request.element->Attribute(request.Argument(0).get<std::string>());
  if (!text) return StatusAnswer(SceneStatus::kNotSupported);
  return Json::array({0, *text});
}

Json SceneService::Focus(const Request& /*request*/) { return HandOut(scene_.focus); }

Json SceneService::Items(const Request& request) {
  if (!request.element->items) return StatusAnswer(SceneStatus::kNotSupported);
  Json answer = Json::array({0, request.element->items->size()});
  for (const std::string& item : *request.element->items) answer.push_back(item);
  return answer;
}

// The answer that holds an object; an empty id is none.
Json SceneService::HandOut(const std::string& id) {
  if (!id.empty()) objects_.HandOut(id);
  return Json::array({0, id});
}
