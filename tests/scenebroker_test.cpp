// Scene files, and the broker that serves them as its users meet it.
#include <gmock/gmock.h>

#include <climits>
#include <random>
#include <string>
#include <vector>

#include "support/Tools.h"
#include "tools/scenebroker/SceneMap.h"
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
      {"{\"version\":\n  [1, -1e999]}", "line 2, column 7: the number -1e999 is too large"},
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
  RunTool(start + L" --additional-windows 11", 2, "11 not in range 0 to 10");
  RunTool(L"SceneBroker.exe no.json", 1, "no.json: cannot read the file; check the path");
  RunTool(start, 1, "another broker serves it; stop that one, or choose another --scheme");
  RunTool(start + L" --dll kernel32.dll", 1, "has no InitComm; name TesselSLB_x64.dll with --dll");
  RunTool(start + L" --dll nothing.dll", 1, "cannot load nothing.dll (error 126); put it beside");
}

TEST(SceneMapTest, FindsWhatASearchThroughAllFinds) {
  std::mt19937 random(7);
  const auto number = [&](int bound) { return static_cast<LONG>(random() % bound); };
  for (const int size : {0, 1, 40, 400}) {
    Scene scene;
    const auto add = [&](const std::string& id, const RECT& rect) {
      SceneElement element;
      element.id = id;
      element.rect = rect;
      scene.Add(element);
    };
    for (int i = 0; i < size; ++i) {
      const LONG left = number(300) - 150, top = number(300) - 150;
      const LONG width = number(i % 7 == 0 ? 200 : 30);
      add(std::to_string(i), {left, top, left + width, top + number(90)});
    }
    add("far", {LONG_MIN, 3, LONG_MIN + 2, LONG_MAX});
    const SceneMap map(scene.Elements());
    for (LONG x : {LONG_MIN, LONG_MIN + 1, LONG_MIN + 2, LONG_MAX, -151L, 0L, 17L, 60L, 230L}) {
      for (LONG y = -160; y < 250; ++y) {
        const SceneElement* expected = nullptr;
        for (const SceneElement& element : scene.Elements()) {
          if (element.Contains({x, y})) expected = &element;
        }
        EXPECT_EQ(map.At({x, y}), expected) << size << " elements, at " << x << ',' << y;
      }
    }
  }
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
      {"[100]", {R"([4,?,"desk"])", R"([0,?,"desk"])", R"([19,?,"desk"])"}},
      {"[101]", {R"([1,?,"x",0,0,0])", R"([2,?,""])", R"([7,?,"desk","x",0])"}},
      {"[101]", {R"([8,?,""])", R"([9,?,"x","","","",0,false])", R"([11,?,""])"}},
      {"[102]", {R"([10,?,"note","checked"])", R"([16,?,"note",false])"}},
      {"[102]", {R"([7,?,"note","desk",1])", R"([7,?,"desk","desk",1])"}},
      {"[102]", {R"([12,?,"desk","a"])", R"([15,?,"desk",true])", R"([17,?,"note","a"])"}},
      {"[103]", {R"([1,?,"",0,0])", R"([1,?,"",0,"0",0])", R"([1,?,"",0,0,0,0])", "[1,?]"}},
      {"[103]", {"[1.5,?,\"\"]", "[99999999999,?,\"\"]", "{\"command\":1}", "nonsense"}},
      {"[103]", {R"([9,?,"","","","",-1,false])", R"([9,?,"","","","",0,0])", R"([8,?,"desk",0])"}},
      {"[103]", {R"([7,?,"note","",true])", R"([12,?,"note",1])", R"([15,?,"note",1])"}},
  };
  for (const auto& [answer, requests] : kCases) {
    for (const char* request : requests) EXPECT_EQ(broker.Ask(request), answer) << request;
  }
  EXPECT_EQ(broker.CloseAndReadSummary(),
            "handed out: 5\nundelivered: 0\nreleased: 2\nstill held: 3\nheld: 2 x desk\n"
            "held: 1 x note\n");
}

