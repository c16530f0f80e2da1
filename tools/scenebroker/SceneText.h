// Part of SceneBroker. Parses the JSON text of a scene file strictly. Errors say where they are.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

using Json = nlohmann::ordered_json;

// The scene cannot be shown. The message says where in the file, what is wrong and how to solve it.
class SceneError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws SceneError. It names line and column for a syntax error or a number that is too large, and
// the path for a field that an object has twice.
Json ParseSceneText(const std::string& text);

// Returns no value if `value` is not an integer of 32 bits. The module sends and receives no other
// numbers.
std::optional<int> AsInt32(const Json& value);
