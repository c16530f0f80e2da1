#include "tools/faults/FaultOptions.h"

namespace tools {

namespace {

// Returns an empty text if the rule is right.
std::string ErrorInRule(const std::string& text) {
  try {
    ParseFaultRule(text);
    return "";
  } catch (const FaultRuleError& error) {
    return error.what();
  }
}

}  // namespace

FaultSchedule FaultOptions::Schedule() const {
  std::vector<FaultRule> parsed;
  for (const std::string& rule : rules) parsed.push_back(ParseFaultRule(rule));
  return {parsed, seed};
}

void AddFaultOptions(CLI::App& app, FaultOptions& options) {
  CLI::Option* const fault =
      app.add_option("--fault", options.rules,
                     "How to misbehave, for example delay=500 or hang@command=10,call=2; repeat "
                     "the option for more. docs/scene.md lists the faults")
          ->type_name("WHAT[=N][@command=N,call=N,element=ID,chance=P]")
          ->allow_extra_args(false)
          ->check(&ErrorInRule);
  app.add_option("--seed", options.seed,
                 "For the condition chance; a run with the same seed repeats its faults. The "
                 "default is a random number, which is printed")
      ->needs(fault)
      ->type_name("N");
}

}  // namespace tools
