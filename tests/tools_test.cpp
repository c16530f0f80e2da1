// The tools as their users meet them: scene files, the broker's pipe, the inspector's output.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/RawClient.h"
#include "tools/scenebroker/SceneReader.h"
#include "tools/shared/ConsoleText.h"

namespace {

using testing::HasSubstr;
using tools::Narrow;
using tools::Wide;

std::wstring Quoted(const std::string& text) { return L" \"" + Wide(text) + L'"'; }

// Expects the whole output of a success, a part of that of a failure.
void RunTool(const std::wstring& commandLine, DWORD code, const std::string& output) {
  ChildProcess process(TestFolder() + commandLine);
  std::string text = process.ReadToEnd();
  std::erase(text, '\r');
  EXPECT_EQ(process.Wait(), code) << Narrow(commandLine);
  EXPECT_TRUE(code == 0 ? text == output : text.find(output) != text.npos)
      << Narrow(commandLine) << ": " << text;
}

struct SceneFile {
  explicit SceneFile(const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
  ~SceneFile() { std::filesystem::remove(path); }
  const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     (std::to_wstring(::GetCurrentProcessId()) + L"-scene-ä.json");
};

// A SceneBroker that is ready, with the facts that it printed.
class Broker : public ChildProcess {
 public:
  explicit Broker(const std::string& scene, const std::wstring& options = L"")
      : ChildProcess(TestFolder() + L"SceneBroker.exe" + Quoted(scene) + options) {
    for (std::string line; (line = ReadLine()) != "ready" && !line.empty();) {
      facts_.emplace(line.substr(0, line.find(": ")), line.substr(line.find(": ") + 2));
    }
  }

  const std::string& Fact(const std::string& key) const { return facts_.at(key); }

  // The answer to a request in which '?' stands for the broker's process.
  std::string Ask(const std::string& request) const {
    RawClient client(Wide(Fact("pipe")));
    client.Send(Wide(std::regex_replace(request, std::regex("[?]"), Fact("process"))));
    return Narrow(client.Receive());
  }

  void Inspect(const std::string& command, DWORD code, const std::string& output,
               const std::string& window = "") const {
    RunTool(L"tessel.exe " + Wide(command) + L" --address" + Quoted(Fact("address")) +
                L" --window" + Quoted(window.empty() ? Fact("window") : window),
            code, output);
  }

  // The lines behind the served ones, after its window was closed.
  std::string CloseAndReadSummary() {
    ::PostMessageW(tools::HandleFromText(Fact("window")), WM_CLOSE, 0, 0);
    std::string output = ReadToEnd();
    std::erase(output, '\r');
    EXPECT_EQ(Wait(), 0u);
    return output.substr(output.find("handed out: "));
  }

