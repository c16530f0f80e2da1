// Part of SceneBroker. Parses the JSON text of a scene file strictly. Error messages say where in
// the text the error is.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

using Json = nlohmann::ordered_json;

// Thrown if the scene cannot be shown. The message names the place in the file, what is wrong
// there, and how to correct it.
class SceneError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws SceneError for a syntax error, for a number that is too large, and for a field that an
// object has twice. The message names the path of this field, or otherwise the line and the column.
Json ParseSceneText(const std::string& text);

// Returns no value if `value` is not an integer that fits into 32 bits. The module sends and
// receives no other numbers.
std::optional<int> AsInt32(const Json& value);
