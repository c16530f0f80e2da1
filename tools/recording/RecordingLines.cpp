#include "tools/recording/RecordingLines.h"

#include "tools/recording/RecordingText.h"
#include "tools/recording/RequestText.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"

namespace tools {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kFormat[] = "tessel recording";
constexpr int kVersion = 1;

const Json& Field(const Json& line, const char* name) {
  static const Json none;
  return line.is_object() && line.contains(name) ? line[name] : none;
}

std::wstring TextField(const Json& line, const char* name) {
  if (auto text = TextOfJson(Field(line, name))) return *std::move(text);
  throw RecordingError("\"" + std::string(name) +
                       "\" must be a text, or {\"utf16\": \"...\"} with four hexadecimal digits "
                       "for each unit; correct it, or record again");
}

// The field "command" repeats the command number from the request, so that people and programs can
// search the file for a command.
Json CommandField(const Exchange& exchange) {
  const std::optional<int> command = CommandOf(exchange.request);
  return command ? Json(*command) : Json();
}

}  // namespace

std::string LineOf(const RecordingHeader& header) {
  return Json{{"format", kFormat},
              {"version", kVersion},
              {"address", JsonOfText(header.address)},
              {"scheme", header.scheme},
              {"title", JsonOfText(header.title)}}
      .dump();
}

std::string LineOf(const Exchange& exchange) {
  return Json{{"time", exchange.time},
              {"command", CommandField(exchange)},
              {"request", JsonOfText(exchange.request)},
              {"answer", exchange.answer.empty() ? Json() : JsonOfText(exchange.answer)},
              {"milliseconds", exchange.milliseconds}}
      .dump();
}

RecordingHeader HeaderOf(const Json& line) {
  if (Field(line, "format") != kFormat) {
    throw RecordingError("the file is not a recording; name a file that --record has written");
  }
  if (Field(line, "version") != kVersion) {
    throw RecordingError("only version " + std::to_string(kVersion) +
                         " is known; use the tools that wrote the recording");
  }
  RecordingHeader header = {TextField(line, "address"), tessel::Narrow(TextField(line, "scheme")),
                            TextField(line, "title")};
  if (SchemeFromName(header.scheme) == SL_NO_URI) {
    throw RecordingError("\"scheme\" must be tailored, http, https or file; correct it");
  }
  return header;
}

Exchange ExchangeOf(const Json& line) {
  if (line.is_discarded()) {
    throw RecordingError("the line is not JSON; correct or remove it, or record again");
  }
  Exchange exchange;
  exchange.request = TextField(line, "request");
  if (!Field(line, "answer").is_null()) exchange.answer = TextField(line, "answer");
  return exchange;
}

}  // namespace tools
