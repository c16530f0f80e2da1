// The inspector as its users meet it.
#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "support/Tools.h"

namespace {

using Json = nlohmann::ordered_json;
using tools::Narrow;
using tools::Wide;

void ExpectAllReleased(SceneBroker& broker) {
  const std::string summary = broker.CloseAndReadSummary();
  const std::regex even("handed out: ([1-9]\\d*)\nundelivered: 0\nreleased: \\1\nstill held: 0\n");
  EXPECT_TRUE(std::regex_match(summary, even)) << summary;
}

std::pair<DWORD, std::string> Inspected(const SceneBroker& broker, const std::string& command) {
  return ToolOutput(L"tessel.exe " + Wide(command) + L" --address" +
                    Quoted(broker.Fact("address")) + L" --window" + Quoted(broker.Fact("window")));
}

TEST(InspectorTest, ReportsInTextAndJson) {
  struct Case {
    const char* command;
    std::string text, json;
    const char* request = nullptr;  // asks for what the command has changed, from run to run
    std::vector<const char*> answers = {};
  };
  SceneBroker broker(TESSEL_SCENES "/login.json");
  const std::string window = broker.Fact("window"), process = broker.Fact("process");
  const std::string place =
      "\nwindow: " + window + "\nprocess: " + process + "\nscheme: tailored\n";
  const std::string placeJson =
      R"(","window":")" + window + R"(","process":)" + process + R"(,"scheme":"tailored"})";
  const std::string branch = "element: branch\n", remember = "element: remember\n";
  const Case kCases[] = {
      {"at 1,1", "element: page" + place, R"({"element":"page)" + placeJson},
      {"focus", "element: user" + place, R"({"element":"user)" + placeJson},
      {"parent --focus --parent 1", "element: page" + place, R"({"element":"page)" + placeJson},
      {"ancestors --find ,,branch", branch + "ancestors: 2\n  0 form\n  0 page\n",
       R"({"element":"branch","ancestors":[{"id":"form","number":0},{"id":"page","number":0}]})"},
      {"selector --at 320,344", remember + "selector: 3\n  page\n  form\n  remember\n",
       R"({"element":"remember","selector":["page","form","remember"]})"},
      {"find \"Sign in,,\"",
       "found: 2\n  [120, 60, 520, 420] form\n  [380, 368, 500, 404] sign-in\n",
       R"({"found":[{"id":"form","rect":[120,60,520,420]},
                    {"id":"sign-in","rect":[380,368,500,404]}]})"},
      {"find ,Text,e --containing --find ,,form",
       "found: 2\n  [140, 72, 500, 104] title\n"
       "  [140, 120, 500, 148] user\n",
       ""},
      {"find ,, --levels 1 --focus --parent 2", "found: 1\n  [120, 60, 520, 420] form\n",
       R"({"found":[{"id":"form","rect":[120,60,520,420]}]})"},
      {"id --find ,Button,",
       "element: sign-in\ntext1: Sign in\ntext2: Button\ntext3: sign-in\n"
       "number: 0\n",
       R"({"element":"sign-in","text1":"Sign in","text2":"Button",
                          "text3":"sign-in","number":0})"},
      {"get value --focus", "element: user\nvalue: zoë\n",
       R"({"element":"user","name":"value","text":"zoë"})"},
      {"items --at 320,250", branch + "items: 4\n  München\n  São Paulo\n  東京\n  Łódź\n",
       R"({"element":"branch","items":["München","São Paulo","東京","Łódź"]})"},
      {"rect --find ,CheckBox, --scheme tailored",
       remember + "left: 140\ntop: 332\nright: 500\nbottom: 356\n",
       R"({"element":"remember","left":140,"top":332,"right":500,"bottom":356})"},
      {"click --find ,,remember",
       remember + "done: click\n",
       R"({"element":"remember","done":"click"})",
       R"([10,?,"remember","checked"])",
       {R"([0,"false"])", R"([0,"true"])"}},
      {"check --find ,,remember --off",
       remember + "done: check\n",
       R"({"element":"remember","done":"check"})",
       R"([10,?,"remember","checked"])",
       {R"([0,"false"])", R"([0,"false"])"}},
      {"check --focus",
       remember + "done: check\n",
       "",
       R"([10,?,"remember","checked"])",
       {R"([0,"true"])"}},
      {"set \"{} \\\"𝄞\" --find ,,user",
       "element: user\ndone: set\n",
       R"({"element":"user","done":"set"})",
       R"([10,?,"user","value"])",
       {R"([0,"{} \"𝄞"])", R"([0,"{} \"𝄞"])"}},
      {"select Łódź --find ,,branch",
       branch + "done: select\n",
       R"({"element":"branch","done":"select"})",
       R"([10,?,"branch","selected"])",
       {R"([0,"Łódź"])", R"([0,"Łódź"])"}},
      {"setfocus --find ,,title",
       "element: title\ndone: setfocus\n",
       R"({"element":"title","done":"setfocus"})",
       R"([2,?,"title"])",
       {"[0,140,72,500,104]", "[0,140,72,500,104]"}},
      {"id --focus --relative 2",
       "element: title\ntext1: Welcome to Café Größe ☕\n"
       "text2: TextBlock\ntext3: title\nnumber: 0\n",
       ""},
  };
  for (const Case& test : kCases) {
    const auto expectAnswer = [&](std::size_t run) {
      if (run >= test.answers.size()) return;
      EXPECT_EQ(broker.Ask(test.request), test.answers[run]) << test.command;
    };
    EXPECT_EQ(Inspected(broker, test.command), std::pair(DWORD{0}, test.text)) << test.command;
    expectAnswer(0);
    if (test.json.empty()) continue;
    const auto [code, json] = Inspected(broker, test.command + std::string(" --json"));
    EXPECT_EQ(code, 0u) << test.command;
    EXPECT_EQ(Json::parse(json, nullptr, false), Json::parse(test.json)) << json;
    expectAnswer(1);
  }
  ExpectAllReleased(broker);
}

