// Tests the option --fault: rules, the requests that they apply to, and what a client gets from a
// broker that misbehaves.
#include <gmock/gmock.h>

#include <future>

#include "support/Tools.h"
#include "tessel/Client.h"
#include "tools/faults/FaultyPipe.h"
#include "wire/Timeouts.h"

namespace {

using testing::HasSubstr;
using tools::FaultSchedule;
using tools::ParseFaultRule;

// Each line of refused-rules.txt is a rule and the beginning of the expected message.
TEST(FaultRuleTest, IsRefusedWithPlaceAndSolution) {
  const std::string cases = FileText(TESSEL_TRANSCRIPTS "/refused-rules.txt");
  EXPECT_NE(cases, "");
  for (const std::string& line : Split(cases, "\n")) {
    const auto [rule, message] = Cut(line, " -> ");
    EXPECT_THAT([&rule = rule] { ParseFaultRule(rule); },
                testing::ThrowsMessage<tools::FaultRuleError>(HasSubstr(", " + message)))
        << line;
  }
  RunTool(L"SceneBroker.exe no.json --fault hang=3", 2, R"("hang=3", character 5: hang has no)");
  RunTool(L"SceneBroker.exe no.json --seed 3", 2, "--seed requires --fault");
}

// Each row has rules and, for each request, the number of the rule that applies, or '-' for none.
TEST(FaultScheduleTest, ChoosesTheRule) {
  const wchar_t* const kRequests[] = {L"[10,7,\"a\"]",      L"[2,7,\"b,\\\\\"]", L"[10,7,\"c\"]",
                                      L"[10,7,\"a\",\"\"]", L"[9,7,\"\"]",       L"[9"};
  const std::pair<std::vector<const char*>, std::string> kCases[] = {
      {{"hang"}, "000000"},
      {{"hang@call=6"}, "-----0"},
      {{"hang@command=10,call=2"}, "--0---"},
      {{"hang@call=2,element=a"}, "---0--"},
      {{R"(hang@element=b\,\\)"}, "-0----"},
      {{"huge-count", "crash@command=10", "hang@call=3"}, "1-110-"},
      {{"vanish-before"}, "------"},
  };
  for (const auto& [texts, expected] : kCases) {
    std::vector<tools::FaultRule> rules;
    for (const char* text : texts) rules.push_back(ParseFaultRule(text));
    FaultSchedule schedule(rules, 0);
    std::string actual;
    for (const wchar_t* request : kRequests) {
      const auto* const rule = schedule.OnRequest(request);
      actual += rule == nullptr
                    ? '-'
                    : static_cast<char>('0' + std::ranges::find(texts, rule->text) - texts.begin());
    }
    EXPECT_EQ(actual, expected) << texts.front();
  }
}

TEST(FaultScheduleTest, RepeatsItsChoicesForTheSameSeed) {
  const auto choices = [](unsigned seed) {
    FaultSchedule schedule({ParseFaultRule("vanish-before@chance=0.25")}, seed);
    std::string text;
    for (int i = 0; i < 400; ++i) text += schedule.OnConnect() == nullptr ? '-' : 'x';
    return text;
  };
  EXPECT_EQ(choices(1), choices(1));
  EXPECT_NE(choices(1), choices(2));
  EXPECT_THAT(std::ranges::count(choices(1), 'x'),
              testing::AllOf(testing::Gt(50), testing::Lt(150)));
}

// Finds an element and asks for its rectangle. Returns the code of the call that failed.
int CodeOfReading(const SceneBroker& broker) {
  try {
    tessel::Content content(tools::HandleFromText(broker.Fact("window")),
                            tessel::Wide(broker.Fact("address")));
    for (tessel::Element& element : content.Find({})) (void)element.Rectangle();
    return SL_SUCCESS;
  } catch (const tessel::Error& error) {
    return error.code;
  } catch (const std::bad_alloc&) {
    return tessel::kOutOfMemory;
  }
}

struct FaultyBroker {
  FaultyBroker(const std::string& rule, std::size_t number)
      : scene(R"({"version":1,"title":"x","address":"http://fault)" + std::to_string(number) +
              R"(/","elements":[{"id":"a","rect":[1,2,3,4]}]})"),
        process(tessel::Narrow(scene.path.wstring()), L" --fault" + Quoted(rule)) {}

  const SceneFile scene;
  SceneBroker process;
};

struct Outcome {
  int code;
  ULONGLONG milliseconds;
};

Outcome OutcomeOfReading(const SceneBroker& broker) {
  const ULONGLONG start = ::GetTickCount64();
  const int code = CodeOfReading(broker);
  return {code, ::GetTickCount64() - start};
}

// Returns the first line that reports a fault.
std::string PrintedFault(SceneBroker& broker) {
  for (;;) {
    std::string line = broker.ReadLine();
    if (line.starts_with("fault: ") || line.empty()) return line;
  }
}

// The brokers run at the same time, because two clients wait for 18 s. docs/scene.md lists these
// codes.
TEST(FaultTest, LeadsToTheDocumentedCode) {
  const std::pair<std::string, int> kCases[] = {
      {"delay=30@command=2,call=1", SL_SUCCESS},
      {"hang@command=2,call=1", SL_CANNOT_READ},
      {"vanish-before@call=2", SL_CANNOT_CONNECT},
      {"vanish-after@command=2,call=1", SL_CANNOT_READ},
      {"vanish-during@command=2,call=1", SL_CANNOT_READ},
      {"status=4711@command=2,call=1", 4711},
      {"wrong-type@command=2,call=1", SL_ARCHIVE_FAILURE},
      {"too-few@command=2,call=1", SL_ARCHIVE_FAILURE},
      {"huge-count@call=1", tessel::kOutOfMemory},
      {"broken-json@command=2,call=1", SL_ARCHIVE_FAILURE},
      {"long=1000000@command=2,call=1", SL_SUCCESS},
      {"deaf=19000@command=9,call=1", SL_CANNOT_CONNECT},
      {"crash@command=2", SL_CANNOT_READ},
  };
  std::vector<std::unique_ptr<FaultyBroker>> brokers;
  std::vector<std::future<Outcome>> outcomes;
  for (const auto& [rule, code] : kCases) {
    brokers.push_back(std::make_unique<FaultyBroker>(rule, brokers.size()));
  }
  for (const auto& broker : brokers) {
    outcomes.push_back(
        std::async(std::launch::async, &OutcomeOfReading, std::cref(broker->process)));
  }
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    const auto& [rule, code] = kCases[i];
    SCOPED_TRACE(rule);
    const Outcome outcome = outcomes[i].get();
    EXPECT_EQ(outcome.code, code);
    EXPECT_LT(outcome.milliseconds, 3 * wire::kPipeTimeoutMilliseconds);
    SceneBroker& process = brokers[i]->process;
    EXPECT_THAT(PrintedFault(process), testing::StartsWith("fault: " + rule));
    if (rule.starts_with("crash")) {
      EXPECT_EQ(process.Wait(), tools::kCrashExitCode);
    } else {
      EXPECT_EQ(CodeOfReading(process), SL_SUCCESS);
      process.CloseAndReadSummary();
    }
  }
}

}  // namespace
