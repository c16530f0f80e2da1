// Part of SceneBroker. The commands that identify an element among all elements, list its
// ancestors, or search for elements. Each id in a list of elements counts as an object handed out.
#include <algorithm>

#include "tools/scenebroker/RequestCall.h"
#include "tools/scenebroker/SceneCalls.h"

namespace {

constexpr char kName[] = "name";
constexpr char kType[] = "type";

std::string TextOf(const SceneElement& element, const char* attribute) {
  return element.Attribute(attribute).value_or("");
}

bool IsAlike(const SceneElement& one, const SceneElement& other) {
  return TextOf(one, kName) == TextOf(other, kName) && TextOf(one, kType) == TextOf(other, kType);
}

// Returns how many elements below the element `parentId` have the same name and type as `element`
// and come before it in the scene. An empty `parentId` means the whole scene.
int PositionAmongAlike(const Scene& scene, const SceneElement& element,
                       const std::string& parentId) {
  const std::vector<int> levels = scene.LevelsBelow(parentId);
  int position = 0;
  for (std::size_t i = 0; &scene.Elements()[i] != &element; ++i) {
    if (levels[i] > 0 && IsAlike(scene.Elements()[i], element)) ++position;
  }
  return position;
}

void HandOutInto(Json& answer, ServedScene& served, const SceneElement& element) {
  served.objects.HandOut(element.id);
  answer.push_back(element.id);
}

bool Matches(const std::string& text, const std::string& search, bool partly) {
  if (search.empty()) return true;
  return partly ? text.find(search) != std::string::npos : text == search;
}

Json ElementIdentity(ServedScene& served, const SceneElement& element, const std::string& parentId,
                     int wantsNumber) {
  if (!parentId.empty()) {
    const SceneElement* parent = served.scene.Find(parentId);
    if (parent == nullptr) return StatusAnswer(wire::kUnknownElement);
    if (std::ranges::count(served.scene.Ancestors(element), parent) == 0) {
      return StatusAnswer(wire::kNotSupported);
    }
  }
  const int number = wantsNumber == 0 ? 0 : PositionAmongAlike(served.scene, element, parentId);
  return Json::array({0, TextOf(element, kName), TextOf(element, kType), element.id, number});
}

Json ElementSelector(ServedScene& served, const SceneElement& element) {
  std::vector<const SceneElement*> path = served.scene.Ancestors(element);
  path.insert(path.begin(), &element);
  Json answer = Json::array({0, path.size()});
  for (auto step = path.rbegin(); step != path.rend(); ++step) HandOutInto(answer, served, **step);
  return answer;
}

Json ElementAncestry(ServedScene& served, const SceneElement& element) {
  const std::vector<const SceneElement*> ancestors = served.scene.Ancestors(element);
  Json answer = Json::array({0, ancestors.size()});
  for (const SceneElement* ancestor : ancestors) HandOutInto(answer, served, *ancestor);
  answer.push_back(ancestors.size());
  for (const SceneElement* ancestor : ancestors) answer.push_back(ancestor->position);
  return answer;
}

Json FindElements(ServedScene& served, const SceneElement* root, const std::string& name,
                  const std::string& type, const std::string& id, int levels, bool partly) {
  if (levels < 0) return StatusAnswer(wire::kMalformedRequest);
  const std::vector<SceneElement>& elements = served.scene.Elements();
  const std::vector<int> below = served.scene.LevelsBelow(root == nullptr ? "" : root->id);
  Json answer = Json::array({0, 0});
  int count = 0;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const SceneElement& element = elements[i];
    if (below[i] == 0 || (levels > 0 && below[i] > levels)) continue;
    if (!Matches(TextOf(element, kName), name, partly) ||
        !Matches(TextOf(element, kType), type, partly) || !Matches(element.id, id, partly)) {
      continue;
    }
    ++count;
    HandOutInto(answer, served, element);
    const RECT& rect = element.rect;
    for (const LONG edge : {rect.left, rect.top, rect.right, rect.bottom}) answer.push_back(edge);
  }
  answer[1] = count;
  return answer;
}

using wire::Command;

constexpr SceneCall kCalls[] = {
    {Command::kIdentity, &RequestCall<&ElementIdentity>::Answer},
    {Command::kSelector, &RequestCall<&ElementSelector>::Answer},
    {Command::kCollection, &RequestCall<&FindElements>::Answer},
    {Command::kAncestry, &RequestCall<&ElementAncestry>::Answer},
};

}  // namespace

std::span<const SceneCall> IdentityCalls() { return kCalls; }
