// Tests the commands `doctor` and `log` of tessel.exe with real set-ups that do not work. Runs in a
// Wine prefix of its own, because it changes the log level, and puts a program in the place of the
// launcher.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/Elements.h"
#include "support/StandIn.h"
#include "support/TestWindow.h"
#include "support/Tools.h"
#include "wire/StartupFiles.h"

namespace {

namespace fs = std::filesystem;
using tessel::HandleText;
using tessel::Wide;
using testing::HasSubstr;

// A folder with a copy of the module, for --module.
struct ModuleFolder {
  ModuleFolder() {
    fs::create_directories(path);
    fs::copy_file(TestFolder() + L"TesselSLB_x64.dll", Module(),
                  fs::copy_options::overwrite_existing);
  }
  ~ModuleFolder() { fs::remove_all(path); }
  fs::path Module() const { return path / L"TesselSLB_x64.dll"; }
  void Add(const wchar_t* name) const { std::ofstream(path / name) << "?"; }

  const fs::path path = fs::temp_directory_path() / L"doctor";
};

class DiagnosisTest : public testing::Test {
 protected:
  DiagnosisTest() {
    LogCapture::SetLevel("ERROR");
    // Removes a value that this process may have inherited, because the system makes the first
    // environment of a session from the registry.
    ::SetEnvironmentVariableA("TESSEL_LOG_LEVEL", nullptr);
  }
  ~DiagnosisTest() override { LogCapture::SetLevel(nullptr); }

  // Runs doctor with this suite's window, unless `options` names another one, and the module of
  // this suite.
  void Doctor(const std::string& options, DWORD code, const std::string& cause,
              const std::string& cure) {
    std::string line = "tessel.exe doctor " + options;
    if (options.find("--window") == options.npos) line += " --window=" + HandleText(window.Top());
    if (options.find("--module") == options.npos) {
      line += tessel::Narrow(L" --module" + Quoted(tessel::Narrow(files.Module().wstring())));
    }
    const auto [actual, output] = ToolOutput(Wide(line));
    const std::size_t result = std::min(output.find("\nresult  "), output.size());
    EXPECT_EQ(actual, code) << output;
    EXPECT_THAT(output, HasSubstr(cause)) << options;
    EXPECT_THAT(output.substr(cure.empty() ? 0 : result), HasSubstr(cure)) << output;
  }

