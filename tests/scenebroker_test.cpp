// Scene files, and the broker that serves them as its users meet it.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/Tools.h"
#include "tools/scenebroker/SceneReader.h"

namespace {

using testing::HasSubstr;
using tools::Narrow;
using tools::Wide;

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
  const SceneBroker running(orders);
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
  SceneBroker broker(TESSEL_SCENES "/orders.json", L" --scheme file");
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

}  // namespace
