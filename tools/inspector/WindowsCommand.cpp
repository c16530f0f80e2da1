// Part of tessel. The command `windows`: the visible top-level windows, and which of them a broker
// serves.
#include <algorithm>
#include <map>

#include "tools/inspector/BrokerPipes.h"
#include "tools/inspector/CallWatch.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/Interruption.h"
#include "tools/inspector/ModuleFile.h"
#include "tools/inspector/OptionParts.h"
#include "tools/inspector/Output.h"
#include "tools/inspector/ToolCommand.h"
#include "tools/inspector/WindowList.h"
#include "tools/shared/CommandLine.h"
#include "wire/Timeouts.h"

namespace {

// Asks each running broker which windows it serves. A request names only the process of a window,
// so the class asks each broker only once for each process.
class Brokers {
 public:
  explicit Brokers(const InspectorOptions& options)
      : address_(tessel::Wide(options.address)), watch_(!options.json) {
    for (const SLUriScheme scheme : kBrokerSchemes) {
      const BrokerPipe pipe = PipeOf(scheme, address_);
      if (pipe.exists) brokers_.push_back({pipe, SL_SUCCESS, {}});
    }
    watch_.Announce("say whether it serves a window", wire::kLongestRoundTripMilliseconds);
  }

  const CallStatistics& Statistics() const { return watch_.Statistics(); }

  // Returns the names of the schemes whose brokers serve the window.
  Json SchemesServing(const ListedWindow& window) {
    Json schemes = Json::array();
    for (Broker& broker : brokers_) {
      const auto [entry, isNew] = broker.serves.try_emplace(window.process, false);
      if (isNew) entry->second = Serves(broker, window.window);
      if (entry->second) schemes.push_back(tools::NameOfScheme(broker.pipe.scheme));
    }
    return schemes;
  }

  // Adds a line of advice if no broker runs, or if none of them serves any window.
  void AddPipes(Report& report) const {
    std::vector<Report::Entry> entries;
    for (const Broker& broker : brokers_) {
      const std::string name = tessel::Narrow(broker.pipe.name);
      const std::string failure =
          broker.failure == SL_SUCCESS ? "" : " failed: " + std::to_string(broker.failure);
      entries.push_back({{{"pipe", name},
                          {"scheme", tools::NameOfScheme(broker.pipe.scheme)},
                          {"code", broker.failure}},
                         name + failure});
    }
    report.AddList("pipes", entries);
    if (brokers_.empty()) {
      report.AddLine("to do: no broker of this address runs; start one, or compare the address");
    } else if (std::ranges::none_of(brokers_, &ServesAny)) {
      report.AddLine("to do: no broker serves a window; see tessel doctor");
    }
  }

 private:
  struct Broker {
    BrokerPipe pipe;
    // SL_SUCCESS, or the code of the call that failed because the broker is lost or because the
    // pipe belongs to another program. After a failure, this pipe gets no more requests.
    int failure;
    std::map<DWORD, bool> serves;
  };

  static bool ServesAny(const Broker& broker) {
    return std::ranges::any_of(broker.serves, [](const auto& entry) { return entry.second; });
  }

  // Checks that the pipe exists before each call, and names the scheme in the call. The call then
  // neither starts a broker nor searches for one. The point lies outside of every content, so that
  // the broker usually hands out no element.
  bool Serves(Broker& broker, HWND window) {
    if (broker.failure != SL_SUCCESS || !PipeOf(broker.pipe.scheme, address_).exists) return false;
    try {
      tessel::Content content(window, address_, static_cast<SLUriScheme>(broker.pipe.scheme));
      content.Observe(&watch_);
      (void)content.At({-30000, -30000});
      return true;
    } catch (const tessel::Error& error) {
      if (error.BrokerIsLost() || error.code == SL_ARCHIVE_FAILURE) broker.failure = error.code;
      return false;
    }
  }

  const std::wstring address_;
  CallWatch watch_;
  std::vector<Broker> brokers_;
};

Report::Entry EntryOf(const ListedWindow& window) {
  const std::string handle = tessel::HandleText(window.window);
  const std::string image = ImageNameOf(window.process);
  return {
      {{"window", handle}, {"process", window.process}, {"image", image}, {"title", window.title}},
      handle + ' ' + std::to_string(window.process) + ' ' + tessel::Printable(image) + ' ' +
          tessel::Quoted(window.title)};
}

void AddServing(Report::Entry& entry, const Json& schemes) {
  entry.json["schemes"] = schemes;
  for (const Json& scheme : schemes) {
    entry.text += (scheme == schemes.front() ? " served by: " : ", ") + scheme.get<std::string>();
  }
}

Report ListWindows(Brokers* brokers) {
  std::vector<Report::Entry> entries;
  for (const ListedWindow& window : VisibleWindows()) {
    entries.push_back(EntryOf(window));
    if (brokers != nullptr) AddServing(entries.back(), brokers->SchemesServing(window));
  }
  Report report;
  report.AddList("windows", entries);
  if (brokers != nullptr) brokers->AddPipes(report);
  return report;
}

int RunWindows(const InspectorOptions& options) {
  if (options.address.empty()) {
    Print(ListWindows(nullptr), options);
    return static_cast<int>(ExitCode::kSuccess);
  }
  LoadModule();
  EndAtOnceOnCtrlC(options.json);
  Brokers brokers(options);
  const StatisticsAtEnd statistics(brokers.Statistics(), options);
  Print(ListWindows(&brokers), options);
  return static_cast<int>(ExitCode::kSuccess);
}

void AddAddress(CLI::App& command, InspectorOptions& options) {
  command
      .add_option("--address", options.address,
                  "A content's address: asks the brokers of this address which windows they serve")
      ->type_name("URI")
      ->check(tools::RefuseEmpty);
  AddStatsOption(command, options);
}

constexpr ToolCommand kCommands[] = {
    {"windows", "The visible top-level windows, and which of them a broker serves", &RunWindows,
     &AddAddress},
};

}  // namespace

std::span<const ToolCommand> WindowsCommands() { return kCommands; }