  const TestWindow window;
  const ModuleFolder files;
};

TEST_F(DiagnosisTest, NamesWhatABrokerLacks) {
  SceneBroker broker(TESSEL_SCENES "/login.json");
  const std::string address = " --address " + broker.Fact("address");
  const std::string content = "--window=" + broker.Fact("window") + address;
  const std::string process = "process " + broker.Fact("process");

  Doctor(content, 0, "shows this window, the focus is on \"user\"\n",
         "the tailored broker answers");
  Doctor(content + " --scheme http", 14, "broken  http broker: ", "give --scheme tailored");
  SceneBroker http(TESSEL_SCENES "/login.json", L" --scheme http");
  Doctor("--window=" + http.Fact("window") + " --address http://plain.example/", 14,
         "; a call does not reach this broker",
         "there is no launcher to start one; but the http broker shows this window");
  Doctor("--window=" + broker.Fact("window") + " --address https://other.example/x", 19,
         "https___other_example: there is no such pipe",
         "compare --address and --scheme with what it serves");
  Doctor("--window=nobody" + address, 13, "no top-level window has the title \"nobody\"",
         process + " serves the pipe of the tailored broker");
  Doctor("--window=nobody --address https://other.example/x", 13, "no broker runs that a call asks",
         "start the program that shows the window");
  Doctor("--window=0x7ffffffe" + address, 13, "no window has the handle 0x7ffffffe",
         "may have been closed");
  Doctor("--module=C:\\nix.dll " + content, 11, "there is no file C:\\nix.dll", "--module");

  // The broker runs, but the window belongs to this process.
  const std::string other = address.substr(1);
  Doctor(other + " --scheme tailored", 23, "the broker does not show process " + kOwnId, "-8");
  const std::string cause = "the broker does not show process " + kOwnId;
  Doctor(other, 21, cause, process + " has the windows " + broker.Fact("window"));
  files.Add(wire::kInjector);
  Doctor(other, 10, cause, "a call would inject a broker (not tried)");
  const HANDLE lock = ::CreateMutexW(nullptr, TRUE /*owned*/, wire::kInjectionMutex);
  Doctor(other, 22, "injection lock: another client holds it", "wait until that injection ends");
  ::ReleaseMutex(lock);
  Doctor(other, 10, "injection lock: free", "");
  ::CloseHandle(lock);

  const std::string variable = "variable TESSEL_LOG_LEVEL ";
  for (const auto& [level, finding] : std::initializer_list<std::pair<const char*, std::string>>{
           {nullptr, "note    log level: switched off: only fatal lines appear"},
           {"verbose", "found   log level: verbose, from the user's " +
                           variable.substr(0, variable.size() - 1)},
           {"DEBUG", "the user's " + variable + "is \"DEBUG\", which is not a level"},
           {"VERBOSE   ", "the user's " + variable + "is longer than nine characters"}}) {
    LogCapture::SetLevel(level);
    Doctor(content, 0, finding, "");
  }
  LogCapture::SetLevel(nullptr);
  ::SetEnvironmentVariableA("TESSEL_LOG_LEVEL", "VERBOSE");
  Doctor(content, 0, "is not set in the registry, only in this console", "");
  // The runs of `tessel doctor` received 8 elements from this broker in total, and released them
  // all.
  EXPECT_THAT(broker.CloseAndReadSummary(),
              HasSubstr("\nundelivered: 0\nreleased: 8\nstill held: 0"));
}

TEST_F(DiagnosisTest, NamesWhatALauncherLacks) {
  const std::string content = "--address http://launch.example/x";
  Doctor(content, 19,
         "there is no file C:\\Program Files (x86)\\Microsoft Silverlight\\sllauncher.exe",
         "there is no launcher");
  const StandIn launcher(L"sllauncher");
  Doctor(content, 20, "SLBroker.xap", "put SLBroker.xap beside the module");
  files.Add(wire::kBrokerPackage);
  Doctor(content, 10, "there is no such pipe", "a call would start one (not tried)");
  EXPECT_THAT(launcher.Record(L"launch.example"), testing::IsEmpty());

  for (const auto& [address, cure] : std::initializer_list<std::pair<const char*, const char*>>{
           {"HTTP://launch.example/x", "write the scheme in small letters: http:"},
           {"launch.example/x", "begin the address with http://"},
           {"file://C:/x", "write three slashes after file:"},
           {"http:/launch.example/x", "write two slashes after the scheme"},
           {"http:\\\\launch.example\\x", "write / instead of"},
           {"\"http://launch.example/x \"", "remove the blanks"}}) {
    Doctor(std::string("--address ") + address, 12, "broken  address: ", cure);
  }
}

TEST_F(DiagnosisTest, NamesAPipeThatNoBrokerServes) {
  const std::tuple<std::string, DWORD, std::string, std::string> kCases[] = {
      {"silent", 16, "no answer in time", "end process"},
      {"*hello", 17, "the answer is not one of a broker: \"hello\"", "end process"},
      {"*[0,7]", 17, "the answer is not one of a broker", "end process"},
      {"*[100]", 18, "refuses with status 100", "tessel explain 100"},
      {"*[-8]", 23, "does not show process", "check --window"},
      {"*[0,'']", 0, "nothing has the focus", ""},
      {"*[0,'held']", 0, "the focus is on \"held\", which could not be released", ""},
  };
  int number = 0;
  for (const auto& [answer, code, cause, cure] : kCases) {
    const std::wstring address = L"tailored" + std::to_wstring(++number);
    const std::wstring content = L"http://" + address + L".example/x";
    ScriptedBroker broker(SL_TAILORED_URI, content, {answer});
    Doctor("--scheme tailored --address " + tessel::Narrow(content), code, cause, cure);
  }
  {
    ScriptedBroker broker(SL_TAILORED_URI, L"http://wrong-window.example/x", {"*[-8]"});
    Doctor("--address http://wrong-window.example/x", 19, "the http broker does not run",
           "to do: check --window");
  }
  // This process creates the pipe, but never serves it. In the second run, a client also keeps the
  // pipe busy.
  const std::wstring address = L"http://busy.example/x",
                     name = wire::PipeName(SL_TAILORED_URI, address);
  const HANDLE pipe =
      ::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE, 1, 0, 0, 0, nullptr);
  const std::string content = "--address " + tessel::Narrow(address);
  Doctor(content, 16, "served by process " + kOwnId, "end process " + kOwnId);
  ::DisconnectNamedPipe(pipe);
  std::jthread connect([&] { ::ConnectNamedPipe(pipe, nullptr); });
  RawClient client(name);
  Doctor(content, 15, "the pipe stays busy", "restart the broker");
  ::CloseHandle(pipe);
}

