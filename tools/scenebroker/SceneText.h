// SceneBroker. JSON text of a scene file: read strictly, failures told with their place.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

using Json = nlohmann::ordered_json;

// A scene that cannot be shown. The message says where in the file, what is wrong, and the cure.
class SceneError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws SceneError, with line and column for a syntax error or a number too large, with the path
// for a field that an object has twice.
Json ParseSceneText(const std::string& text);

// A JSON integer of 32 bits, the only numbers that the bridge carries.
std::optional<int> AsInt32(const Json& value);
