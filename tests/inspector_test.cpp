// The inspector as its users meet it.
#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
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

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A transcript holds command lines and all that they say, WINDOW and PROCESS for the broker's, and
// the exit code if it is not 0. What a command has changed, the next one asks for.
TEST(InspectorTest, SaysWhatItsTranscriptsSay) {
  const std::tuple<const char*, const char*, const wchar_t*> kCases[] = {
      {"/inspector-login.txt", "/login.json", L""},
      {"/inspector-orders.txt", "/orders.json", L" --scheme https"},
  };
  for (const auto& [name, scene, options] : kCases) {
    SceneBroker broker(std::string(TESSEL_SCENES) + scene, options);
    const std::string transcript = ReadFile(std::string(TESSEL_TRANSCRIPTS) + name);
    std::string actual;
    for (const std::string& line : Split(transcript, '\n')) {
      if (!line.starts_with("$ tessel ")) continue;
      auto [code, output] = Inspected(broker, line.substr(std::size("$ tessel ") - 1));
      output = std::regex_replace(output, std::regex(broker.Fact("window")), "WINDOW");
      output = std::regex_replace(output, std::regex(broker.Fact("process")), "PROCESS");
      actual += line + '\n' + output;
      if (code != 0) actual += "exit " + std::to_string(code) + '\n';
    }
    EXPECT_EQ(actual, transcript);
    ExpectAllReleased(broker);
  }
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
    static const std::vector<std::string> texts = Split(
        "|a,b|\\|\\n\\\\,|\"quoted\"|{}|[x,y]|%%|\x01\x1f\x7f\t\r\n|\u0085\u2028\u202e| spaces |𝄞😀|"
        "\ufeff\ufffd|Größe|" +
            std::string(500, 'x'),
        '|');
    return texts[Below(static_cast<int>(texts.size()))];
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
                                ReadFile(TESSEL_SCENES "/orders.json"), OddScene(1).Make(24).dump(),
                                OddScene(2).Make(8).dump()};
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
