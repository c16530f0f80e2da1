// A client makes many random calls about a scene, some of which fail, and releases every element.
#include <gmock/gmock.h>

#include <random>

#include "support/LogCapture.h"
#include "support/Tools.h"
#include "tessel/Client.h"

namespace {

using tessel::Element;

const LogCapture capture;

class Walk {
 public:
  explicit Walk(const SceneBroker& broker)
      : content_(tools::HandleFromText(broker.Fact("window")),
                 tessel::Wide(broker.Fact("address"))) {}

  void Step() try {
    std::optional<Element>& element = held_[Random(std::size(held_))];
    switch (element ? Random(11) : Random(3)) {
      case 0:
        element = content_.At({Random(700) - 20, Random(500) - 20});
        break;
      case 1:
        element = content_.Focused();
        break;
      case 2:
        found_ = content_.Find({.option1 = Random(4) - 1, .option2 = true});
        break;
      case 3:
        held_[Random(std::size(held_))] = element->Parent();
        break;
      case 4:
        found_ = element->Selector();
        break;
      case 5:
        element->Ancestors();
        break;
      case 6:
        if (!found_.empty()) element->Identify(found_[Random(found_.size())]);
        break;
      case 7:
        element->SetValue(L"v");
        break;
      case 8:
        element->Select(L"München");
        break;
      case 9:
        element->Release();
        break;
      case 10:
        found_ = element->Find({.option1 = Random(4) - 1, .option2 = true});
        break;
    }
  } catch (const tessel::Error&) {
    ++failures;
  }

  int failures = 0;

 private:
  int Random(std::size_t bound) { return static_cast<int>(random_() % bound); }

  tessel::Content content_;
  std::minstd_rand random_{20};
  std::optional<Element> held_[4];
  std::vector<Element> found_;
};

TEST(Walk, ReleasesEveryElement) {
  SceneBroker broker(TESSEL_SCENES "/login.json");
  int failures = 0, vanished = 0;
  {
    Walk walk(broker);
    for (int step = 0; step < 800; ++step) {
      walk.Step();
      if (step % 40 != 0) continue;
      // A client without the module requests three elements and leaves before it gets the answer.
      RawClient client(tessel::Wide(broker.Fact("pipe")));
      // The module never writes this space, so the test finds this request in the broker's output.
      client.Send(tessel::Wide(broker.Request(R"([8,?, "user"])")));
      vanished += 3;
      while (broker.ReadLine().find(", \"user\"] -> ") == std::string::npos) continue;
    }
    failures = walk.failures;
  }
  const std::string summary = broker.CloseAndReadSummary();
  const std::regex form(
      "handed out: (\\d+)\nundelivered: (\\d+)\nreleased: (\\d+)\nstill held: 0\n");
  std::smatch counts;
  ASSERT_TRUE(std::regex_match(summary, counts, form)) << summary;
  EXPECT_EQ(std::stoi(counts[2]), vanished);
  EXPECT_EQ(std::stoi(counts[1]), std::stoi(counts[3]) + vanished);
  EXPECT_GT(std::stoi(counts[3]), 300);
  EXPECT_GT(failures, 100);
  EXPECT_EQ(LogCapture::Count("Release failed"), 0u) << "no element was released twice";
}

}  // namespace
