#include "tools/recording/Recording.h"

#include <filesystem>
#include <fstream>
#include <utility>

#include "tools/recording/RecordingLines.h"
#include "tools/shared/ConsoleText.h"

namespace tools {
namespace {

using Json = nlohmann::ordered_json;

// Returns the parsed lines. For a line that is not JSON, is_discarded() of its value is true.
// Leaves out such a line at the end of the file if it has no line feed, because it was cut short.
std::vector<Json> WholeLines(std::istream& file) {
  std::vector<Json> lines;
  for (std::string text; std::getline(file, text);) {
    Json line = Json::parse(text, nullptr /*callback*/, false /*throws*/);
    const bool isCut = file.eof() && line.is_discarded();
    if (!isCut) lines.push_back(std::move(line));
  }
  return lines;
}

// Calls `read`. Adds the number of the line to the message if `read` fails.
template <class Read>
auto AtLine(std::size_t number, Read read) {
  try {
    return read();
  } catch (const RecordingError& error) {
    throw RecordingError("line " + std::to_string(number) + ": " + error.what());
  }
}

Recording FromLines(const std::vector<Json>& lines) {
  if (lines.empty()) throw RecordingError("the file has no whole line; record again");
  Recording recording;
  recording.header = AtLine(1, [&] { return HeaderOf(lines.front()); });
  for (std::size_t i = 1; i < lines.size(); ++i) {
    recording.exchanges.push_back(AtLine(i + 1, [&] { return ExchangeOf(lines[i]); }));
  }
  return recording;
}

}  // namespace

Recording ReadRecording(const std::wstring& path) {
  try {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) throw RecordingError("cannot read the file; check the path");
    return FromLines(WholeLines(file));
  } catch (const RecordingError& error) {
    throw RecordingError(tessel::Narrow(path) + ": " + error.what());
  }
}

}  // namespace tools
