#include "tools/inspector/InspectorOptions.h"

#include <CLI/CLI.hpp>
#include <charconv>

#include "tools/inspector/ResultText.h"
#include "tools/shared/CommandLine.h"

namespace {

std::optional<POINT> ParsePoint(const std::string& text) {
  POINT point = {};
  const char* const end = text.data() + text.size();
  const auto x = std::from_chars(text.data(), end, point.x);
  if (x.ec != std::errc() || x.ptr == end || *x.ptr != ',') return std::nullopt;
  const auto y = std::from_chars(x.ptr + 1, end, point.y);
  if (y.ec != std::errc() || y.ptr != end) return std::nullopt;
  return point;
}

std::string RefuseEmpty(const std::string& text) { return text.empty() ? "must not be empty" : ""; }

CLI::Option* AddPoint(CLI::App& app, const std::string& name, InspectorOptions& options) {
  const auto store = [name, &options](const std::string& text) {
    options.at = ParsePoint(text);
    if (!options.at) throw CLI::ValidationError(name, "\"" + text + "\" is no point; write X,Y");
  };
  return app.add_option_function<std::string>(name, store, "A point, two integers")
      ->type_name("X,Y");
}

void AddContentOptions(CLI::App& command, InspectorOptions& options) {
  command
      .add_option("--window", options.window, "The content's window: handle (0x...) or exact title")
      ->required()
      ->type_name("HWND|TITLE");
  command.add_option("--address", options.address, "The content's address")
      ->required()
      ->type_name("URI")
      ->check(RefuseEmpty);
  tools::AddSchemeOption(command, options.scheme,
                         "The broker's scheme, in place of a search; an element by focus is always "
                         "searched for");
  command.add_option("--parent", options.parentSteps, "Then go up so many steps")
      ->type_name("N")
      ->check(CLI::NonNegativeNumber);
  command.add_option("--option", options.option, "Passed to the broker with the point")
      ->type_name("N");
}

// For the commands that do not name the element themselves.
void AddElementOptions(CLI::App& command, InspectorOptions& options) {
  CLI::Option_group* const element = command.add_option_group("Element", "One of these");
  AddPoint(*element, "--at", options);
  element->add_flag("--focus")->description("The element that has the focus");
  element->require_option(1);
}

CLI::App& AddCommand(CLI::App& app, const std::string& name, const std::string& description,
                     InspectorOptions& options) {
  CLI::App& command = *app.add_subcommand(name, description);
  AddContentOptions(command, options);
  return command;
}

void AddReport(CLI::App& app, const std::string& name, const std::string& description,
               Report report, InspectorOptions& options) {
  CLI::App& command = AddCommand(app, name, description, options);
  AddElementOptions(command, options);
  command.callback([report, &options] { options.report = report; });
  if (report == Report::kAttribute) {
    command.add_option("name", options.attribute, "The attribute's name")
        ->required()
        ->type_name("NAME")
        ->check(RefuseEmpty);
  }
}

}  // namespace

std::optional<int> ReadInspectorOptions(InspectorOptions& options) {
  CLI::App app("Inspects elements of Silverlight content through TesselSLB_x64.dll.", "tessel");
  app.allow_windows_style_options(false);  // "/x" is a text, as everywhere
  app.require_subcommand(1);
  app.footer("tessel COMMAND --help shows the options of a command.\n\n" + ExitCodeHelp());

  AddPoint(AddCommand(app, "at", "The element at a point", options), "point", options)->required();
  AddCommand(app, "focus", "The element that has the focus", options);
  CLI::App& parent = AddCommand(app, "parent", "The parent of an element", options);
  AddElementOptions(parent, options);
  parent.callback([&options] { ++options.parentSteps; });
  AddReport(app, "rect", "The rectangle of an element", Report::kRectangle, options);
  AddReport(app, "get", "An attribute of an element", Report::kAttribute, options);
  AddReport(app, "items", "The items of an element that is a list", Report::kItems, options);
  return tools::ParseCommandLine(app);
}
