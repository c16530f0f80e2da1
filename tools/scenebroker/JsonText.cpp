#include "tools/scenebroker/JsonText.h"

#include <algorithm>
#include <climits>
#include <set>
#include <vector>

namespace {

// Follows the parser through the text: it would take the second of two fields of one name.
class DuplicateFieldCheck {
 public:
  bool operator()(int /*depth*/, Json::parse_event_t event, const Json& parsed) {
    switch (event) {
      case Json::parse_event_t::object_start:
      case Json::parse_event_t::array_start:
        levels_.emplace_back().isArray = event == Json::parse_event_t::array_start;
        break;
      case Json::parse_event_t::object_end:
      case Json::parse_event_t::array_end:
        levels_.pop_back();
        CountValue();
        break;
      case Json::parse_event_t::value:
        CountValue();
        break;
      case Json::parse_event_t::key:
        EnterField(parsed.get<std::string>());
        break;
    }
    return true;
  }

 private:
  struct Level {
    bool isArray = false;
    std::size_t index = 0;
    std::string field;
    std::set<std::string> fields;
  };

  void CountValue() {
    if (!levels_.empty()) ++levels_.back().index;
  }

  void EnterField(const std::string& field) {
    Level& level = levels_.back();
    level.field = field;
    if (!level.fields.insert(field).second) {
      throw SceneError(Path() + ": the same field stands here twice; remove one of them");
    }
  }

  std::string Path() const {
    std::string path;
    for (const Level& level : levels_) {
      if (level.isArray) {
        path += '[' + std::to_string(level.index) + ']';
      } else {
        path += (path.empty() ? "" : ".") + level.field;
      }
    }
    return path;
  }

  std::vector<Level> levels_;
};

// Line and column of a byte; columns are counted in characters.
std::string PlaceOf(const std::string& text, std::size_t byte) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(byte, text.size()));
  const auto lines = std::count(text.begin(), end, '\n');
  auto lineStart = end;
  while (lineStart != text.begin() && *(lineStart - 1) != '\n') --lineStart;
  const auto characters = std::count_if(lineStart, end, [](char c) { return (c & 0xC0) != 0x80; });
  return "line " + std::to_string(lines + 1) + ", column " + std::to_string(characters + 1);
}

// The library's own words, without the place that it puts before them.
std::string Reason(const std::string& what) {
  const std::size_t place = what.find(", column ");
  const std::size_t start = place == std::string::npos ? 0 : what.find(": ", place) + 2;
  return what.substr(start);
}

}  // namespace

Json ParseSceneText(const std::string& text) {
  try {
    DuplicateFieldCheck check;
    return Json::parse(text, std::ref(check));
  } catch (const Json::parse_error& error) {
    // The position counts the bytes read, the offending one included.
    throw SceneError(PlaceOf(text, error.byte == 0 ? 0 : error.byte - 1) + ": " +
                     Reason(error.what()) + "; correct the JSON text there");
  } catch (const Json::out_of_range& error) {
    throw SceneError("a number is too large (" + std::string(error.what()) + "); make it smaller");
  }
}

std::optional<int> AsInt32(const Json& value) {
  if (!value.is_number_integer()) return std::nullopt;
  if (value.is_number_unsigned() && value.get<std::uint64_t>() > INT_MAX) return std::nullopt;
  const auto number = value.get<std::int64_t>();
  if (number < INT_MIN || number > INT_MAX) return std::nullopt;
  return static_cast<int>(number);
}
