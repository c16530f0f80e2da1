// The tools as their users meet them: scene files, the broker's pipe, the inspector's output.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "tools/scenebroker/SceneReader.h"
#include "tools/shared/ConsoleText.h"

namespace {

using testing::HasSubstr;
using tools::Narrow;
using tools::Wide;

std::wstring Quoted(const std::wstring& text) { return L" \"" + text + L'"'; }
std::wstring ScenePath(const std::string& name) { return Wide(TESSEL_SCENES "/" + name); }

struct Ended {
  DWORD code;
  std::string output;
};

Ended RunTool(const std::wstring& commandLine) {
  ChildProcess process(TestFolder() + commandLine);
  const std::string output = process.ReadToEnd();
  std::string text;
  for (const char character : output) {
    if (character != '\r') text += character;
  }
  return {process.Wait(), text};
}

std::string Replaced(std::string text, const std::map<std::string, std::string>& values) {
  for (const auto& [name, value] : values) {
    for (std::size_t at; (at = text.find(name)) != std::string::npos;) {
      text.replace(at, name.size(), value);
    }
  }
  return text;
}

class SceneFile {
 public:
  explicit SceneFile(const std::string& text)
      : path_(std::filesystem::temp_directory_path() /
              (std::to_wstring(::GetCurrentProcessId()) + L"-szene-ä.json")) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~SceneFile() { std::filesystem::remove(path_); }

  std::wstring Path() const { return path_.wstring(); }

 private:
  const std::filesystem::path path_;
};

// A SceneBroker that is ready, with the facts that it printed.
class Broker : public ChildProcess {
 public:
  explicit Broker(const std::wstring& arguments)
      : ChildProcess(TestFolder() + L"SceneBroker.exe " + arguments) {
    for (std::string line; (line = ReadLine()) != "ready" && !line.empty();) {
      const std::size_t colon = line.find(": ");
      facts_.emplace(line.substr(0, colon), line.substr(colon + 2));
    }
  }

  const std::string& Fact(const std::string& key) const { return facts_.at(key); }

  std::string Filled(const std::string& text) const {
    return Replaced(text, {{"{process}", Fact("process")}, {"{window}", Fact("window")}});
  }

  // What a client gets for a request that it writes itself.
  std::string Ask(const std::string& request) const {
    const std::wstring name = Wide(Fact("pipe"));
    HANDLE pipe = INVALID_HANDLE_VALUE;
    while (pipe == INVALID_HANDLE_VALUE) {
      ::WaitNamedPipeW(name.c_str(), 10000);
      pipe = ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                           nullptr);
      if (pipe == INVALID_HANDLE_VALUE && ::GetLastError() != ERROR_PIPE_BUSY) return "no pipe";
    }
    DWORD mode = PIPE_READMODE_MESSAGE;
    ::SetNamedPipeHandleState(pipe, &mode, nullptr, nullptr);
    std::wstring text = Wide(Filled(request));
    wchar_t answer[1000] = {};
    DWORD read = 0;
    ::TransactNamedPipe(pipe, text.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)),
                        answer, sizeof(answer), &read, nullptr);
    ::CloseHandle(pipe);
    return Narrow({answer, read / sizeof(wchar_t)});
  }

  // What `tessel` gives on this broker's content.
  Ended Inspect(const std::string& command) const {
    return RunTool(L"tessel.exe " + Wide(command) + L" --window" + Quoted(Wide(Fact("window"))) +
                   L" --address" + Quoted(Wide(Fact("address"))));
  }

  // The lines behind the served ones, after its window was closed.
  std::string CloseAndReadSummary() {
    ::PostMessageW(tools::HandleFromText(Fact("window")), WM_CLOSE, 0, 0);
    const std::string output = Replaced(ReadToEnd(), {{"\r", ""}});
    EXPECT_EQ(Wait(), 0u);
    return output.substr(output.find("handed out: "));
  }

 private:
  std::map<std::string, std::string> facts_;
};

