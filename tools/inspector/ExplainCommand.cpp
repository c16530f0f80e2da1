// Part of tessel. The command `explain`: what the result codes mean, and what to do.
#include <windows.h>

#include <charconv>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>

#include "tools/inspector/ChannelCodes.h"
#include "tools/inspector/CodeNotes.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/Nearest.h"
#include "tools/inspector/Report.h"
#include "tools/inspector/ToolCommand.h"

namespace {

// A code, and the kind of function that returns it.
struct KnownCode {
  const char* source;
  tessel::ResultCode code;
};

constexpr const char* kClient = "a client's call";
constexpr const char* kHost = "the host's channel";

std::vector<KnownCode> AllCodes() {
  std::vector<KnownCode> codes;
  for (const tessel::ResultCode& code : tessel::kResultCodes) codes.push_back({kClient, code});
  for (const tessel::ResultCode& code : kChannelCodes) codes.push_back({kHost, code});
  return codes;
}

std::optional<int> NumberIn(const std::string& text) {
  const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
  long long number = 0;
  const char* const end = text.data() + text.size();
  const auto read =
      std::from_chars(text.data() + (isHexadecimal ? 2 : 0), end, number, isHexadecimal ? 16 : 10);
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return static_cast<int>(number);  // 0x80004001 becomes a negative number
}

bool IsSameName(const std::string& text, const char* name) {
  return ::lstrcmpiA(text.c_str(), name) == 0;
}

InspectorError UnknownName(const std::string& text) {
  std::vector<std::string> names;
  for (const KnownCode& known : AllCodes()) names.push_back(known.code.name);
  const std::string guess = DidYouMean(text, names);
  return {ExitCode::kUsage, "there is no code " + tessel::Quoted(text),
          guess.empty() ? "tessel explain lists all codes" : guess};
}

// Returns both codes if a client's call and the host's channel use the same number.
std::vector<KnownCode> CodesNamed(const std::string& text) {
  const std::optional<int> number = NumberIn(text);
  std::vector<KnownCode> found;
  for (const KnownCode& known : AllCodes()) {
    const bool isMeant = number ? known.code.number == *number : IsSameName(text, known.code.name);
    if (isMeant) found.push_back(known);
  }
  if (!found.empty()) return found;
  if (number > 0) return {{kClient, tessel::DescribeResult(*number)}};
  throw UnknownName(text);
}

Json JsonOf(const KnownCode& known) {
  const CodeNotes notes = NotesFor(known.code.name);
  return {{"code", known.code.number},     {"name", known.code.name}, {"of", known.source},
          {"meaning", known.code.meaning}, {"causes", notes.causes},  {"cure", known.code.cure},
          {"log", notes.logLines}};
}

std::string Lines(std::string heading, const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += "  " + heading + line + '\n';
    heading.assign(heading.size(), ' ');
  }
  return text;
}

std::string Explanation(const KnownCode& known) {
  const CodeNotes notes = NotesFor(known.code.name);
  return std::to_string(known.code.number) + ' ' + known.code.name + " (" + known.source + ")\n" +
         Lines("meaning: ", {known.code.meaning}) + Lines("causes:  ", notes.causes) +
         Lines("to do:   ", {known.code.cure}) + Lines("log:     ", notes.logLines);
}

std::string TableLine(const KnownCode& known) {
  std::string line = std::to_string(known.code.number);
  line.insert(0, line.size() < 11 ? 11 - line.size() : 0, ' ');
  line += std::string("  ") + known.code.name;
  line.resize(std::max<std::size_t>(line.size(), 41), ' ');
  return line + "  " + known.code.meaning + '\n';
}

std::string Table() {
  std::string text;
  const char* source = nullptr;
  for (const KnownCode& known : AllCodes()) {
    if (known.source != source) {
      text += std::string(source != nullptr ? "\n" : "") + "Results of " + known.source + ":\n";
    }
    source = known.source;
    text += TableLine(known);
  }
  return text;
}

std::string Explanations(const std::vector<KnownCode>& codes) {
  std::string text;
  for (const KnownCode& known : codes) text += (text.empty() ? "" : "\n") + Explanation(known);
  return text;
}

int Explain(const InspectorOptions& options) {
  const std::string& name = options.text;
  const std::vector<KnownCode> codes = name.empty() ? AllCodes() : CodesNamed(name);
  if (options.json) {
    Json list = Json::array();
    for (const KnownCode& known : codes) list.push_back(JsonOf(known));
    std::cout << TextOf(Json{{"codes", list}});
  } else {
    std::cout << (name.empty() ? Table() : Explanations(codes));
  }
  return static_cast<int>(ExitCode::kSuccess);
}

void AddCode(CLI::App& command, InspectorOptions& options) {
  command.add_option("code", options.text, "A number, such as -9, or a name; without it all codes")
      ->type_name("CODE|NAME");
}

constexpr ToolCommand kCommands[] = {
    {"explain", "What a result code means, its usual causes, its cure, and its lines in the log",
     &Explain, &AddCode},
};

}  // namespace

std::span<const ToolCommand> ExplainCommands() { return kCommands; }