TEST(InspectorTest, FailsWithCodeAndCure) {
  const std::tuple<const char*, DWORD, const char*> kCases[] = {
      {"at -1,5", 1, "cannot find the element at -1,5: there is none"},
      {"get name --find \"Sign in,,\"", 1, "matches \"Sign in,,\": 2 elements match; see them"},
      {"get name --find ,,a\\,b\\\\", 1, "matches \",,a\\\\,b\\\\\\\\\": 0 elements match; see"},
      {"rect --focus --parent 2147483647", 1, "steps up of element \"user\": it has none"},
      {"parent --at 0,0", 1, "cannot find the parent of element \"page\": it has none"},
      {"id --focus --relative 3", 1, "cannot find the ancestor 3 steps up of element \"user\""},
      {"rect", 2, "Exactly 1 option from [--at,--focus,--find] is required"},
      {"at 1,2147483648", 2, "is no point"},
      {"find a,b", 2, "\"a,b\" is not three texts"},
      {"find a,b,c\\", 2, "is not three texts"},
      {"find ,, --parent 1", 2, "--parent requires an element"},
      {"focus --parent 2147483648", 2, "not in range"},
      {"items --focus --option 3", 2, "--option requires --at"},
      {"tree --attr value", 2, "is a state"},
      {"tree --window \"\"", 2, "--window: must not be empty"},
      {"at 1,1 --scheme file", 3, "-9 (SL_BROKER_NOT_STARTED)"},
      {"get Größe --focus", 4, "cannot read the attribute \"Größe\" of element \"user\"\n  addr"},
      {"set x --find ,,title", 4, "cannot set the value of element \"title\""},
      {"select Ulm --find ,,branch", 4, "cannot select \"Ulm\" in element \"branch\""},
      {"find ,, --levels -1", 4, "103 (the broker's own status)"},
  };
  SceneBroker broker(TESSEL_SCENES "/login.json");
  for (const auto& [command, code, text] : kCases) broker.Inspect(command, code, text);
  ExpectAllReleased(broker);
}

TEST(InspectorTest, FindsTheWindow) {
  // An address without a scheme of its own: the search ends with the tailored one.
  const SceneFile file(R"({"version":1,"address":"desk","title":"Ü",
                           "elements":[{"id":"desk","rect":[-800,-40,0,0]}]})");
  const SceneBroker broker(Narrow(file.path.wstring()));
  const std::wstring title = L"tools test " + std::to_wstring(::GetCurrentProcessId());
  HWND windows[2];
  for (HWND& window : windows) {
    window = ::CreateWindowW(L"STATIC", title.c_str(), 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, 0);
  }
  const std::string own = tools::HandleText(windows[0]), rect = "rect --at -800,-40";
  const std::string cannot = "cannot find the element at -800,-40: ";
  broker.Inspect(rect, 0, "element: desk\nleft: -800\ntop: -40\nright: 0\nbottom: 0\n", "Ü");
  broker.Inspect(rect, 2, cannot + "no top-level window has the title \"ü\"; write it", "ü");
  broker.Inspect(rect, 2, cannot + "there is no window 0x7ffffff1; take the handle", "0x7ffffff1");
  broker.Inspect(rect, 2, cannot + "2 windows have the title", Narrow(title));
  broker.Inspect("tree", 2, "or give the title\n  address: desk", "0x7ffffff1");
  // A window of another process than the broker's: refused, or searched for and then injected.
  broker.Inspect(rect + " --scheme tailored", 4, "-8 (SL_NOT_SERVED)", own);
  broker.Inspect(rect, 3, "-10 (SL_INJECTOR_NOT_STARTED)", own);
  for (HWND window : windows) ::DestroyWindow(window);
}