TEST(SceneFileTest, RefusesWithPlaceAndCure) {
  const std::string head = R"("version":1,"address":"a","title":"t",)";
  const auto element = [&](const std::string& fields) {
    return "{" + head + R"("elements":[{"id":"e","rect":[0,0,1,1],"items":["x"]},{)" + fields +
           "}]}";
  };
  const auto fields = [&](const std::string& more) {
    return element(R"("id":"f","rect":[0,0,1,1],)" + more);
  };
  const struct {
    std::string text;
    std::string message;
  } kCases[] = {
      {"", "line 1, column 1: "},
      {"{\n  \"version\": 1,\n  \"ä\" 2}", "line 3, column 7: syntax error"},
      {"{\"version\": 1}\n x", "line 2, column 2: syntax error"},
      {"{\"title\": \"a\xff\"}", "line 1, column 13: "},
      {"[]", "the scene: must be an object"},
      {"{}", "the scene: the field \"version\" is missing"},
      {R"({"version":2,"address":"a","title":"t","elements":[]})", "version: only version 1"},
      {R"({"version":1.0,"address":"a","title":"t","elements":[]})", "version: only version 1"},
      {R"({"version":1,"address":"","title":"t","elements":[]})", "address: must not be empty"},
      {R"({"version":1,"address":"a","title":7,"elements":[]})", "title: must be a text"},
      {"{" + head + R"("elements":{}})", "elements: must be a list"},
      {"{" + head + R"("elements":[],"foo":1})", "foo: unknown field; remove it, or use one of: "},
      {"{" + head + R"("elements":[],"focus":"e"})", "focus: no element has the id \"e\""},
      {"{" + head + R"("elements":[5]})", "elements[0]: must be an object"},
      {element(R"("rect":[0,0,1,1])"), "elements[1]: the field \"id\" is missing"},
      {element(R"("id":"e","rect":[0,0,1,1])"), "elements[1].id: another element has the id \"e\""},
      {element(R"("id":"a\u0000b","rect":[0,0,1,1])"), "elements[1].id: must not hold U+0000"},
      {element(R"("id":"f","rect":[0,0,1])"), "elements[1].rect: must have four numbers"},
      {element(R"("id":"f","rect":[0,0,1,2147483648])"), "elements[1].rect[3]: must be an integer"},
      {element(R"("id":"f","rect":[0,0.5,1,1])"), "elements[1].rect[1]: must be an integer"},
      {element(R"("id":"f","rect":[2,0,1,1])"), "elements[1].rect: right lies before left"},
      {fields(R"("parent":"f")"), "elements[1].parent: no element above has the id \"f\""},
      {fields(R"("attributes":{"n":1})"), "elements[1].attributes.n: must be a text"},
      {fields(R"("attributes":{"n":"a","m":"b","n":"c"})"),
       "elements[1].attributes.n: the same field stands here twice"},
      {fields(R"("attributes":{"value":"a"})"), "elements[1].attributes.value: is a state"},
      {fields(R"("items":["a",null])"), "elements[1].items[1]: must be a text"},
      {fields(R"("states":{"checked":"true"})"),
       "elements[1].states.checked: must be true or false"},
      {fields(R"("states":{"color":"red"})"), "elements[1].states.color: unknown field"},
      {fields(R"("items":["a"],"states":{"selected":"b"})"),
       "elements[1].states.selected: is none of the element's items"},
  };
  for (const auto& c : kCases) {
    const SceneFile file(c.text);
    std::string message = "accepted";
    try {
      ReadSceneFile(file.Path());
    } catch (const std::exception& error) {
      message = error.what();
    }
    EXPECT_THAT(message, HasSubstr(Narrow(file.Path()) + ": " + c.message)) << c.text;
    EXPECT_THAT(message, HasSubstr("; ")) << "no cure for " << c.text;
  }
}

