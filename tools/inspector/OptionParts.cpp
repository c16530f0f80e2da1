#include "tools/inspector/OptionParts.h"

#include "tools/inspector/OptionText.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"

void AddStatsOption(CLI::App& command, InspectorOptions& options) {
  command.add_flag("--stats", options.stats,
                   "Print the number and the times of the calls to standard error");
}

CLI::Option* AddPoint(CLI::App& app, const std::string& name, std::optional<POINT>& point) {
  const auto store = [name, &point](const std::string& text) {
    point = ParsePoint(text);
    if (!point)
      throw CLI::ValidationError(name, tessel::Quoted(text) + " is not a point; write X,Y");
  };
  return app.add_option_function<std::string>(name, store, "A point, two integers")
      ->type_name("X,Y");
}

CLI::Option* AddSearchTexts(CLI::App& app, const std::string& name,
                            std::optional<SearchTexts>& texts) {
  const auto store = [name, &texts](const std::string& text) {
    texts = ParseSearchTexts(text);
    if (!texts) {
      throw CLI::ValidationError(name, tessel::Quoted(text) +
                                           " is not three texts; write A,B,C and a backslash "
                                           "before a comma or a backslash of a text");
    }
  };
  return app
      .add_option_function<std::string>(
          name, store,
          "Three texts (SceneBroker: name, type, id); an empty text matches everything")
      ->type_name("A,B,C");
}

CLI::Option* AddPointOption(CLI::App& app, InspectorOptions& options) {
  return app
      .add_option("--option", options.option,
                  "An integer that is sent to the broker with the point; SceneBroker ignores it")
      ->type_name("N")
      ->capture_default_str();
}

void AddContentOptions(CLI::App& command, InspectorOptions& options) {
  command
      .add_option("--window", options.window, "The content's window: handle (0x...) or exact title")
      ->required()
      ->type_name("HWND|TITLE")
      ->check(tools::RefuseEmpty);
  command.add_option("--address", options.address, "The content's address")
      ->required()
      ->type_name("URI")
      ->check(tools::RefuseEmpty);
  tools::AddSchemeOption(command, options.scheme,
                         "The broker's scheme, if you know it; otherwise tessel searches. --focus "
                         "always searches, so it allows only tailored");
}

void AddElementOptions(CLI::App& command, InspectorOptions& options, bool isRequired) {
  CLI::Option_group* const element = command.add_option_group("Element", "One of these");
  CLI::Option* const point = AddPoint(*element, "--at", options.at);
  element->add_flag("--focus", options.focus, "The element that has the focus");
  AddSearchTexts(*element, "--find", options.find);
  element->require_option(isRequired ? 1 : 0, 1);
  AddPointOption(command, options)->needs(point);
}

void AddParentOption(CLI::App& command, InspectorOptions& options) {
  command.add_option("--parent", options.parentSteps, "Then go up N steps to an ancestor")
      ->type_name("N")
      ->check(CLI::Range(0, kMostSteps));
}
