// A client makes many calls about a scene, some of which fail, and releases every element.
#include <gmock/gmock.h>

#include <atomic>
#include <random>
#include <thread>

#include "support/Elements.h"
#include "support/Tools.h"
#include "wire/Statuses.h"

namespace {

using namespace TesselSilverlight;

const LogCapture capture;

// Makes random calls about a scene. Many calls are refused, and many records name no element. The
// test checks that no element is lost or released twice.
class Walk {
 public:
  explicit Walk(const SceneBroker& broker)
      : window_(tools::HandleFromText(broker.Fact("window"))),
        address_(tessel::Wide(broker.Fact("address"))) {}

  void Step() {
    SLElemData content = Content(), found = Content();
    SLElemData& element = held_[Random(std::size(held_))];
    SLElemData& other = held_[Random(std::size(held_))];
    const bool isElement = ::SysStringLen(element.objectId) > 0;
    const int refused = isElement ? 0 : -13;
    switch (Random(10)) {
      case 0:
        EXPECT_EQ(GetElemFromPoint(content, {Random(700) - 20, Random(500) - 20}, 0, found), 0);
        element = std::move(found);
        break;
      case 1:
        EXPECT_EQ(GetFocusedElement(window_, found), 0);
        element = std::move(found);
        break;
      case 2:
        EXPECT_EQ(GetParentElement(element, found), refused);
        if (::SysStringLen(found.objectId) > 0) other = std::move(found);
        break;
      case 3:
        FindCollection(Random(2) == 0 ? content : element, nullptr, nullptr, nullptr, Random(4) - 1,
                       true, records_);
        break;
      case 4:
        EXPECT_EQ(GetDefaultSelectorHierarchy(element, records_), refused);
        break;
      case 5: {
        Numbers numbers;
        EXPECT_EQ(GetAncestryInfo(element, records_, numbers), refused);
        break;
      }
      case 6: {
        CComBSTR texts[3];
        int number = 0;
        GetIdInfo(Random(2) == 0 ? nullptr : &other, element, &texts[0], &texts[1], &texts[2],
                  &number);
        break;
      }
      case 7:
        EXPECT_EQ(ClickElem(element, 0, 0), refused);
        SetValue(element, L"v");
        SelectItem(element, L"München");
        break;
      case 8:
        // ReleaseObj already releases the element. Forget clears the id, so that the destructor
        // does not release it again.
        EXPECT_EQ(ReleaseObj(element), refused);
        Forget(element);
        break;
      case 9:
        if (!isElement) break;
        found.processId = element.processId;
        found.uriScheme = element.uriScheme;
        found.objectId = ::SysAllocString(L"never given");
        EXPECT_EQ(SetFocus(found), wire::kUnknownElement);
        ++refusedReleases;
        break;
    }
  }

  std::size_t refusedReleases = 0;  // counts releases that the broker refuses

 private:
  int Random(std::size_t bound) { return static_cast<int>(random_() % bound); }

  SLElemData Content() const {
    SLElemData content;
    content.hwnd = window_;
    content.sourceUri = address_.c_str();
    return content;
  }

  const HWND window_;
  const std::wstring address_;
  std::minstd_rand random_{20};
  SLElemData held_[4];
  Records records_;
};

TEST(Walk, ReleasesEveryElement) {
  SceneBroker broker(TESSEL_SCENES "/login.json");
  std::atomic<int> ownServed = 0;
  std::map<std::string, int> summary;
  std::jthread reader([&] {
    for (std::string line; !(line = broker.ReadLine()).empty();) {
      summary[line.substr(0, line.find(": "))] = std::atoi(line.c_str() + line.find(": ") + 2);
      if (line.find(", \"user\"] -> ") != line.npos) ++ownServed;
    }
  });
  LogCapture::Reset();
  std::size_t refused = 0;
  int vanished = 0;
  {
    Walk walk(broker);
    for (int step = 0; step < 800; ++step) {
      walk.Step();
      if (step % 40 != 0) continue;
      // A client without the module requests three elements and leaves before it gets the answer.
      RawClient client(tessel::Wide(broker.Fact("pipe")));
      // The module never writes this space, so the test can count these requests in the broker's
      // output.
      client.Send(tessel::Wide(broker.Request(R"([8,?, "user"])")));
      vanished += 3;
      while (ownServed * 3 < vanished) ::Sleep(1);
    }
    refused = walk.refusedReleases;
  }
  ::PostMessageW(tools::HandleFromText(broker.Fact("window")), WM_CLOSE, 0, 0);
  reader.join();
  EXPECT_EQ(broker.Wait(), 0u);
  EXPECT_GT(summary["released"], 300);
  EXPECT_EQ(summary["undelivered"], vanished);
  EXPECT_EQ(summary["handed out"], summary["released"] + vanished);
  EXPECT_EQ(summary["still held"], 0);
  EXPECT_GT(refused, 0u);
  EXPECT_EQ(LogCapture::Count("Release failed"), refused) << "no element was released twice";
}

}  // namespace