TEST(SceneBrokerTest, EndsWithTheCure) {
  const SceneFile broken("{\n  \"version\": 1,,\n}");
  const std::wstring orders = Quoted(ScenePath("orders.json"));
  const Broker running(orders);
  const struct {
    std::wstring arguments;
    DWORD code;
    std::string message;
  } kCases[] = {
      {Quoted(broken.Path()), 1, Narrow(broken.Path()) + ": line 2, column 16: syntax error"},
      {L" missing.json", 1, "missing.json: cannot read the file; check the path"},
      {orders, 1, "another broker serves it; stop that one, or choose another --scheme"},
      {orders + L" --dll kernel32.dll", 1, "has no InitComm; name TesselSLB_x64.dll with --dll"},
      {orders + L" --dll nothing.dll", 1, "cannot load nothing.dll (error 126); put it beside"},
      {orders + L" --scheme ftp", 2, "ftp not in {tailored,http,https,file}"},
      {L"", 2, "scene is required"},
      {L" --help", 0, "The scene file"},
  };
  for (const auto& c : kCases) {
    const Ended ended = RunTool(L"SceneBroker.exe" + c.arguments);
    EXPECT_EQ(ended.code, c.code) << Narrow(c.arguments);
    EXPECT_THAT(ended.output, HasSubstr(c.message)) << Narrow(c.arguments);
  }
}

TEST(SceneBrokerTest, AnswersRawRequests) {
  Broker broker(Quoted(ScenePath("orders.json")) + L" --scheme file");
  EXPECT_EQ(broker.Fact("pipe"), R"(\\.\pipe\Tessel.Orbitane.SilverlightBridge.Pipe.Name.FILE)");
  const struct {
    const char* request;
    const char* answer;
  } kCases[] = {
      {R"([1,{process},"",-800,-40,0])", R"([0,"desk"])"},
      {R"([1,{process},"",-1,559,0])", R"([0,"desk"])"},
      {R"([1,{process},"",0,0,0])", R"([0,""])"},
      {R"([1,{process},"",-1,560,0])", R"([0,""])"},
      {R"([1,{process},"",-400,150,9])", R"([0,"note"])"},
      {R"([1,{process},"desk",-500,99,0])", R"([0,"Aufträge"])"},
      {R"([1,{process},"x",0,0,0])", "[101]"},
      {R"([1,{process},"",0,0])", "[103]"},
      {R"([1,{process},"",0,"0",0])", "[103]"},
      {R"([1,{process},"",0,0,0,0])", "[103]"},
      {R"([2,{process},"Auftr\u00e4ge"])", "[0,-780,-20,-400,520]"},
      {R"([2,{process},""])", "[101]"},
      {R"([6,{process},"\ud834\udd1e detail"])", R"([0,"desk"])"},
      {R"([6,{process},"note"])", R"([0,""])"},
      {R"([10,{process},"note","value"])", R"([0,"Over both panes"])"},
      {R"([10,{process},"note","checked"])", "[102]"},
      {R"([10,{process},"𝄞 detail","tool tip"])", R"([0,"first line\nsecond line"])"},
      {R"([10,{process},"note",1])", "[103]"},
      {R"([14,{process},""])", R"([0,""])"},
      {R"([16,{process},"Aufträge",true])", R"([0,3,"4711 \"urgent\"","4712",""])"},
      {R"([16,{process},"𝄞 detail",false])", "[0,0]"},
      {R"([16,{process},"note",false])", "[102]"},
      {R"([3,{process},"desk"])", "[0,true]"},
      {R"([3,{process},"Aufträge"])", "[0,true]"},
      {R"([3,{process},"Aufträge"])", "[0,false]"},
      {R"([3,{process},"never"])", "[0,false]"},
      {R"([4,{process},"desk"])", "[100]"},
      {R"([4,1,"desk"])", "[-8]"},
      {R"([1,{process}])", "[103]"},
      {R"([1.5,{process},""])", "[103]"},
      {R"([99999999999,{process},""])", "[103]"},
      {R"({"command":1})", "[103]"},
      {"nonsense", "[103]"},
  };
  for (const auto& c : kCases) EXPECT_EQ(broker.Ask(c.request), c.answer) << c.request;
  // Two of "desk" and one of "note" were kept; four were let go or belong to no command.
  EXPECT_EQ(broker.CloseAndReadSummary(),
            "handed out: 5\nreleased: 2\nstill held: 3\nheld: 2 x desk\nheld: 1 x note\n");
}

