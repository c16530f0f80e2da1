#include "tools/inspector/CommandWords.h"

#include <algorithm>
#include <cctype>

#include "tools/inspector/InspectorError.h"
#include "tools/inspector/Nearest.h"

namespace {

using Words = std::vector<std::string>;

InspectorError UsageError(const std::string& meaning, const std::string& cure) {
  return {ExitCode::kUsage, meaning, cure};
}

// Returns the advice in the error for a mistyped word: a similar name from `names`, or to run
// `help` with --help if no name is similar.
std::string Advice(const std::string& word, const Words& names, const std::string& help) {
  const std::string guess = DidYouMean(word, names);
  return guess.empty() ? "run " + help + " --help" : guess;
}

Words CommandNames(const CLI::App& app) {
  Words names;
  for (const CLI::App* command : app.get_subcommands(nullptr)) names.push_back(command->get_name());
  return names;
}

// Adds the names of the options of `app` and of its option groups, for example "--window".
void AddOptionNames(const CLI::App& app, Words& names) {
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  const auto isGroup = [](const CLI::App* group) { return group->get_name().empty(); };
  for (const CLI::App* group : app.get_subcommands(isGroup)) AddOptionNames(*group, names);
}

Words OptionNames(const CLI::App& app) {
  Words names;
  AddOptionNames(app, names);
  return names;
}

// Returns true for "-x" and "--name", but not for negative numbers.
bool IsOption(const std::string& word) {
  return word.size() > 1 && word[0] == '-' &&
         std::isdigit(static_cast<unsigned char>(word[1])) == 0;
}

InspectorError UnknownOption(const CLI::App& app, const std::string& name) {
  const std::string owner =
      app.get_parent() == nullptr ? "before the command" : "for '" + app.get_name() + "'";
  const std::string help = app.get_parent() == nullptr ? "tessel" : "tessel " + app.get_name();
  return UsageError("there is no option '" + name + "' " + owner,
                    Advice(name, OptionNames(app), help));
}

bool TakesValue(const CLI::Option& option) { return option.get_items_expected_min() > 0; }

// Checks the options of one command, from the word at `first` on.
void CheckOptions(const CLI::App& command, const Words& words, std::size_t first) {
  for (std::size_t i = first; i < words.size() && words[i] != "--"; ++i) {
    if (!IsOption(words[i])) continue;
    const std::size_t equals = words[i].find('=');
    const std::string name = words[i].substr(0, equals);
    const CLI::Option* const option = command.get_option_no_throw(name);
    if (option == nullptr) throw UnknownOption(command, name);
    if (!TakesValue(*option) || equals != std::string::npos) continue;
    if (++i == words.size() || words[i].starts_with("--")) {
      throw UsageError("the option '" + name + "' needs a value",
                       "write " + name + "=VALUE if the value begins with --");
    }
  }
}

}  // namespace

void CheckWords(const CLI::App& app, const Words& words) {
  const auto first = std::ranges::find_if_not(words, &IsOption);
  const auto position = static_cast<std::size_t>(first - words.begin());
  CheckOptions(app, {words.begin(), first}, 0);
  if (first == words.end()) return;
  const Words commands = CommandNames(app);
  if (std::ranges::find(commands, *first) == commands.end()) {
    throw UsageError("there is no command '" + *first + "'", Advice(*first, commands, "tessel"));
  }
  CheckOptions(*app.get_subcommand(*first), words, position + 1);
}

bool AskForJson(const Words& words) {
  const auto end = std::ranges::find(words, "--");
  return std::find(words.begin(), end, "--json") != end;
}
