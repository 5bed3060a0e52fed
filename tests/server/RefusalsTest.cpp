// SPDX-License-Identifier: Apache-2.0
// Requests that are wrong in themselves, and what may be asked by whom.

#include "../Cases.h"
#include "TestClient.h"
#include "server/documents/Json.h"

namespace server::test {
namespace {

class RefusalsTest : public ServerTest {};

TEST_F(RefusalsTest, EachFaultHasItsCodeAndStatusInAWholeEnvelope) {
  ann.AddView("V", -1, kAnn);
  const auto named = [](const std::string& name) { return "POST V0/Views " + ViewBody(name, -1, 1); };
  const auto with = [](const std::string& members) { return R"(POST V0/Views {"View":{"Name":"x",)" + members + "}}"; };
  const auto deep = [&with](size_t lists) {
    return with(R"("Deep":)" + std::string(lists, '[') + std::string(lists, ']'));
  };
  std::string longName(255, 'n');
  longName += "\xF0\x9F\x93\xB7";  // the limit is code points, not bytes
  std::vector<testing_support::Case> cases = testing_support::Cases(TABLES "Refusals.txt");
  for (const auto& [request, outcome] : {std::pair(named(longName), "0/0 200"),
                                         {named(longName + "n"), "100/3 400"},
                                         {named("\xff"), "100/6 400"},
                                         {with(R"("CycleTime":0.)" + std::string(400, '0') + "1"), "100/6 400"},
                                         {deep(wire::kMaxJsonDepth - 2), "0/0 200"},
                                         {deep(wire::kMaxJsonDepth - 1), "100/6 400"},
                                         {named("x") + std::string("\0{", 2), "100/6 400"}}) {
    cases.push_back({request, {outcome}});
  }
  for (const auto& [request, outcome] : cases) {
    EXPECT_EQ(ann.Do(request).Outcome(), outcome.at(0)) << request.substr(0, 200);
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
  EXPECT_EQ(elements("?Type=1001&IDs=%39%2c%34%2C5"), "5,9");
  EXPECT_EQ(bob.Get("V0/Areas").Ids("Area"), "1,2");
  EXPECT_EQ(bob.Get("V0/Elements?IDs=4,9").DataText(),
            R"({"ElementList":{"Element":[{"ID":4,"Type":1002,"Name":"Door","SiteID":-1},)"
            R"({"ID":9,"Type":1001,"Name":"Gate \"1\"","SiteID":2}]}})");
}

}  // namespace
}  // namespace server::test
