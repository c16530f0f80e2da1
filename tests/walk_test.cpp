// A client that walks a scene for long, failures included: what it was handed out it gives back.
#include <gmock/gmock.h>

#include <atomic>
#include <random>
#include <thread>

#include "support/Elements.h"
#include "support/Tools.h"

namespace {

using namespace TesselSilverlight;

const LogCapture capture;

class Walk {
 public:
  explicit Walk(const SceneBroker& broker)
      : window_(tools::HandleFromText(broker.Fact("window"))),
        address_(tools::Wide(broker.Fact("address"))) {}

  int Random(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

  // One call, or a few that belong together; most on an element that an earlier step has found.
  void Step() {
    static constexpr void (Walk::*kSteps[])() = {
        &Walk::FindAtPoint, &Walk::FindFocused, &Walk::FindParent,   &Walk::FindAll,
        &Walk::Describe,    &Walk::ReadChain,   &Walk::ReadAncestry, &Walk::Read,
        &Walk::Act,         &Walk::Drop,        &Walk::Release,      &Walk::Invent};
    (this->*kSteps[Random(std::size(kSteps))])();
  }

  int refusedReleases = 0;  // of elements that the broker never gave

 private:
  SLElemData Content() const {
    SLElemData content;
    content.hwnd = window_;
    content.sourceUri = address_.c_str();
    return content;
  }

  SLElemData& Any() {
    if (held_.empty()) FindFocused();
    return held_[static_cast<std::size_t>(Random(static_cast<int>(held_.size())))];
  }

  void Keep(SLElemData element) {
    if (held_.size() < 8) return held_.push_back(std::move(element));
    Any() = std::move(element);
  }

  void FindAtPoint() {
    SLElemData content = Content(), found;
    EXPECT_EQ(GetElemFromPoint(content, {Random(700) - 20, Random(500) - 20}, 0, found), 0);
    Keep(std::move(found));
  }
  void FindFocused() {
    SLElemData found = Content();
    EXPECT_EQ(GetFocusedElement(window_, found), 0);
    Keep(std::move(found));
  }
  void FindParent() {
    SLElemData parent;
    GetParentElement(Any(), parent);
    Keep(std::move(parent));
  }
  void FindAll() {
    SLElemData content = Content();
    SLElemData& root = Random(2) == 0 ? content : Any();
    FindCollection(root, nullptr, nullptr, nullptr, Random(4) - 1, true, records_);
  }
  void Describe() {
    wchar_t *name = nullptr, *type = nullptr, *id = nullptr;
    int number = 0;
    GetIdInfo(Random(2) == 0 ? nullptr : &Any(), Any(), &name, &type, &id, &number);
    for (BSTR text : {name, type, id}) ::SysFreeString(text);
  }
  void ReadChain() { GetDefaultSelectorHierarchy(Any(), records_); }
  void ReadAncestry() {
    Numbers numbers;
    GetAncestryInfo(Any(), records_, numbers);
  }
  void Read() {
    Items items;
    RECT rect = {};
    CComBSTR text;
    wchar_t name[] = L"checked";
    GetElemRectangle(Any(), rect);
    GetItems(Any(), 0, items);
    GetAttribute(Any(), name, &text);
  }
  void Act() {
    const SLElemData& element = Any();
    const int code = Random(2) == 0 ? ClickElem(element, 0, 0) : SetFocus(element);
    EXPECT_EQ(code, ::SysStringLen(element.objectId) > 0 ? 0 : -13);
    SetValue(element, L"v");
    CheckElem(element, Random(2));
    SelectItem(element, L"München");
  }
  void Drop() { Any() = SLElemData(); }
  // By hand: the destruction behind it must not come to the broker again.
  void Release() {
    SLElemData& element = Any();
    const bool isElement = ::SysStringLen(element.objectId) > 0;
    EXPECT_EQ(ReleaseObj(element), isElement ? 0 : -13);
    Forget(element);
  }
  void Invent() {
    const SLElemData& element = Any();
    if (::SysStringLen(element.objectId) == 0) return;
    SLElemData invented = Element(address_, L"never given");
    invented.processId = element.processId;
    RECT rect = {};
    EXPECT_EQ(GetElemRectangle(invented, rect), 101);
    ++refusedReleases;
  }

  const HWND window_;
  const std::wstring address_;
  std::minstd_rand random_{20};
  std::vector<SLElemData> held_;
  Records records_;
};

TEST(Walk, GivesBackWhatItWasHandedOut) {
  SceneBroker broker(TESSEL_SCENES "/login.json");
  std::atomic<int> served = 0;
  std::map<std::string, int> summary;
  std::jthread reader([&] {
    for (std::string line; !(line = broker.ReadLine()).empty();) {
      const std::size_t colon = line.find(": ");
      if (line.starts_with("served"))
        ++served;
      else
        summary[line.substr(0, colon)] += std::atoi(line.c_str() + colon + 2);
    }
  });
  int vanished = 0;
  LogCapture::Reset();
  {
    Walk walk(broker);
    for (int step = 0; step < 600; ++step) {
      walk.Step();
      if (step % 20 != 0) continue;
      // A client of another make that leaves without its answer, which held three objects.
      RawClient client(tools::Wide(broker.Fact("pipe")));
      const int before = served;
      client.Send(tools::Wide(broker.Request(R"([8,?,"user"])")));
      while (served == before) ::Sleep(1);
      client.Leave();
      vanished += 3;
    }
    summary["refused"] = walk.refusedReleases;
  }
  const std::size_t refused = LogCapture::Count("Release failed");
  ::PostMessageW(tools::HandleFromText(broker.Fact("window")), WM_CLOSE, 0, 0);
  reader.join();
  EXPECT_EQ(broker.Wait(), 0u);
  EXPECT_GT(summary["handed out"], 300);
  EXPECT_EQ(summary["undelivered"], vanished);
  EXPECT_EQ(summary["handed out"], summary["released"] + vanished);
  EXPECT_EQ(summary["still held"], 0);
  EXPECT_GT(refused, 0u);
  EXPECT_EQ(refused, static_cast<std::size_t>(summary["refused"])) << "no release came twice";
}

}  // namespace
