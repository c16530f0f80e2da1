#include "tools/inspector/doctor/LogLevelCheck.h"

#include <iterator>

#include "logging/LevelSource.h"
#include "tessel/Text.h"

namespace {

constexpr const char* kOwners[] = {"the user's", "the machine's"};
constexpr const char* kSetCure =
    "tessel log --level VERBOSE shows all lines; to set the level for good: reg add "
    "\"HKCU\\Environment\" /v TESSEL_LOG_LEVEL /d VERBOSE /f";

std::string VariableOf(std::size_t place) {
  return std::string(kOwners[place]) + " variable " + logging::kLevelVariable;
}

// Returns why the module ignores the variable, or an empty text if there is no variable.
std::string ReasonToIgnore(LSTATUS status) {
  if (status == ERROR_MORE_DATA) return "is longer than nine characters";
  if (status == ERROR_UNSUPPORTED_TYPE) return "is not of the type REG_SZ";
  return {};
}

Step LevelStep(Step::State state, const std::string& finding, const std::string& cure) {
  return {"log level", state, finding, cure};
}

Step UsedLevel(std::size_t place, const std::string& text, const std::string& ignored) {
  if (!logging::LevelFromText(text.c_str())) {
    return LevelStep(Step::State::kBroken,
                     VariableOf(place) + " is " + tessel::Quoted(text) +
                         ", which is not a level, so only fatal lines appear" + ignored,
                     "set it to VERBOSE, INFO, WARNING or ERROR");
  }
  Step step = LevelStep(ignored.empty() ? Step::State::kFound : Step::State::kBroken,
                        tessel::Printable(text) + ", from " + VariableOf(place) + ignored,
                        ignored.empty() ? "" : "set it to VERBOSE, INFO, WARNING or ERROR");
  step.facts["level"] = text;
  return step;
}

// The module reads the variable only from the registry, but users often set it in a console. So
// this function also looks for it in the environment of this process.
Step NoLevel(const std::string& ignored) {
  if (!ignored.empty()) {
    return LevelStep(Step::State::kBroken, "only fatal lines appear" + ignored,
                     "set it to VERBOSE, INFO, WARNING or ERROR");
  }
  const bool isInConsole =
      ::GetEnvironmentVariableA(logging::kLevelVariable, nullptr, 0 /*size*/) != 0;
  return LevelStep(isInConsole ? Step::State::kBroken : Step::State::kNote,
                   "switched off: only fatal lines appear, because TESSEL_LOG_LEVEL is not set" +
                       std::string(isInConsole ? " in the registry, only in this console" : ""),
                   kSetCure);
}

}  // namespace

Step CheckLogLevel() {
  std::string ignored;
  const auto places = logging::LevelPlaces();
  for (std::size_t place = 0; place < places.size(); ++place) {
    const logging::LevelText read = logging::ReadLevelText(places[place]);
    if (read.status == ERROR_SUCCESS) return UsedLevel(place, read.text, ignored);
    const std::string reason = ReasonToIgnore(read.status);
    if (!reason.empty())
      ignored += "; " + VariableOf(place) + ' ' + reason + ", so it counts as not set";
  }
  return NoLevel(ignored);
}
