// Tests the C++ client library. Its brokers are processes of their own.
#include <chrono>
#include <list>

#include "support/Elements.h"
#include "support/StandIn.h"
#include "tessel/Client.h"

namespace {

using namespace std::chrono_literals;
using tessel::Content;
using Element = tessel::Element;
using tessel::Error;

const LogCapture capture;

// Lists all calls as "function id code".
struct CallList : tessel::CallObserver {
  void Begin(const tessel::Call&) override {}
  void End(const tessel::Call& call, int code) noexcept override {
    text += std::string(text.empty() ? "" : ", ") + call.function + ' ' +
            tessel::Narrow(call.elementId) + ' ' + std::to_string(code);
  }
  std::string text;
};

std::string TextOf(const std::optional<std::wstring>& text) {
  return text ? tessel::Narrow(*text) : "none";
}

// Each row runs an action against a broker with the given answers. Its result is what the action
// returns, or the code and the text of its Error.
TEST(Client, MakesTheseCallsForTheseAnswers) {
  const struct {
    Texts answers;
    std::function<std::string(Content&)> act;
    std::string result, calls;
  } kCases[] = {
      {{"[0,'']"},
       [](Content& c) { return c.At({}) ? "some" : "none"; },
       "none",
       "GetElemFromPoint  0"},
      {{"[0,'a']", "[0,'v']", "[102]", "[0,true]"},
       [](Content& c) {
         Element a = *c.At({});
         const std::string value = TextOf(a.Attribute(L"n"));
         return value + ' ' + TextOf(a.Attribute(L"n"));
       },
       "v none",
       "GetElemFromPoint  0, GetAttribute a 0, GetAttribute a 102, ReleaseObj a 0"},
      {{"[0,'a']", "[0,false]"},
       [](Content& c) {
         Element a = *c.At({});
         EXPECT_THROW(a.Release(), Error);
         a.Release();
         return "";
       },
       "-13 the element was released, abandoned or moved",
       "GetElemFromPoint  0, ReleaseObj a -3, ReleaseObj  -13"},
      {{"[0,'a']", "[0,'b']", "[0,true]"},
       [](Content& c) {
         Element a = *c.At({}), b = *c.At({});
         a = std::move(b);
         a.Abandon();
         return "";
       },
       "",
       "GetElemFromPoint  0, GetElemFromPoint  0, ReleaseObj a 0"},
      {{"[0,2,'a',1,2,3,4,'b',5,6]", "[0,true]"},
       [](Content& c) { return c.Find({}).empty() ? "" : ""; },
       "-12 the broker's answer does not fit the request",
       "FindCollection  -12, ReleaseObj a 0"},
      {{"[0,'a']", "[0,1,'b',2,7,8]", "[0,true]", "[0,true]"},
       [](Content& c) { return c.At({})->Ancestors().empty() ? "" : ""; },
       "-12 the broker gave 1 elements and 2 numbers",
       "GetElemFromPoint  0, GetAncestryInfo a 0, ReleaseObj b 0, ReleaseObj a 0"},
      {{"[0,'a']", "[0,'b']", "[0,'1','2','3',4]", "[-99]", "[0,true]", "[0,true]"},
       [](Content& c) {
         Element a = *c.At({}), b = *a.Parent();
         EXPECT_EQ(a.Identify(b).text3, L"3");
         return TextOf(a.Attribute(L"n"));
       },
       "-99 it refused",
       "GetElemFromPoint  0, GetParentElement a 0, GetIdInfo a 0, GetAttribute a -99, "
       "ReleaseObj b 0, ReleaseObj a 0"},
      {{"[0,'a']", "[0,true]"},
       [](Content& c) {
         c.At({})->SetValue({L"x\0y", 3});
         return "";
       },
       "-5 a text holds U+0000, which the bridge cannot carry",
       "GetElemFromPoint  0, ReleaseObj a 0"},
      {{},
       [](Content& c) { return Content(c.Window(), L"x", SL_HTTP_URI).Focused() ? "" : ""; },
       "-5 the search for the focus asks the tailored broker first, not the one of the content's "
       "scheme",
       ""},
  };
  const std::wstring address = L"client" + kProcess;
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.calls);
    std::optional<ScriptedBroker> broker;
    if (!row.answers.empty()) broker.emplace(SL_TAILORED_URI, address, row.answers);
    CallList calls;
    Content content(::GetDesktopWindow(), address);
    content.Observe(&calls);
    std::string result;
    try {
      result = row.act(content);
    } catch (const Error& error) {
      result = std::to_string(error.code) + ' ' + error.meaning;
    }
    EXPECT_EQ(result, row.result);
    EXPECT_EQ(calls.text, row.calls);
  }
}