 private:
  std::map<std::string, std::string> facts_;
};

TEST(SceneFileTest, RefusesWithPlaceAndCure) {
  const std::string head = R"({"version":1,"address":"a","title":"t",)";
  const std::string list = head + R"("elements":[{"id":"e","rect":[0,0,1,1],"items":["x"]},{)";
  const std::string unit = list + R"("rect":[0,0,1,1],)";
  const auto more = [&](const std::string& fields) {
    return unit + R"("id":"f",)" + fields + "}]}";
  };
  const std::pair<std::string, std::string> kCases[] = {
      {"[]", "the scene: must be an object"},
      {"{}", "the scene: the field \"version\" is missing"},
      {head + R"("elements":[],"focus":"e"})", "focus: no element has the id \"e\""},
      {unit.substr(0, unit.size() - 1) + "}]}", "elements[1]: the field \"id\" is missing"},
      {list + R"("id":"f","rect":[0,0,1]}]})", "elements[1].rect: must have four numbers"},
      {more(R"("attributes":{"value":"a"})"), "elements[1].attributes.value: is a state"},
      {more(R"("items":["a",null])"), "elements[1].items[1]: must be a text"},
      {more(R"("states":{"checked":"true"})"), "elements[1].states.checked: must be true or false"},
      {more(R"("states":{"color":"red"})"), "elements[1].states.color: unknown field"},
      {more(R"("items":["a"],"states":{"selected":"b"})"),
       "elements[1].states.selected: is none of the element's items"},
      {"{\"version\": 1e999}", "a number is too large"},
      {"{\n  \"version\": 1,\n  \"ä\" 2}", "line 3, column 7: syntax error"},
      {"{\"title\": \"a\xff\"}", "line 1, column 13: "},
      {R"({"version":1.0,"address":"a","title":"t","elements":[]})", "version: only version 1"},
      {head + R"("elements":[],"foo":1})", "foo: unknown field; remove it, or use one of: "},
      {unit + R"("id":"e"}]})", "elements[1].id: another element has the id \"e\""},
      {unit + R"("id":"a\u0000b"}]})", "elements[1].id: must not hold U+0000"},
      {list + R"("id":"f","rect":[0,0,1,2147483648]}]})",
       "elements[1].rect[3]: must be an integer"},
      {list + R"("id":"f","rect":[2,0,1,1]}]})", "elements[1].rect: right lies before left"},
      {unit + R"("id":"f","parent":"f"}]})",
       "elements[1].parent: no element above has the id \"f\""},
      {unit + R"("id":"f","attributes":{"n":"a","m":"b","n":"c"}}]})",
       "elements[1].attributes.n: the same field stands here twice"},
  };
  for (const auto& [text, message] : kCases) {
    const SceneFile file(text);
    const auto place = HasSubstr(Narrow(file.path.wstring()) + ": " + message);
    EXPECT_THAT([&] { ReadSceneFile(file.path.wstring()); },
                testing::ThrowsMessage<std::exception>(testing::AllOf(place, HasSubstr("; "))))
        << text;
  }
}

TEST(SceneBrokerTest, EndsWithTheCure) {
  const std::string orders = TESSEL_SCENES "/orders.json";
  const Broker running(orders);
  const std::wstring start = L"SceneBroker.exe" + Quoted(orders);
  const SceneFile broken("{\n  \"version\": 1,,\n}");
  RunTool(L"SceneBroker.exe" + Quoted(Narrow(broken.path.wstring())), 1,
          ": line 2, column 16: syntax error");
  RunTool(start + L" --scheme ftp", 2, "ftp not in {tailored,http,https,file}");
  RunTool(L"SceneBroker.exe", 2, "scene is required");
  RunTool(L"SceneBroker.exe no.json", 1, "no.json: cannot read the file; check the path");
  RunTool(start, 1, "another broker serves it; stop that one, or choose another --scheme");
  RunTool(start + L" --dll kernel32.dll", 1, "has no InitComm; name TesselSLB_x64.dll with --dll");
  RunTool(start + L" --dll nothing.dll", 1, "cannot load nothing.dll (error 126); put it beside");
}

TEST(SceneBrokerTest, AnswersRawRequests) {
  Broker broker(TESSEL_SCENES "/orders.json", L" --scheme file");
  const std::pair<const char*, std::vector<const char*>> kCases[] = {
      {R"([0,"desk"])",
       {R"([1,?,"",-800,-40,0])", R"([1,?,"",-1,559,0])", R"([6,?,"\ud834\udd1e detail"])"}},
      {R"([0,"note"])", {R"([1,?,"",-400,150,9])"}},
      {R"([0,"Aufträge"])", {R"([1,?,"desk",-500,99,0])"}},
      {R"([0,""])", {R"([1,?,"",0,0,0])", R"([1,?,"",-1,560,0])", R"([14,?,""])"}},
      {"[0,-780,-20,-400,520]", {R"([2,?,"Auftr\u00e4ge"])"}},
      {R"([0,"Over both panes"])", {R"([10,?,"note","value"])"}},
      {R"([0,3,"4711 \"urgent\"","4712",""])", {R"([16,?,"Aufträge",true])"}},
      {"[0,true]", {R"([3,?,"desk"])", R"([3,?,"Aufträge"])"}},
      {"[0,false]", {R"([3,?,"Aufträge"])", R"([3,?,"never"])"}},
      {"[-8]", {R"([4,1,"desk"])"}},
      {"[100]", {R"([4,?,"desk"])"}},
      {"[101]", {R"([1,?,"x",0,0,0])", R"([2,?,""])"}},
      {"[102]", {R"([10,?,"note","checked"])", R"([16,?,"note",false])"}},
      {"[103]", {R"([1,?,"",0,0])", R"([1,?,"",0,"0",0])", R"([1,?,"",0,0,0,0])", "[1,?]"}},
      {"[103]", {"[1.5,?,\"\"]", "[99999999999,?,\"\"]", "{\"command\":1}", "nonsense"}},
  };
  for (const auto& [answer, requests] : kCases) {
    for (const char* request : requests) EXPECT_EQ(broker.Ask(request), answer) << request;
  }
  EXPECT_EQ(broker.CloseAndReadSummary(),
            "handed out: 5\nreleased: 2\nstill held: 3\nheld: 2 x desk\nheld: 1 x note\n");
}

TEST(InspectorTest, ShowsScenesAndReleasesWhatItGot) {
  Broker login(TESSEL_SCENES "/login.json");
  Broker orders(TESSEL_SCENES "/orders.json", L" --scheme https");
  const std::string page = "element: page\nwindow: " + login.Fact("window") +
                           "\nprocess: " + login.Fact("process") + "\nscheme: tailored\n";
  login.Inspect("focus --parent 2", 0, page);
  login.Inspect("items --at 320,250", 0,
                "element: branch\nitems: 4\n  München\n  São Paulo\n  東京\n  Łódź\n");
  login.Inspect("at -1,5", 1, "cannot find the element at -1,5: there is none");
  login.Inspect("parent --at 0,0", 1, "cannot find the parent of element \"page\": it has none");
  login.Inspect("get Größe --focus", 4, "cannot read the attribute \"Größe\" of element \"user\"");
  login.Inspect("get checked --at 320,340", 0, "element: remember\nchecked: true\n");
  login.Inspect("at 1,1 --scheme file", 3, "-9 (SL_BROKER_NOT_STARTED)");
  login.Inspect("at 1,2147483648", 2, "is no point");
  login.Inspect("rect", 2, "Exactly 1 option from [--at,--focus] is required");
  orders.Inspect("get \"tool tip\" --at -200,0 --scheme https", 0,
                 "element: 𝄞 detail\ntool tip: first line\\nsecond line\n");
  orders.Inspect("focus", 3, "cannot find the focused element\n  address: https://orders");
  EXPECT_EQ(login.CloseAndReadSummary(), "handed out: 7\nreleased: 7\nstill held: 0\n");
  EXPECT_EQ(orders.CloseAndReadSummary(), "handed out: 1\nreleased: 1\nstill held: 0\n");
}

TEST(InspectorTest, FindsTheWindow) {
  // An address without a scheme of its own: the search ends with the tailored one.
  const SceneFile file(R"({"version":1,"address":"desk","title":"Ü",
                           "elements":[{"id":"desk","rect":[-800,-40,0,0]}]})");
  const Broker broker(Narrow(file.path.wstring()));
  const std::wstring title = L"tools test " + std::to_wstring(::GetCurrentProcessId());
  HWND windows[2];
  for (HWND& window : windows) {
    window = ::CreateWindowW(L"STATIC", title.c_str(), 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, 0);
  }
  const std::string own = tools::HandleText(windows[0]), rect = "rect --at -800,-40";
  broker.Inspect(rect, 0, "element: desk\nleft: -800\ntop: -40\nright: 0\nbottom: 0\n", "Ü");
  broker.Inspect(rect, 2, "no top-level window has the title \"ü\"; write it exactly", "ü");
  broker.Inspect(rect, 2, "there is no window 0x7ffffff1; take the handle", "0x7ffffff1");
  broker.Inspect(rect, 2, "2 windows have the title", Narrow(title));
  // A window of another process than the broker's: refused, or searched for and then injected.
  broker.Inspect(rect + " --scheme tailored", 4, "-8 (SL_NOT_SERVED)", own);
  broker.Inspect(rect, 3, "-10 (SL_INJECTOR_NOT_STARTED)", own);
  for (HWND window : windows) ::DestroyWindow(window);
}

// A broker of the test's own: it answers when the inspector has told what it waits for.
TEST(InspectorTest, TellsWhatItWaitsFor) {
  const std::wstring id = std::to_wstring(::GetCurrentProcessId());
  const std::wstring name = kTailoredPipe + L"http___tools_" + id;
  HANDLE pipe = ::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE,
                                   1 /*instances*/, 4096, 4096, 0 /*default time-out*/, nullptr);
  ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
  ChildProcess tessel(TestFolder() + L"tessel.exe at 1,2 --address http://tools-" + id +
                      L" --scheme tailored --window" +
                      Quoted(tools::HandleText(::GetDesktopWindow())));
  ::ConnectNamedPipe(pipe, nullptr);
  EXPECT_EQ(tessel.ReadLine(),
            "tessel: waiting for the broker to find the element at 1,2 (at most 70 s)");
  DWORD bytes = 0;
  ::WriteFile(pipe, L"[0,7]", 5 * sizeof(wchar_t), &bytes, nullptr);
  EXPECT_THAT(tessel.ReadToEnd(), HasSubstr("-12 (SL_ARCHIVE_FAILURE)"));
  EXPECT_EQ(tessel.Wait(), 5u);
  ::CloseHandle(pipe);
}

}  // namespace