// A broker of the test's own, for one request: it can do what SceneBroker does not. It is the only
// one that a search asks, as the address has no scheme.
class OneAnswer {
 public:
  ~OneAnswer() {
    ::CloseHandle(pipe_);
    ::DestroyWindow(window_);
  }

  void Connect() { ::ConnectNamedPipe(pipe_, nullptr); }
  void Answer(const std::wstring& text) {
    DWORD bytes = 0;
    const auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    ::WriteFile(pipe_, text.data(), size, &bytes, nullptr);
  }
  void CloseWindow() { ::DestroyWindow(window_); }

  std::wstring CommandLine(const std::string& command) const {
    return TestFolder() + L"tessel.exe " + Wide(command) + L" --address tools --window" +
           Quoted(tools::HandleText(window_));
  }

 private:
  const HWND window_ =
      ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
  const HANDLE pipe_ =
      ::CreateNamedPipeW(kTailoredPipe.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE,
                         1 /*instances*/, 4096, 4096, 0 /*default time-out*/, nullptr);
};

TEST(InspectorTest, TellsWhatItWaitsFor) {
  OneAnswer broker;
  ChildProcess tessel(broker.CommandLine("at 1,2 --scheme tailored"));
  broker.Connect();
  EXPECT_EQ(tessel.ReadLine(),
            "tessel: waiting for the broker to find the element at 1,2 (at most 70 s)");
  broker.Answer(L"[0,7]");
  EXPECT_THAT(tessel.ReadToEnd(), testing::HasSubstr("-12 (SL_ARCHIVE_FAILURE)"));
  EXPECT_EQ(tessel.Wait(), 5u);
}

TEST(InspectorTest, EndsWithAnyAnswer) {
  const std::tuple<const char*, const wchar_t*, DWORD, const char*> kCases[] = {
      {"at 1,2", L"[4711]", 4, "4711 (the broker's own status)"},
      {"at 1,2", L"[-99]", 4, "-99 (the broker's own status)"},
      {"at 1,2", L"[-8]", 2, "-5 (SL_INVALID_ARGUMENT)"},  // its window is gone
      {"find ,,", L"[0,2000000000]", 5, "cannot find: "},
  };
  for (const auto& [command, answer, code, text] : kCases) {
    OneAnswer broker;
    ChildProcess tessel(broker.CommandLine(command));
    broker.Connect();
    broker.CloseWindow();
    broker.Answer(answer);
    EXPECT_THAT(tessel.ReadToEnd(), testing::HasSubstr(text)) << command;
    EXPECT_EQ(tessel.Wait(), code) << command;
  }
}

// Elements with texts that are easily spoilt on the way; the same scene for the same seed.
class OddScene {
 public:
  explicit OddScene(unsigned seed) : random_(seed) {}

  Json Make(int count) {
    Json elements = Json::array();
    for (int i = 0; i < count; ++i) elements.push_back(Element(i, elements));
    return {{"version", 1},
            {"address", "http://odd.example"},
            {"title", "\"Odd\" \\ 𝄞 \u202e, " + Text()},
            {"focus", elements[Below(count)]["id"]},
            {"elements", elements}};
  }

 private:
  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  bool Maybe() { return Below(2) == 0; }

  std::string Text() {
    const std::string texts[] = {"",
                                 "a,b",
                                 "\\",
                                 "\\n\\\\,",
                                 "\"quoted\"",
                                 "{}",
                                 "[x,y]",
                                 "%%",
                                 "\x01\x1f\x7f\t\r\n",
                                 "\u0085\u2028\u202e",
                                 " spaces ",
                                 "𝄞😀",
                                 "\ufeff\ufffd",
                                 "Größe",
                                 std::string(2000, 'x')};
    return texts[Below(std::size(texts))];
  }

