// Tests the C++ client library. Its brokers are processes of their own.
#include <functional>

#include "support/Elements.h"
#include "support/StandIn.h"
#include "tessel/Client.h"

namespace {

using namespace std::chrono_literals;
using tessel::Content;
using Element = tessel::Element;
using tessel::Error;

const LogCapture capture;

// Lists all calls to the module as "function id code", where `id` is the id of the element.
struct CallList : tessel::CallObserver {
  void Begin(const tessel::Call&) override {}
  void End(const tessel::Call& call, int code) noexcept override {
    text += std::string(text.empty() ? "" : ", ") + call.function + ' ' +
            tessel::Narrow(call.elementId) + ' ' + std::to_string(code);
  }
  std::string text;
};

// Each row has the broker's answers, an action with the element "a", the expected result, and the
// expected calls. The result is the text that the action returns, or the code and the text of the
// Error that it throws.
TEST(Client, MakesTheseCallsForTheseAnswers) {
  using Act = std::function<std::string(Content&, Element)>;
  const std::tuple<Texts, Act, std::string, std::string> kCases[] = {
      {{"[0,false]"},
       [](Content&, Element a) {
         EXPECT_THROW(a.Release(), Error);
         EXPECT_THROW(a.Release(), Error);
         return a.Find({}).empty() ? "nothing" : "the whole content";
       },
       "-13 the element was released, abandoned or moved",
       "ReleaseObj a -3, ReleaseObj  -13"},
      {{"[0,'b']", "[0,true]"},
       [](Content& c, Element a) {
         a = *c.At({});
         return a.Abandon(), "";
       },
       "",
       "GetElemFromPoint  0, ReleaseObj a 0"},
      {{"[0,2,'b',1,2,3,4,'c',5,6]", "[0,true]", "[0,true]"},
       [](Content& c, Element) { return std::to_string(c.Find({}).size()); },
       "-12 the broker's answer does not fit the request",
       "FindCollection  -12, ReleaseObj b 0, ReleaseObj a 0"},
      {{"[0,1,'b',2,7,8]", "[0,true]", "[0,true]"},
       [](Content&, Element a) { return std::to_string(a.Ancestors().size()); },
       "-12 the broker gave 1 elements and 2 numbers",
       "GetAncestryInfo a 0, ReleaseObj b 0, ReleaseObj a 0"},
      {{"[0,'b']", "[0,'1','2','3',4]", "[0,true]", "[-99]", "[0,true]"},
       [](Content&, Element a) {
         EXPECT_EQ(a.Identify(*a.Parent()).text3, L"3");
         return a.Attribute(L"n") ? "some" : "none";
       },
       "-99 it refused",
       "GetParentElement a 0, GetIdInfo a 0, ReleaseObj b 0, GetAttribute a -99, ReleaseObj a 0"},
      {{"[0,true]"},
       [](Content&, Element a) {
         return a.SetValue({L"x\0y", 3}), "";
       },
       "-5 a text holds U+0000, which the bridge cannot carry",
       "ReleaseObj a 0"},
      {{"[0,true]"},
       [](Content& c, Element) {
         return Content(c.Window(), L"x", SL_HTTP_URI).Focused() ? "some" : "none";
       },
       "-5 the search for the focus asks the tailored broker first, not the one of the content's "
       "scheme",
       "ReleaseObj a 0"},
      {{"[0,0]", "[0,2,'b',1,2,3,4,'c',1,2,3,4]", "[0,true]", "[0,true]", "[0,true]"},
       [](Content& c, Element) { return Narrow(WaitUntil(IsThere(c, {}), 5s, 1ms).Id().c_str()); },
       "b",
       "FindCollection  0, FindCollection  0, ReleaseObj c 0, ReleaseObj b 0, ReleaseObj a 0"},
      {{"[0,1,'b',1,2,3,4]", "[0,true]", "[0,0]", "[0,true]"},
       [](Content& c, Element) { return WaitUntil(IsGone(c, {}), 5s, 1ms), "gone"; },
       "gone",
       "FindCollection  0, ReleaseObj b 0, FindCollection  0, ReleaseObj a 0"},
      {{"[102]", "[0,'no']", "[0,'yes']", "[0,true]"},
       [](Content&, Element a) { return WaitUntil(AttributeIs(a, L"n", L"yes"), 5s, 1ms), "yes"; },
       "yes",
       "GetAttribute a 102, GetAttribute a 0, GetAttribute a 0, ReleaseObj a 0"},
      {{"[0,'no']", "[0,true]"},
       [](Content&, Element a) { return WaitUntil(AttributeIs(a, L"n", L"yes"), 0ms), ""; },
       "-103 waited 0 ms until the attribute \"n\" of element \"a\" is \"yes\"; seen last: \"no\"",
       "GetAttribute a 0, ReleaseObj a 0"},
      {{"[4711]", "[0,true]"},
       [](Content& c, Element) { return WaitUntil(IsGone(c, {}), 5s), ""; },
       "4711 it refused",
       "FindCollection  4711, ReleaseObj a 0"},
  };
  const std::wstring address = L"client" + kProcess;
  for (const auto& [answers, act, result, calls] : kCases) {
    SCOPED_TRACE(result);
    Texts all = answers;
    all.insert(all.begin(), "[0,'a']");
    ScriptedBroker broker(SL_TAILORED_URI, address, all);
    Content content(::GetDesktopWindow(), address);
    Element element = *content.At({});
    CallList made;
    content.Observe(&made);
    std::string outcome;
    try {
      outcome = act(content, std::move(element));
    } catch (const Error& error) {
      outcome = std::to_string(error.code) + ' ' + error.meaning;
    }
    EXPECT_EQ(outcome, result);
    EXPECT_EQ(made.text, calls);
    EXPECT_EQ(broker.Wait(), 0u) << "the broker has sent all its answers";
  }
}

// The first broker ends after its only answer. No launcher is installed, so calls then fail at
// once. After a call has failed, elements are released without a call until a broker answers again.
TEST(Client, ReleasesWithoutACallWhileTheBrokerIsLost) {
  const std::wstring address = L"client-lost" + kProcess;
  CallList calls;
  Content content(::GetDesktopWindow(), address);
  ScriptedBroker first(SL_TAILORED_URI, address,
                       {"[0,4,'d',0,0,0,0,'c',0,0,0,0,'b',0,0,0,0,'a',0,0,0,0]"});
  std::vector<Element> elements = content.Find({});
  EXPECT_EQ(first.Wait(), 0u);
  content.Observe(&calls);
  for (int i = 0; i < 2; ++i) elements.pop_back();
  EXPECT_THROW(elements.back().Click(), Error);
  elements.back().Release();
  elements.pop_back();
  EXPECT_EQ(calls.text, "ReleaseObj a -9, ClickElem c -9");
  ScriptedBroker second(SL_TAILORED_URI, address, {"[103]", "[0,true]"});
  EXPECT_THROW(elements.back().Click(), Error);
  elements.clear();
  EXPECT_EQ(calls.text, "ReleaseObj a -9, ClickElem c -9, ClickElem d 103, ReleaseObj d 0");
}

TEST(Client, StartsOneLauncherWhenItsBrokerIsKilled) {
  const std::wstring name = L"client-killed" + kProcess, address = L"http://" + name;
  ScriptedBroker broker(SL_TAILORED_URI, address, {TwoHundredElements(), "[0]"});
  const StandIn launcher(L"sllauncher");
  {
    const auto elements = Content(::GetDesktopWindow(), address).Find({});
    EXPECT_EQ(elements.size(), 200u);
    broker.Kill();
    broker.Wait();
  }
  EXPECT_EQ(launcher.Record(name).size(), 4u) << "four lines a start";
}

TEST(Waits, StartABrokerOnlyForTheFirstLook) {
  const std::wstring name = L"client-wait" + kProcess, address = L"http://" + name;
  const Content content(::GetDesktopWindow(), address);
  const StandIn launcher(L"sllauncher");
  ScriptedBroker broker(SL_TAILORED_URI, address, {"[0,0]"});
  int looks = 0;
  tessel::Condition never(content, L"never", [&](std::wstring&) {
    ++looks;
    EXPECT_EQ(Content(content).Find({}).size(), 0u);
    broker.Wait();
    return false;
  });
  EXPECT_THROW(WaitUntil(never, 5s, 1ms), Error);
  EXPECT_EQ(looks, 2);
  EXPECT_TRUE(launcher.Record(name).empty());
}

}  // namespace
