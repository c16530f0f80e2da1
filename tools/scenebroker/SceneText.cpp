#include "tools/scenebroker/SceneText.h"

#include <algorithm>
#include <climits>
#include <set>
#include <vector>

#include "tools/shared/ConsoleText.h"

namespace {

// Returns the line and the column of the byte with the index `byte`. Both count from 1. Columns
// count characters, not bytes.
std::string PlaceOf(const std::string& text, std::size_t byte) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(byte, text.size()));
  const auto lines = std::count(text.begin(), end, '\n');
  auto lineStart = end;
  while (lineStart != text.begin() && *(lineStart - 1) != '\n') --lineStart;
  const auto characters = std::count_if(lineStart, end, [](char c) { return (c & 0xC0) != 0x80; });
  return "line " + std::to_string(lines + 1) + ", column " + std::to_string(characters + 1);
}

// Returns the error message `what` of the JSON library without the position at its start.
std::string Reason(const std::string& what) {
  const std::size_t place = what.find(", column ");
  const std::size_t start = place == std::string::npos ? 0 : what.find(": ", place) + 2;
  return what.substr(start);
}

// Finds errors that the parser of the JSON library does not report well: the parser accepts two
// fields with the same name, and it reports no position for a number that is too large. This class
// only checks the text and keeps no values.
class TextCheck : public nlohmann::json_sax<Json> {
 public:
  explicit TextCheck(const std::string& text) : text_(text) {}

  bool null() override { return CountValue(); }
  bool boolean(bool) override { return CountValue(); }
  bool number_integer(number_integer_t) override { return CountValue(); }
  bool number_unsigned(number_unsigned_t) override { return CountValue(); }
  bool number_float(number_float_t, const string_t&) override { return CountValue(); }
  bool string(string_t&) override { return CountValue(); }
  bool binary(binary_t&) override { return CountValue(); }
  bool start_object(std::size_t) override { return Enter(false /*is array*/); }
  bool start_array(std::size_t) override { return Enter(true /*is array*/); }
  bool end_object() override { return Leave(); }
  bool end_array() override { return Leave(); }

  bool key(string_t& field) override {
    Level& level = levels_.back();
    level.field = field;
    if (!level.fields.insert(field).second) {
      throw SceneError(Path() + ": the object has this field twice; remove one of them");
    }
    return true;
  }

  // `position` is the number of bytes that were read, up to and including the last byte of `token`.
  bool parse_error(std::size_t position, const std::string& token,
                   const Json::exception& error) override {
    if (dynamic_cast<const Json::out_of_range*>(&error) != nullptr) {
      throw SceneError(PlaceOf(text_, position - token.size()) + ": the number " + token +
                       " is too large; make it smaller");
    }
    throw SceneError(PlaceOf(text_, position == 0 ? 0 : position - 1) + ": " +
                     Reason(error.what()) + "; correct the JSON text there");
  }

 private:
  struct Level {
    bool isArray = false;
    std::size_t index = 0;
    std::string field;
    std::set<std::string> fields;
  };

  bool CountValue() {
    if (!levels_.empty()) ++levels_.back().index;
    return true;
  }

  bool Enter(bool isArray) {
    levels_.emplace_back().isArray = isArray;
    return true;
  }

  bool Leave() {
    levels_.pop_back();
    return CountValue();
  }

  std::string Path() const {
    std::string path;
    for (const Level& level : levels_) {
      if (level.isArray) {
        path += '[' + std::to_string(level.index) + ']';
      } else {
        path += (path.empty() ? "" : ".") + tessel::Printable(level.field);
      }
    }
    return path;
  }

  const std::string& text_;
  std::vector<Level> levels_;
};

}  // namespace

Json ParseSceneText(const std::string& text) {
  TextCheck check(text);
  Json::sax_parse(text, &check);
  return Json::parse(text);
}

std::optional<int> AsInt32(const Json& value) {
  if (!value.is_number_integer()) return std::nullopt;
  if (value.is_number_unsigned() && value.get<std::uint64_t>() > INT_MAX) return std::nullopt;
  const auto number = value.get<std::int64_t>();
  if (number < INT_MIN || number > INT_MAX) return std::nullopt;
  return static_cast<int>(number);
}