  Json Element(int index, const Json& above) {
    Json element = {{"id", Text() + std::to_string(index)}};
    if (index > 0 && Below(5) > 0) element["parent"] = above[Below(index)]["id"];
    const int left = Maybe() ? INT_MIN : Below(1000), top = Maybe() ? -Below(1000) : 0;
    element["rect"] = {left, top, Maybe() ? INT_MAX : left + Below(100), top + Below(100)};
    for (const char* name : {"name", "type", "{}", "[x,y]", "-a \"b\"\\", "Größe 𝄞\t,=", "\\"}) {
      if (Maybe()) element["attributes"][name] = Text();
    }
    if (Maybe()) {
      element["items"] = Json::array();
      for (int i = Below(4); i > 0; --i) element["items"].push_back(Text());
      if (!element["items"].empty() && Maybe()) element["states"]["selected"] = element["items"][0];
    }
    if (Maybe()) element["states"]["checked"] = Maybe();
    if (Maybe()) element["states"]["value"] = Text();
    return element;
  }

  std::mt19937 random_;
};

std::string ReadFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string OptionsForAttributesOf(const nlohmann::json& scene) {
  std::set<std::string> names;
  for (const auto& element : scene["elements"]) {
    if (!element.contains("attributes")) continue;
    for (const auto& attribute : element["attributes"].items()) names.insert(attribute.key());
  }
  std::string options;
  for (const std::string& name : names) options += Narrow(Quoted("--attr=" + name));
  return options;
}

TEST(InspectorTest, DumpsAreTheScenesThatWereServed) {
  const std::string scenes[] = {ReadFile(TESSEL_SCENES "/login.json"),
                                ReadFile(TESSEL_SCENES "/orders.json"), OddScene(1).Make(60).dump(),
                                OddScene(2).Make(20).dump()};
  for (const std::string& text : scenes) {
    std::string served = text;
    for (int round = 1; round <= 2; ++round) {
      const SceneFile file(served);
      SceneBroker broker(Narrow(file.path.wstring()));
      const auto scene = nlohmann::json::parse(text);  // of which the order of fields is no part
      const auto [code, dump] = Inspected(broker, "tree --json" + OptionsForAttributesOf(scene));
      ASSERT_EQ(code, 0u) << dump;
      const auto dumped = nlohmann::json::parse(dump, nullptr, false);
      EXPECT_EQ(dumped, scene) << nlohmann::json::diff(scene, dumped).dump(2);
      ExpectAllReleased(broker);
      served = dump;
    }
  }
}

TEST(InspectorTest, ShowsTheTreeAndOtherSchemes) {
  SceneBroker broker(TESSEL_SCENES "/orders.json", L" --scheme https");
  broker.Inspect("tree --scheme https --attr \"tool tip\" --attr type", 0,
                 "address: https://orders.example:8443/desk/\ntitle: Orders\nelements: 4\n"
                 "  \"desk\" [-800, -40, 0, 560] type=\"Grid\"\n"
                 "    \"Aufträge\" [-780, -20, -400, 520] type=\"ListBox\" items=3\n"
                 "    \"𝄞 detail\" [-380, -20, -20, 520] tool tip=\"first line\\nsecond line\" "
                 "type=\"Border\" items=0\n"
                 "  \"note\" [-500, 100, -300, 200] type=\"Popup\" value=\"Over both panes\"\n");
  broker.Inspect("focus", 3, "cannot find the focused element\n  address: https://orders");
  ExpectAllReleased(broker);
}

TEST(InspectorTest, PrintsWhatATerminalShows) {
  const std::pair<const char*, const char*> kCases[] = {
      {"a\n\x1b[2J\x7f", "a\\n\\x1b[2J\\x7f"},
      {"\\n", "\\\\n"},
      {"\u0085\u009f\u00a0", "\\u0085\\u009f\u00a0"},
      {"\u061c\u200e\u200f", "\\u061c\\u200e\\u200f"},
      {"\u2028\u2029", "\\u2028\\u2029"},
      {"\u202a\u202e\u202f", "\\u202a\\u202e\u202f"},
      {"\u2066\u2069", "\\u2066\\u2069"},
      {"é𝄞\"", "é𝄞\""},
  };
  for (const auto& [text, printed] : kCases) EXPECT_EQ(tools::Printable(text), printed);
  EXPECT_EQ(tools::Quoted("a\"\\"), "\"a\\\"\\\\\"");
}

}  // namespace
