// SPDX-License-Identifier: Apache-2.0
// Fault plans: which are refused, what they do to answers and change streams, and that it can be repeated. What becomes
// of edits is seen by the clients of ClientFaultsTest.
#include <algorithm>
#include <thread>

#include "../Cases.h"
#include "TestClient.h"
#include "server/faults/FaultPlan.h"

namespace server::test {
namespace {

class FaultsTest : public ServerTest {
 protected:
  // A plan's members.
  void RestartWithPlan(const std::string& members) {
    RestartWith([&](auto& options) { options.faultsFile = WriteFile("plan.json", "{" + members + "}"); });
  }
  void RestartWithRule(const std::string& rule) { RestartWithPlan(R"("Rules":[)" + rule + "]"); }
  std::string WhyRefused(const std::string& plan) {
    const std::string why = FailureOf([&] { FaultPlan refused(WriteFile("plan.json", plan)); });
    return why.empty() ? "taken" : why.substr(why.rfind("plan.json") + 9);
  }
};

TEST_F(FaultsTest, APlanThatIsNotUsableIsRefusedWithItsPlace) {
  for (const auto& [plan, why] : testing_support::Cases(TABLES "FaultPlans.txt")) {
    EXPECT_EQ(WhyRefused(plan), why.at(0)) << plan;
  }
  EXPECT_EQ(WhyRefused(""), "");
  EXPECT_THROW(RestartWith([this](auto& options) { options.faultsFile = Path("nowhere.json"); }), std::runtime_error);
}

TEST(FaultPatterns, APatternFitsWholePathsAndFindsTheId) {
  for (const auto& [both, expected] : testing_support::Cases(TABLES "FaultPlans.txt")) {
    const std::string pattern = both.substr(0, both.find(' ')), path = both.substr(pattern.size() + 1);
    std::string id;
    const bool fits = FitsPattern(pattern, path, id);
    EXPECT_EQ(fits ? "fits" + (id.empty() ? "" : " " + id) : "does not", expected.at(0)) << both;
  }
}

TEST_F(FaultsTest, AnswersAreLateOrCutAnywhereOrLackTheirCode) {
  RestartWithRule(R"({"Fault":"Truncate","Path":"V0/Areas"},{"Fault":"Delay","Path":"V0/Users","Milliseconds":300},
      {"Fault":"MissingErrorCode","Path":"V0/ViewGroups"},
      {"Fault":"ColleagueEdit","Path":"V0/Views","Colleague":{"User":"nobody","Method":"DELETE","Path":"V0/Views/1"}},
      {"Fault":"DropAfter","Path":"V0/Elements"})");
  EXPECT_EQ(Wire(m_server->Port(), cid.Written("GET", "V0/Elements")).ReceiveAll(), "") << "no byte of an answer";
  size_t headsCut = 0, bodiesCut = 0;
  for (int i = 0; i < 60; ++i) {
    const Answer areas = cid.Get("V0/Areas");
    const bool isHeadCut = areas.headers.count("content-length") == 0 || areas.body.empty();
    headsCut += isHeadCut;
    bodiesCut += !isHeadCut && areas.body.size() < std::stoul(areas.headers.at("content-length"));
  }
  EXPECT_EQ(headsCut + bodiesCut, 60u);
  EXPECT_GT(std::min(headsCut, bodiesCut), 5u);
  const auto time = TimeOf([this] { EXPECT_EQ(cid.Get("V0/Users").Outcome(), "0/0 200"); });
  EXPECT_GT(time, std::chrono::milliseconds(290));
  EXPECT_EQ(cid.Get("V0/ViewGroups").body,
            R"({"ResponseStatus":{"ErrorModule":0,"Data":{"ChangeNumber":"0","ViewGroupList":{"ViewGroup":[]}},)"
            R"("CascadingErrorInfo":""}})");
  EXPECT_EQ(cid.Get("V0/Views").Outcome(), "0/0 200") << "a colleague who is not there disturbs nobody";
}

TEST_F(FaultsTest, TheSameSeedHitsTheSameExchanges) {
  const auto pattern = [this](int seed) {
    RestartWithPlan(R"("Seed":)" + std::to_string(seed) + R"(,"Rules":[{"Fault":"DropBefore","Path":"V0/A*",
        "Chance":0.5},{"Fault":"EmptyBody","Path":"V0/Areas","Chance":0.5,"Times":3}])");
    std::string outcomes;
    for (int i = 0; i < 40; ++i) {
      const Answer answer = ann.Get("V0/Areas");
      outcomes += answer.status == 0 ? 'd' : answer.body.empty() ? 'e' : '.';
      cid.Get("V0/Users");  // what does not fit changes nothing
    }
    return outcomes;
  };
  const std::string first = pattern(1);
  EXPECT_EQ(pattern(1), first);
  EXPECT_NE(pattern(2), first);
  EXPECT_NE(first.find('d'), std::string::npos) << first;
  EXPECT_NE(first.find('e'), std::string::npos) << first;
}

// Of each fault which of three groups are heard ("-" at the end; what comes twice comes once more after the next one),
// and in how many milliseconds at least.
TEST_F(FaultsTest, ChangesComeTwiceLateInPartOrNotAtAll) {
  for (const auto& [fault, expected] : testing_support::Cases(TABLES "FaultPlans.txt")) {
    RestartWithRule(R"({"Skip":1,"Times":1,"Fault":)" + fault + "}");
    EventStream stream = bob.Listen();
    const std::string& wanted = expected.at(0);
    std::string names;
    const auto time = TimeOf([&] {
      for (const char* name : {"1", "2", "3"}) ann.AddGroup(name, -1, kPublic);
      while (names.size() < wanted.size()) {
        const Event event = stream.Next();
        names += event.name.empty() ? "-" : event.json.HasParseError() ? "/" : event.Element()["Name"].GetString();
      }
    });
    EXPECT_EQ(names, wanted) << fault;
    EXPECT_GE(time, std::chrono::milliseconds(std::stoi(expected.at(1)))) << fault;
    EXPECT_NE(ann.GroupIds(), "");
  }
}

// The stall's end wakes the stream from a thread of its own while the server goes.
TEST_F(FaultsTest, AServerEndsWhileAStreamIsWoken) {
  for (int round = 0; round < 40; ++round) {
    RestartWithRule(R"({"Fault":"StallStream","Milliseconds":5})");
    EventStream stream = bob.Listen(0);
    ann.AddGroup("G", -1, kPublic);
    std::this_thread::sleep_for(std::chrono::microseconds(4000 + 50 * round));
  }
}

}  // namespace
}  // namespace server::test