// The broker ends after its answers. No launcher is installed, so calls fail at once.
TEST(Client, ReleasesWithoutACallWhileTheBrokerIsLost) {
  const std::wstring address = L"client-lost" + kProcess;
  CallList calls;
  Content content(::GetDesktopWindow(), address);
  content.Observe(&calls);
  std::list<Element> elements;
  ScriptedBroker first(SL_TAILORED_URI, address, {"[0,'a']", "[0,'b']"});
  for (int i = 0; i < 2; ++i) elements.push_back(*content.At({}));
  EXPECT_EQ(first.Wait(), 0u);
  calls.text.clear();
  EXPECT_THROW(elements.front().Click(), Error);
  elements.front().Release();
  elements.pop_front();
  EXPECT_EQ(calls.text, "ClickElem a -9");
  ScriptedBroker second(SL_TAILORED_URI, address, {"[103]", "[0,true]"});
  EXPECT_THROW(elements.front().Click(), Error);
  elements.clear();
  EXPECT_EQ(calls.text, "ClickElem a -9, ClickElem b 103, ReleaseObj b 0");
}

TEST(Client, StartsOneLauncherForTwoHundredElementsOfADeadBroker) {
  const std::wstring address = L"http://client-dead" + kProcess;
  std::string answer = "[0,200";
  for (int i = 0; i < 200; ++i) answer += ",'" + std::to_string(i) + "',0,0,0,0";
  ScriptedBroker broker(SL_TAILORED_URI, address, {answer + ']'});
  const StandIn launcher(L"sllauncher");
  const auto start = std::chrono::steady_clock::now();
  Content content(::GetDesktopWindow(), address);
  std::vector<Element> elements = content.Find({});
  EXPECT_EQ(elements.size(), 200u);
  EXPECT_EQ(broker.Wait(), 0u);
  elements.clear();
  EXPECT_EQ(launcher.Record(L"client-dead" + kProcess).size(), 4u) << "four lines a start";
  EXPECT_LT(std::chrono::steady_clock::now() - start, 60s);
}

TEST(Waits, EndWhenTheConditionIsMetOrCannotBe) {
  const std::wstring address = L"client-wait" + kProcess;
  const Content content(::GetDesktopWindow(), address);
  const StandIn launcher(L"sllauncher");
  const struct {
    Texts answers;
    std::function<std::string(Content)> wait;
    std::string result;
  } kCases[] = {
      {{"[0,0]", "[0,2,'a',1,2,3,4,'b',1,2,3,4]", "[0,true]", "[0,true]"},
       [](Content c) { return TextOf(WaitUntil(tessel::IsThere(c, {}), 5s, 1ms).Id()); },
       "a"},
      {{"[0,1,'a',1,2,3,4]", "[0,true]", "[0,0]"},
       [](Content c) { return WaitUntil(tessel::IsGone(c, {}), 5s, 1ms), "gone"; },
       "gone"},
      {{"[0,'a']", "[102]", "[0,'no']", "[0,'yes']", "[0,true]"},
       [](Content c) {
         Element a = *c.At({});
         return WaitUntil(tessel::AttributeIs(a, L"n", L"yes"), 5s, 1ms), "yes";
       },
       "yes"},
      {{"[0,'a']", "[0,'no']", "[0,true]"},
       [](Content c) {
         Element a = *c.At({});
         return WaitUntil(tessel::AttributeIs(a, L"n", L"yes"), 0ms), "";
       },
       "-103 waited 0 ms until the attribute \"n\" of element \"a\" is \"yes\"; seen last: \"no\""},
      {{"[4711]"},
       [](Content c) { return WaitUntil(tessel::IsGone(c, {}), 5s), ""; },
       "4711 it refused"},
  };
  for (const auto& row : kCases) {
    ScriptedBroker broker(SL_TAILORED_URI, address, row.answers);
    std::string result;
    try {
      result = row.wait(content);
    } catch (const Error& error) {
      result = std::to_string(error.code) + ' ' + error.meaning;
    }
    EXPECT_EQ(result, row.result);
    EXPECT_EQ(broker.Wait(), 0u);
  }
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
  EXPECT_TRUE(launcher.Record(address).empty());
}

}  // namespace