TEST(SceneBrokerTest, TellsElementsApartAndFindsThem) {
  const SceneFile file(R"({"version":1,"address":"a","title":"Tree","elements":[
      {"id":"first","rect":[0,0,9,9]},
      {"id":"root","rect":[0,0,90,90],"attributes":{"name":"Main","type":"Page"}},
      {"id":"left","parent":"root","rect":[0,0,40,90],"attributes":{"type":"Pane"}},
      {"id":"right","parent":"root","rect":[50,0,90,90],"attributes":{"type":"Pane"}},
      {"id":"ok1","parent":"left","rect":[1,2,3,4],"attributes":{"name":"OK","type":"Button"}},
      {"id":"ok2","parent":"right","rect":[5,6,7,8],"attributes":{"name":"OK","type":"Button"}},
      {"id":"text","parent":"ok2","rect":[5,6,7,8],"attributes":{"name":"OK","type":"Text"}}]})");
  SceneBroker broker(Narrow(file.path.wstring()));
  const std::pair<const char*, const char*> kCases[] = {
      {R"([7,?,"ok2","",1])", R"([0,"OK","Button","ok2",1])"},
      {R"([7,?,"ok2","",0])", R"([0,"OK","Button","ok2",0])"},
      {R"([7,?,"ok2","right",1])", R"([0,"OK","Button","ok2",0])"},
      {R"([7,?,"right","root",1])", R"([0,"","Pane","right",1])"},
      {R"([7,?,"first","",1])", R"([0,"","","first",0])"},
      {R"([8,?,"text"])", R"([0,4,"root","right","ok2","text"])"},
      {R"([8,?,"first"])", R"([0,1,"first"])"},
      {R"([18,?,"text"])", R"([0,3,"ok2","right","root",3,0,1,1])"},
      {R"([18,?,"root"])", "[0,0,0]"},
      {R"([9,?,"","OK","Button","",0,false])", R"([0,2,"ok1",1,2,3,4,"ok2",5,6,7,8])"},
      {R"([9,?,"right","","","",0,false])", R"([0,2,"ok2",5,6,7,8,"text",5,6,7,8])"},
      {R"([9,?,"right","OK","","",1,false])", R"([0,1,"ok2",5,6,7,8])"},
      {R"([9,?,"","","","",1,false])", R"([0,2,"first",0,0,9,9,"root",0,0,90,90])"},
      {R"([9,?,"","","ane","",2,true])", R"([0,2,"left",0,0,40,90,"right",50,0,90,90])"},
      {R"([9,?,"","","ane","",2,false])", "[0,0]"},
      {R"([9,?,"root","","","ok1",0,false])", R"([0,1,"ok1",1,2,3,4])"},
      {R"([9,?,"text","","","",0,true])", "[0,0]"},
  };
  for (const auto& [request, answer] : kCases) EXPECT_EQ(broker.Ask(request), answer) << request;
  EXPECT_EQ(broker.CloseAndReadSummary(),
            "handed out: 18\nundelivered: 0\nreleased: 0\nstill held: 18\nheld: 2 x first\n"
            "held: 1 x left\nheld: 2 x ok1\nheld: 5 x ok2\nheld: 3 x right\nheld: 3 x root\n"
            "held: 2 x text\n");
}

TEST(SceneBrokerTest, ChangesTheSceneAndNotifiesItsWindows) {
  SceneBroker broker(TESSEL_SCENES "/login.json", L" --additional-windows 2");
  const struct {
    const char* request;
    const char* answer;
    int notice;  // 0: the scene is as it was
  } kCases[] = {
      {R"([11,?,"sign-in"])", "[0]", 11},
      {R"([14,?,""])", R"([0,"sign-in"])", 0},
      {R"([11,?,"sign-in"])", "[0]", 0},
      {R"([11,?,"remember"])", "[0]", 11},
      {R"([10,?,"remember","checked"])", R"([0,"false"])", 0},
      {R"([11,?,"remember"])", "[0]", 11},
      {R"([10,?,"remember","checked"])", R"([0,"true"])", 0},
      {R"([15,?,"remember",true])", "[0]", 0},
      {R"([15,?,"remember",false])", "[0]", 15},
      {R"([10,?,"remember","checked"])", R"([0,"false"])", 0},
      {R"([13,?,"user"])", "[0]", 13},
      {R"([14,?,""])", R"([0,"user"])", 0},
      {R"([12,?,"user","é"])", "[0]", 12},
      {R"([10,?,"user","value"])", R"([0,"é"])", 0},
      {R"([12,?,"branch","x"])", "[102]", 0},
      {R"([17,?,"branch","München"])", "[0]", 17},
      {R"([10,?,"branch","selected"])", R"([0,"München"])", 0},
      {R"([17,?,"branch","Oslo"])", "[102]", 0},
  };
  for (const auto& [request, answer, notice] : kCases) {
    EXPECT_EQ(broker.Ask(request), answer) << request;
    EXPECT_EQ(broker.ReadLine(), "served: " + broker.Request(request) + " -> " + answer);
    for (int window = 0; notice != 0 && window < 2; ++window) {
      EXPECT_EQ(broker.ReadLine(),
                "notified: #" + std::to_string(window) + " command " + std::to_string(notice));
    }
  }
  // A post of another process; what is no WM_APP message is none of the broker's.
  const std::string second = broker.Fact("additional window", 1);
  ASSERT_TRUE(second.starts_with("#1 ")) << second;
  for (const UINT message : {WM_APP - 1u, WM_APP + 7u, 0xC000u, WM_APP + 0x3FFFu}) {
    ::PostMessageW(tools::HandleFromText(second.substr(3)), message, 0, 0);
  }
  EXPECT_EQ(broker.ReadLine(), "notified: #1 command 7");
  EXPECT_EQ(broker.ReadLine(), "notified: #1 command 16383");
  EXPECT_EQ(broker.CloseAndReadSummary(),
            "handed out: 2\nundelivered: 0\nreleased: 0\nstill held: 2\nheld: 1 x sign-in\n"
            "held: 1 x user\n");
}

// Some clients leave without their answers: those objects are nobody's.
TEST(SceneBrokerTest, CountsWhatNobodyGot) {
  SceneBroker broker(TESSEL_SCENES "/login.json", L" --scheme http");
  const std::string selector = broker.Request(R"([8,?,"user"])");
  for (int i = 0; i < 2; ++i) {
    RawClient client(Wide(broker.Fact("pipe")));
    client.Send(Wide(selector));
    EXPECT_EQ(broker.ReadLine(), "served: " + selector + R"( -> [0,3,"page","form","user"])");
    client.Leave();
  }
  EXPECT_EQ(broker.Ask(R"([3,?,"user"])"), "[0,false]");
  EXPECT_EQ(broker.Ask(R"([6,?,"user"])"), R"([0,"form"])");
  EXPECT_EQ(broker.CloseAndReadSummary(),
            "handed out: 7\nundelivered: 6\nreleased: 0\nstill held: 1\nheld: 1 x form\n");
}

}  // namespace