std::string UsersLevel() {
  char text[100] = {};
  DWORD size = sizeof(text);
  ::RegGetValueA(HKEY_CURRENT_USER, "Environment", "TESSEL_LOG_LEVEL", RRF_RT_REG_SZ, nullptr, text,
                 &size);
  return text;
}

// The command that is logged finds no broker and no launcher, so it ends with exit code 3.
TEST_F(DiagnosisTest, ShowsTheLogOfACommandAndRestoresTheLevel) {
  const std::wstring call = L" -- " + Quoted(tessel::Narrow(TestFolder()) + "tessel.exe") +
                            L" at 1,1 --address http://log.example/ --window=" +
                            Wide(HandleText(window.Top()));
  const fs::path file = files.path / L"lines.json";
  LogCapture::SetLevel(nullptr);
  {
    ChildProcess log(TestFolder() + L"tessel.exe log --level INFO --json --file" +
                     Quoted(tessel::Narrow(file.wstring())) + call);
    // The command starts 3 s after the change of the level.
    while (UsersLevel() != "INFO" && log.Wait(0) == STILL_ACTIVE) ::Sleep(10);
    EXPECT_EQ(UsersLevel(), "INFO");
    const std::string output = log.ReadToEnd();
    EXPECT_EQ(log.Wait(), 3u);
    EXPECT_EQ(UsersLevel(), "");
    const Texts lines = Split(FileText(file), "\n");
    EXPECT_THAT(output, HasSubstr(FileText(file).substr(0, 200)));
    const auto line = std::ranges::find_if(
        lines, [](auto& each) { return each.find("Cannot sllauncher.exe") != each.npos; });
    ASSERT_NE(line, lines.end());
    const auto entry = nlohmann::json::parse(*line);
    EXPECT_EQ(entry["message"], "Cannot sllauncher.exe");
    EXPECT_EQ(entry["level"], "ERROR");
    EXPECT_EQ(entry["file"], "BrokerStartup.cpp");
  }
  LogCapture::SetLevel("INFO");
  RunTool(L"tessel.exe log --level INFO --process 1" + call, 3, "");
  RunTool(L"tessel.exe log" + call, 3, ") Cannot sllauncher.exe\n");
  RunTool(L"tessel.exe log --level ERROR -- C:\\nix.exe", 2,
          "cannot start \"C:\\\\nix.exe\": error 2");
  EXPECT_EQ(UsersLevel(), "INFO");

  const HANDLE viewer = ::CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY");
  RunTool(L"tessel.exe log --level ERROR" + call, 5,
          "another program already shows the debugger output");
  EXPECT_EQ(UsersLevel(), "INFO");
  ::CloseHandle(viewer);
}

}  // namespace