struct Inspection {
  const char* command;
  DWORD code;
  const char* output;
};

void ExpectInspections(const Broker& broker, const std::vector<Inspection>& cases) {
  for (const Inspection& c : cases) {
    const Ended ended = broker.Inspect(c.command);
    EXPECT_EQ(ended.code, c.code) << c.command;
    if (c.code == 0) {
      EXPECT_EQ(ended.output, broker.Filled(c.output)) << c.command;
    } else {
      EXPECT_THAT(ended.output, HasSubstr(c.output)) << c.command;
    }
  }
}

TEST(InspectorTest, ShowsTheLoginForm) {
  Broker broker(Quoted(ScenePath("login.json")));
  ExpectInspections(
      broker,
      {{"at 320,134", 0, "element: user\nwindow: {window}\nprocess: {process}\nscheme: tailored\n"},
       {"focus --parent 2", 0,
        "element: page\nwindow: {window}\nprocess: {process}\nscheme: tailored\n"},
       {"parent --focus", 0,
        "element: form\nwindow: {window}\nprocess: {process}\nscheme: tailored\n"},
       {"rect --focus --parent 1", 0,
        "element: form\nleft: 120\ntop: 60\nright: 520\nbottom: 420\n"},
       {"get name --at 320,90 --scheme tailored", 0,
        "element: title\nname: Welcome to Café Größe ☕\n"},
       {"get checked --at 320,340", 0, "element: remember\nchecked: true\n"},
       {"items --at 320,250", 0,
        "element: branch\nitems: 4\n  München\n  São Paulo\n  東京\n  Łódź\n"},
       {"at -1,5", 1, "cannot find the element at -1,5: there is none"},
       {"parent --at 0,0", 1, "cannot find the parent of element \"page\": it has none"},
       {"items --focus", 4, "cannot read the items of element \"user\"\n  address: http://shop"},
       {"get Größe --focus", 4, "cannot read the attribute \"Größe\" of element \"user\""},
       {"at 1,1 --scheme file", 3, "-9 (SL_BROKER_NOT_STARTED)"},
       {"at 1", 2, "\"1\" is no point; write X,Y"},
       {"at 1,2147483648", 2, "is no point"},
       {"rect", 2, "Exactly 1 option from [--at,--focus] is required"},
       {"rect --focus --at 1,1", 2, "Exactly 1 option"},
       {"get \"\" --focus", 2, "must not be empty"},
       {"at 1,1 --parent -1", 2, "--parent"}});
  const std::string summary = broker.CloseAndReadSummary();
  EXPECT_THAT(summary, testing::StartsWith("handed out: 14\nreleased: 14\n"));
}

TEST(InspectorTest, ShowsOtherOrders) {
  Broker broker(Quoted(ScenePath("orders.json")) + L" --scheme https");
  ExpectInspections(broker,
                    {{"at -400,150 --scheme https", 0,
                      "element: note\nwindow: {window}\nprocess: {process}\nscheme: https\n"},
                     {"get \"tool tip\" --at -200,0 --scheme https", 0,
                      "element: 𝄞 detail\ntool tip: first line\\nsecond line\n"},
                     {"items --at -500,0 --scheme https", 0,
                      "element: Aufträge\nitems: 3\n  4711 \"urgent\"\n  4712\n  \n"},
                     // The search begins with the tailored scheme, and ends there when its broker
                     // cannot be started.
                     {"focus", 3, "cannot find the focused element\n  address: https://orders"}});
  EXPECT_EQ(broker.CloseAndReadSummary(), "handed out: 3\nreleased: 3\nstill held: 0\n");
}

