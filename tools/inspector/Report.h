// tessel. What a command has found out: lines for people and JSON for programs, made side by side.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "TesselSilverlight.h"

using Json = nlohmann::ordered_json;

Json RectJson(const RECT& rect);

// "[left, top, right, bottom]".
std::string RectText(const Json& rect);

class Report {
 public:
  struct Entry {
    Json json;
    std::string text;
  };

  Report() = default;

  // Begins with the element that it is about.
  explicit Report(const SLElemData& element);

  // A field and its line.
  void Add(const std::string& key, const std::string& text);
  void Add(const std::string& key, long long number);
  void AddList(const std::string& key, const std::vector<Entry>& entries);
  void AddTexts(const std::string& key, const std::vector<std::string>& texts);

  // The one without the other.
  void SetField(const std::string& key, Json value) { json_[key] = std::move(value); }
  void AddLine(const std::string& line) { lines_ += line + '\n'; }

  std::string Lines() const { return lines_; }
  std::string JsonText() const;

 private:
  Json json_ = Json::object();
  std::string lines_;
};
