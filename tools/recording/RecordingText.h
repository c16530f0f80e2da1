// Part of tessel and SceneBroker. Stores UTF-16 texts in the lines of a recording, and reads them
// back unchanged.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace tools {

// Returns a JSON string. For text that is not well-formed UTF-16, which no JSON string can hold,
// returns {"utf16": DIGITS}, with four hexadecimal digits for each unit.
nlohmann::ordered_json JsonOfText(const std::wstring& text);

// Returns the text that JsonOfText has stored in `json`. Returns nothing if `json` has neither of
// the two forms that JsonOfText returns.
std::optional<std::wstring> TextOfJson(const nlohmann::ordered_json& json);

}  // namespace tools