TEST(InspectorTest, FindsTheWindow) {
  // An address without a scheme of its own: the search ends with the tailored one.
  const SceneFile file(R"({"version":1,"address":"desk","title":"Ünique",
                           "elements":[{"id":"desk","rect":[-800,-40,0,0]}]})");
  const Broker broker(Quoted(file.Path()));
  const std::wstring twice = L"tools test " + std::to_wstring(::GetCurrentProcessId());
  const auto window = [](const std::wstring& title) {
    return ::CreateWindowExW(0, L"STATIC", title.c_str(), WS_OVERLAPPEDWINDOW, 0, 0, 9, 9, nullptr,
                             nullptr, nullptr, nullptr);
  };
  HWND first = window(twice);
  HWND second = window(twice);
  const std::wstring ownHandle = Wide(tools::HandleText(first));
  const struct {
    std::wstring window;
    std::wstring more;
    DWORD code;
    std::string output;
  } kCases[] = {
      {L"Ünique", L"", 0, "element: desk"},
      {L"ünique", L"", 2, "no top-level window has the title \"ünique\"; write it exactly"},
      {L"0x0", L"", 2, "no top-level window has the title \"0x0\""},
      {L"0x7ffffff1", L"", 2, "there is no window 0x7ffffff1; take the handle"},
      {twice, L"", 2, "2 windows have the title"},
      // A window of another process than the broker's: refused, or searched for and then injected.
      {ownHandle, L" --scheme tailored", 4, "-8 (SL_NOT_SERVED)"},
      {ownHandle, L"", 3, "-10 (SL_INJECTOR_NOT_STARTED)"},
  };
  for (const auto& c : kCases) {
    const Ended ended = RunTool(L"tessel.exe at -800,-40 --window" + Quoted(c.window) +
                                L" --address" + Quoted(Wide(broker.Fact("address"))) + c.more);
    EXPECT_EQ(ended.code, c.code) << Narrow(c.window);
    EXPECT_THAT(ended.output, HasSubstr(c.output)) << Narrow(c.window);
  }
  ::DestroyWindow(first);
  ::DestroyWindow(second);
}

// A broker of the test's own: it answers when the inspector has told what it waits for.
TEST(InspectorTest, TellsWhatItWaitsForAndWhatAnAnswerIsWorth) {
  const std::wstring address = L"http://tools-" + std::to_wstring(::GetCurrentProcessId());
  std::wstring name =
      L"\\\\.\\pipe\\Tessel.Orbitane.SilverlightBridge.Pipe.Name.TAILORED" + address;
  for (std::size_t at; (at = name.find_first_of(L":/-")) != std::wstring::npos;) name[at] = L'_';
  HANDLE pipe = ::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX,
                                   PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1 /*instances*/, 4096,
                                   4096, 0 /*default time-out*/, nullptr);
  ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
  const struct {
    std::wstring answer;
    DWORD code;
    std::string message;
  } kCases[] = {{L"[0,7]", 5, "-12 (SL_ARCHIVE_FAILURE)"},
                {L"[55]", 4, "55 (the broker's status)"}};
  for (const auto& c : kCases) {
    ChildProcess tessel(TestFolder() + L"tessel.exe at 1,2 --scheme tailored --window" +
                        Quoted(Wide(tools::HandleText(::GetDesktopWindow()))) + L" --address " +
                        address);
    ::ConnectNamedPipe(pipe, nullptr);
    wchar_t request[100];
    DWORD bytes = 0;
    ::ReadFile(pipe, request, sizeof(request), &bytes, nullptr);
    EXPECT_EQ(tessel.ReadLine(),
              "tessel: waiting for the broker to find the element at 1,2 (at most 70 s)");
    ::WriteFile(pipe, c.answer.data(), static_cast<DWORD>(c.answer.size() * sizeof(wchar_t)),
                &bytes, nullptr);
    ::FlushFileBuffers(pipe);
    EXPECT_THAT(tessel.ReadToEnd(), HasSubstr(c.message));
    EXPECT_EQ(tessel.Wait(), c.code);
    ::DisconnectNamedPipe(pipe);
  }
  ::CloseHandle(pipe);
}

}  // namespace
