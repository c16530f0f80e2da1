// Part of tessel and SceneBroker. The lines of a recording. Each line is a JSON object.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tools/recording/Recording.h"

namespace tools {

// These functions return the text of a line, without the line feed.
std::string LineOf(const RecordingHeader& header);
std::string LineOf(const Exchange& exchange);

// These functions throw RecordingError if a field is missing or wrong. The message names the field.
RecordingHeader HeaderOf(const nlohmann::ordered_json& line);
Exchange ExchangeOf(const nlohmann::ordered_json& line);

}  // namespace tools
