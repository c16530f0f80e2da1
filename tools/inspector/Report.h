// Part of tessel. The result of a command, as lines for people and as JSON for programs. Both are
// built at the same time.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tessel/Client.h"

using Json = nlohmann::ordered_json;

Json RectJson(const RECT& rect);

// Returns "[left, top, right, bottom]".
std::string RectText(const Json& rect);

// Return the JSON text in UTF-8, with a line feed at the end: TextOf indents it, and LineOf puts it
// into one line.
std::string TextOf(const Json& json);
std::string LineOf(const Json& json);

class Report {
 public:
  struct Entry {
    Json json;
    std::string text;
  };

  Report() = default;

  // Starts the report with the id of `element`.
  explicit Report(const tessel::Element& element);

  // Each of these functions adds a field to the JSON form and a line to the text form.
  void Add(const std::string& key, const std::string& text);
  void Add(const std::string& key, long long number);
  void AddList(const std::string& key, const std::vector<Entry>& entries);
  void AddTexts(const std::string& key, const std::vector<std::wstring>& texts);

  // These functions add only a JSON field, or only a line.
  void SetField(const std::string& key, Json value) { json_[key] = std::move(value); }
  void AddLine(const std::string& line) { lines_ += line + '\n'; }

  std::string Lines() const { return lines_; }
  std::string JsonText() const { return TextOf(json_); }

 private:
  Json json_ = Json::object();
  std::string lines_;
};
