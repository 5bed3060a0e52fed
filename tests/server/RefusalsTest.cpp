// SPDX-License-Identifier: Apache-2.0
// Requests that are wrong in themselves, and what may be asked by whom.

#include "TestClient.h"

namespace server::test {
namespace {

class RefusalsTest : public ServerTest {};

TEST_F(RefusalsTest, EachFaultHasItsCodeAndStatusInAWholeEnvelope) {
  const std::string view = "V0/Views/" + std::to_string(ann.AddView("V", -1, kAnn));
  std::string longName(255, 'n');
  longName += "\xF0\x9F\x93\xB7";  // the limit is code points, not bytes
  const std::string config = "V1/View/Default/Config";
  struct Case {
    std::string method, path, body;
    int status;
    std::string error;
  };
  std::vector<Case> cases = {
      {"PUT", "V0/Views/999", ViewBody("x", -1, 1), 404, "100/1"},
      {"PUT", "V0/Views/4294967295", ViewBody("x", -1, 1), 404, "100/1"},
      {"DELETE", "V0/Views/99999999999999999999", "", 404, "100/1"},
      {"DELETE", "V0/ViewGroups/-1", "", 404, "100/2"},
      {"PUT", "V0/Views/x", ViewBody("x", -1, 1), 400, "100/6"},
      {"POST", "V1/View/abc/Share", ShareBody("2"), 400, "100/6"},
      {"POST", "V1/View/-1/Share", ShareBody("2"), 404, "100/1"},

      {"POST", "V0/Views", ViewBody("", -1, 1), 400, "100/3"},
      {"POST", "V0/Views", ViewBody(longName, -1, 1), 200, "0/0"},
      {"POST", "V0/Views", ViewBody(longName + "n", -1, 1), 400, "100/3"},
      {"POST", "V0/Views", ViewBody("tab\\t", -1, 1), 400, "100/3"},
      {"POST", "V0/Views", ViewBody("nul\\u0000", -1, 1), 400, "100/3"},
      {"POST", "V0/Views", ViewBody("next line\\u0085", -1, 1), 400, "100/3"},
      {"PUT", view, ViewBody("", -1, 1), 400, "100/3"},
      {"POST", "V0/ViewGroups", GroupBody("del\x7f", -1, 1), 400, "100/3"},

      {"POST", "V0/ViewGroups", R"({"View":{"Name":"x"}})", 400, "100/6"},
      {"PUT", "V0/Views/Move", MoveBody(1, -1, ""), 400, "100/6"},
      {"PUT", "V0/ViewGroups/Move", MoveBody(2, -1, ","), 400, "100/6"},
      {"PUT", "V0/ViewGroups/Move", MoveBody(1, -1, "1"), 400, "100/6"},
      {"PUT", "V0/Views/Move", R"({"ViewMoveRequest":{"Type":1,"IDs":"1"}})", 400, "100/6"},
      {"PUT", config, R"({"ViewRequest":{"Type":1}})", 400, "100/6"},
      {"PUT", config, R"({"ViewRequest":{"Type":"1","ID":1}})", 400, "100/6"},
      {"GET", "V0/Elements?IDs=1,x", "", 400, "100/6"},
      {"GET", "V0/Elements?Type=%zz", "", 400, "100/6"},
      {"GET", "V0/Changes", "", 400, "100/6"},
      {"GET", "V0/Changes?After=-1", "", 400, "100/6"},
      {"GET", "V0/Changes?After=1000000", "", 410, "100/6"},
      {"GET", "V0/Changes?After=99999999999999999999", "", 410, "100/6"},

      {"GET", "V0/Nothing", "", 404, "100/6"},
      {"GET", "V0/Views/", "", 404, "100/6"},
      {"PATCH", "V0/Views", "", 400, "100/6"},
      {"POST", "V0/Views", ViewBody("\\ud83d\\udcf7\\\\udcf7", -1, 1), 200, "0/0"},
  };
  for (const char* name : {"\xff", "\\ud800", "\\udc00", "\\uD83D\\uDCF7\\uDCF7"}) {
    cases.push_back({"POST", "V0/Views", ViewBody(name, -1, 1), 400, "100/6"});
  }
  for (const std::string& members : std::vector<std::string>{
           R"("UserID":"1")", R"("CycleTime":1.5)", R"("CycleTime":4294967296)",
           R"("CycleTime":0.)" + std::string(400, '0') + "1", R"("CycleTime":1e99999999999)", R"("PlanPages":{})",
           R"("PlanPages":[1])", R"("PlanPages":[{"PlanViewItem":["w"]}])",
           R"("PlanPages":[{"PlanViewItem":[{"Xtop":[]}]}])", R"("Deep":)" + std::string(200, '[')}) {
    cases.push_back({"POST", "V0/Views", R"({"View":{"Name":"x",)" + members + "}}", 400, "100/6"});
  }
  for (const std::string& body :
       std::vector<std::string>{"", "{", "[]", "{}", R"({"View":[]})", R"({"View":{}})", R"({"View":{"Name":5}})",
                                ViewBody("x", -1, 1) + "x", ViewBody("x", -1, 1) + std::string("\0{", 2)}) {
    cases.push_back({"POST", "V0/Views", body, 400, "100/6"});
  }
  for (const auto& c : cases) {
    const Answer answer = ann.Request(c.method, c.path, c.body);
    EXPECT_EQ(answer.Outcome(), c.error + " " + std::to_string(c.status))
        << c.method << ' ' << c.path << ' ' << c.body.substr(0, 200);
  }
}

TEST_F(RefusalsTest, NothingButLoggingInGoesWithoutAToken) {
  for (const std::string& token : {std::string(), std::string("wrong"), std::string(100, 'A')}) {
    const Client stranger(m_server->Port(), token);
    EXPECT_EQ(stranger.Get("V0/Views").Outcome(), "101/2 401");
    EXPECT_EQ(stranger.Post("V0/Views", "{").Outcome(), "101/2 401");
    EXPECT_EQ(stranger.Post("V0/Views", std::string(1 << 20, ' ')).Outcome(), "101/2 401");
    EXPECT_EQ(stranger.Post("V0/Sessions", std::string(1 << 20, ' ')).Outcome(), "100/7 413");
    EXPECT_EQ(stranger.Listen(0).Status(), 401);
  }
}

TEST_F(RefusalsTest, ResourcesAreListedWholeOrByTypeAndId) {
  const std::string seed = WriteFile("resources.json", R"({"Areas":[{"ID":2,"Name":"Yard"},{"ID":1,"Name":"Hall"}],
      "Elements":[{"ID":9,"Type":1001,"Name":"Gate \"1\"","SiteID":2},{"ID":4,"Type":1002,"Name":"Door"},
                  {"ID":5,"Type":1001,"Name":"Roof","SiteID":1}]})");
  RestartWith([&](auto& options) { options.seedFile = seed; });
  const auto elements = [this](const std::string& query) { return bob.Get("V0/Elements" + query).Ids("Element"); };
  EXPECT_EQ(elements(""), "4,5,9");
  EXPECT_EQ(elements("?Type=1001"), "5,9");
  EXPECT_EQ(elements("?IDs=9,4,77,9"), "4,9");
  EXPECT_EQ(elements("?Type=1001&IDs=9%2C4"), "9");
  EXPECT_EQ(bob.Get("V0/Areas").Ids("Area"), "1,2");
  EXPECT_NE(bob.Get("V0/Elements?IDs=9").body.find(R"({"ID":9,"Type":1001,"Name":"Gate \"1\"","SiteID":2})"),
            std::string::npos);
}

}  // namespace
}  // namespace server::test
