// Part of tessel. The command `tap`: records the conversation of clients with a broker.
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/Tap.h"
#include "tools/inspector/ToolCommand.h"
#include "tools/pipe/PipeExchange.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ConsoleText.h"
#include "wire/Addresses.h"

namespace {

// A client that names no scheme first asks the broker with the scheme "tailored". The tap serves
// the pipe of this broker, so that it gets the requests of such clients.
constexpr char kClientScheme[] = "tailored";

std::wstring PipeName(const InspectorOptions& options, const std::string& scheme) {
  return wire::PipeName(tools::SchemeFromName(scheme), tessel::Wide(options.address));
}

void RefuseItself(const std::string& scheme) {
  if (scheme != kClientScheme) return;
  throw InspectorError(
      ExitCode::kUsage,
      "cannot tap the tailored broker: the tap serves the tailored pipe itself, "
      "so it would ask itself",
      "start the broker with the scheme http, https or file, and name this scheme");
}

void RequireBroker(const std::wstring& pipe) {
  if (tools::PipeExists(pipe)) return;
  throw InspectorError(ExitCode::kNotStarted,
                       "cannot tap: no broker serves the pipe " + tessel::Narrow(pipe),
                       "start the broker first");
}

void RequireFree(const std::wstring& pipe) {
  if (!tools::PipeExists(pipe)) return;
  throw InspectorError(
      ExitCode::kFailed,
      "cannot tap: a broker or another tap already serves the pipe " + tessel::Narrow(pipe),
      "end it first");
}

int RunTap(const InspectorOptions& options) {
  RefuseItself(options.scheme);
  const std::wstring clientPipe = PipeName(options, kClientScheme);
  const std::wstring brokerPipe = PipeName(options, options.scheme);
  RequireBroker(brokerPipe);
  RequireFree(clientPipe);
  Tap(options, kClientScheme, clientPipe, brokerPipe).Run();
  return static_cast<int>(ExitCode::kSuccess);
}

void AddTapOptions(CLI::App& command, InspectorOptions& options) {
  command.add_option("--address", options.address, "The content's address")
      ->required()
      ->type_name("URI")
      ->check(tools::RefuseEmpty);
  tools::AddSchemeOption(command, options.scheme, "The scheme of the broker")->required();
  command.add_option("--record", options.record, "The file to create; it holds what users type")
      ->required()
      ->type_name("FILE")
      ->check(tools::RefuseEmpty);
}

constexpr ToolCommand kCommands[] = {
    {"tap",
     "Stands between clients and a broker until Ctrl-C, and records their conversation. Clients "
     "that name the broker's scheme go past it",
     &RunTap, &AddTapOptions},
};

}  // namespace

std::span<const ToolCommand> TapCommands() { return kCommands; }
