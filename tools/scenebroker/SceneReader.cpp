#include "tools/scenebroker/SceneReader.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>

#include "tools/scenebroker/SceneText.h"
#include "tools/shared/ConsoleText.h"

namespace {

using tessel::Printable;
using tessel::Quoted;

constexpr int kVersion = 1;

// A value of the scene file, and the path of this value, such as elements[2].rect, for error
// messages.
struct Place {
  [[noreturn]] void Fail(const std::string& problemAndCure) const {
    throw SceneError((path.empty() ? "the scene" : path) + ": " + problemAndCure);
  }

  Place At(std::size_t index) const {
    return {value[index], path + '[' + std::to_string(index) + ']'};
  }
  Place At(const std::string& field) const { return {value[field], FieldPath(field)}; }
  std::string FieldPath(const std::string& field) const {
    return (path.empty() ? "" : path + '.') + Printable(field);
  }
  bool Has(const std::string& field) const { return value.contains(field); }

  const Json& value;
  std::string path;
};

std::string ListOf(std::initializer_list<const char*> names) {
  std::string list;
  for (const char* name : names) list += (list.empty() ? "" : ", ") + std::string(name);
  return list;
}

bool IsOneOf(std::initializer_list<const char*> names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void CheckObject(const Place& place, std::initializer_list<const char*> required,
                 std::initializer_list<const char*> optional) {
  if (!place.value.is_object()) place.Fail("must be an object; write {...}");
  for (const auto& field : place.value.items()) {
    if (IsOneOf(required, field.key()) || IsOneOf(optional, field.key())) continue;
    Place{field.value(), place.FieldPath(field.key())}.Fail(
        "unknown field; remove it, or use one of: " + ListOf(required) +
        (required.size() > 0 && optional.size() > 0 ? ", " : "") + ListOf(optional));
  }
  for (const char* name : required) {
    if (!place.Has(name)) place.Fail("the field " + Quoted(name) + " is missing; add it");
  }
}

// Returns whether a client receives this character unchanged. A client receives a text only up to
// the first U+0000, and receives U+FFFD for a noncharacter.
bool IsCarried(char32_t code) {
  const bool isNoncharacter = (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
  return code != 0 && !isNoncharacter;
}

// Throws SceneError if a client cannot receive `text` unchanged. The error message begins with the
// path of `place` and with `subject`, which says what `text` is. `subject` is empty if `text` is
// the value at `place`.
void CheckCharacters(const Place& place, const std::string& subject, const std::string& text) {
  const std::wstring units = tessel::Wide(text);
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t code = units[i];
    if (IS_HIGH_SURROGATE(units[i])) code = 0x10000 + ((code & 0x3FF) << 10 | (units[++i] & 0x3FF));
    if (IsCarried(code)) continue;
    char name[16];
    std::snprintf(name, sizeof(name), "U+%04X", static_cast<unsigned>(code));
    place.Fail(subject + "must not hold " + name + ", which does not reach clients; remove it");
  }
}

std::string ParseText(const Place& place) {
  if (!place.value.is_string()) place.Fail("must be a text; write it in double quotes");
  auto text = place.value.get<std::string>();
  CheckCharacters(place, "", text);
  return text;
}

std::string ParseNonEmptyText(const Place& place) {
  std::string text = ParseText(place);
  if (text.empty()) place.Fail("must not be empty; write a text");
  return text;
}

const Place& CheckArray(const Place& place, const char* cure) {
  if (!place.value.is_array()) place.Fail(std::string("must be a list; ") + cure);
  return place;
}

RECT ParseRect(const Place& place) {
  constexpr char kCure[] = "write [left, top, right, bottom]";
  if (CheckArray(place, kCure).value.size() != 4) {
    place.Fail(std::string("must have four numbers; ") + kCure);
  }
  int numbers[4] = {};
  for (std::size_t i = 0; i < 4; ++i) {
    const Place number = place.At(i);
    const std::optional<int> read = AsInt32(number.value);
    if (!read) number.Fail("must be an integer of 32 bits; write it without quotes or fraction");
    numbers[i] = *read;
  }
  const RECT rect = {numbers[0], numbers[1], numbers[2], numbers[3]};
  if (rect.left > rect.right || rect.top > rect.bottom) {
    place.Fail(std::string("right lies before left, or bottom before top; ") + kCure);
  }
  return rect;
}

void ParseAttributes(const Place& place, SceneElement& element) {
  if (!place.value.is_object()) place.Fail("must be an object; write {\"name\": \"text\"}");
  for (const auto& field : place.value.items()) {
    const Place attribute = {field.value(), place.FieldPath(field.key())};
    if (field.key().empty()) attribute.Fail("a name must not be empty; name the attribute");
    if (IsOneOf(kStateNames, field.key())) {
      attribute.Fail("is a state, not an attribute; move it to \"states\"");
    }
    CheckCharacters(attribute, "the name ", field.key());
    element.attributes[field.key()] = ParseText(attribute);
  }
}

void ParseItems(const Place& place, SceneElement& element) {
  CheckArray(place, "write [\"text\", ...]");
  std::vector<std::string>& items = element.items.emplace();
  for (std::size_t i = 0; i < place.value.size(); ++i) items.push_back(ParseText(place.At(i)));
}

void ParseStates(const Place& place, SceneElement& element) {
  CheckObject(place, {}, kStateNames);
  if (place.Has(kCheckedState)) {
    const Place checked = place.At(kCheckedState);
    if (!checked.value.is_boolean()) checked.Fail("must be true or false; write one of them");
    element.checked = checked.value.get<bool>();
  }
  if (place.Has(kValueState)) element.value = ParseText(place.At(kValueState));
  if (place.Has(kSelectedState)) {
    const Place selected = place.At(kSelectedState);
    element.selected = ParseText(selected);
    if (!element.items || std::ranges::count(*element.items, *element.selected) == 0) {
      selected.Fail("is none of the element's items; add it to \"items\", or select another");
    }
  }
}

SceneElement ParseElement(const Place& place, const Scene& scene) {
  CheckObject(place, {"id", "rect"}, {"parent", "attributes", "items", "states"});
  SceneElement element;
  element.id = ParseNonEmptyText(place.At("id"));
  element.rect = ParseRect(place.At("rect"));
  if (place.Has("parent")) {
    const Place parent = place.At("parent");
    element.parent = ParseNonEmptyText(parent);
    if (scene.Find(element.parent) == nullptr) {
      parent.Fail("no element above has the id " + Quoted(element.parent) +
                  "; correct it, or move the parent before its children");
    }
  }
  if (place.Has("attributes")) ParseAttributes(place.At("attributes"), element);
  if (place.Has("items")) ParseItems(place.At("items"), element);
  if (place.Has("states")) ParseStates(place.At("states"), element);
  return element;
}

void ParseElements(const Place& place, Scene& scene) {
  CheckArray(place, "write [{...}, ...]");
  for (std::size_t i = 0; i < place.value.size(); ++i) {
    SceneElement element = ParseElement(place.At(i), scene);
    const std::string id = element.id;
    if (!scene.Add(std::move(element))) {
      place.At(i).At("id").Fail("another element has the id " + Quoted(id) +
                                "; change one of them");
    }
  }
}

Scene ParseScene(const Json& json) {
  const Place root = {json, ""};
  CheckObject(root, {"version", "address", "title", "elements"}, {"focus"});
  const Place version = root.At("version");
  if (AsInt32(version.value) != kVersion) {
    version.Fail("only version " + std::to_string(kVersion) + " is known; write \"version\": " +
                 std::to_string(kVersion) + ", or use the tools that wrote the file");
  }
  Scene scene;
  scene.address = ParseNonEmptyText(root.At("address"));
  scene.title = ParseNonEmptyText(root.At("title"));
  ParseElements(root.At("elements"), scene);
  if (root.Has("focus")) {
    const Place focus = root.At("focus");
    scene.focus = ParseNonEmptyText(focus);
    if (scene.Find(scene.focus) == nullptr) {
      focus.Fail("no element has the id " + Quoted(scene.focus) +
                 "; correct it, or remove the field");
    }
  }
  return scene;
}

std::string ReadFileText(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file) throw SceneError("cannot read the file; check the path");
  return text;
}

}  // namespace

Scene ReadSceneFile(const std::wstring& path) {
  try {
    return ParseScene(ParseSceneText(ReadFileText(path)));
  } catch (const SceneError& error) {
    // The message of the JSON library may quote bytes that are not valid UTF-8. Converting the
    // message with Wide and Narrow replaces these bytes.
    throw SceneError(tessel::Narrow(path + L": " + tessel::Wide(error.what())));
  }
}
