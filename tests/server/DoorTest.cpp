// SPDX-License-Identifier: Apache-2.0
// Attacks on the server's door: what lies in the store, guessing passwords, looking into what is private.
#include <fstream>
#include <sstream>
#include <thread>

#include "TestClient.h"
#include "server/api/Api.h"
#include "server/login/Secrets.h"

namespace server::test {
namespace {

using Clock = std::chrono::steady_clock;

class DoorTest : public ServerTest {
 protected:
  Answer LogInWith(const std::string& name, const std::string& password) const {
    return Client(m_server->Port(), "").LogIn(name, password);
  }
  // All bytes of the store's files.
  std::string StoredBytes() const {
    std::stringstream bytes;
    for (const auto& file : std::filesystem::directory_iterator(m_folder)) {
      if (std::filesystem::file_size(file) > 0) bytes << std::ifstream(file.path(), std::ios::binary).rdbuf();
    }
    return bytes.str();
  }
};

TEST_F(DoorTest, TheStoreHoldsNoPasswordAndNoTokenThatCouldBeUsed) {
  std::string error;
  ASSERT_TRUE(m_server->SetPassword("ann", "open sesame, please", error)) << error;
  const Answer first = LogInWith("ann", "open sesame, please");
  const Answer second = LogInWith("ann", "open sesame, please");
  const std::string token = first.Data()["Session"]["Token"].GetString();
  EXPECT_GE(token.size(), 43u) << "256 bits";
  EXPECT_NE(token, second.Data()["Session"]["Token"].GetString());
  const std::string stored = StoredBytes();
  EXPECT_EQ(stored.find("open sesame"), std::string::npos);
  EXPECT_EQ(stored.find(token), std::string::npos);
  EXPECT_NE(stored.find("$argon2id$v=19$m=65536,t=2,p=1$"), std::string::npos);
  for (const std::string& near : {token.substr(1), token + "A", "A" + token.substr(1)}) {
    EXPECT_EQ(Client(m_server->Port(), near).Get("V0/Users").Outcome(), "101/2 401");
  }
}

TEST_F(DoorTest, GuessingGetsSlowAndGuessingInParallelDoesNotHelp) {
  std::string error;
  ASSERT_TRUE(m_server->SetPassword("ann", "right", error)) << error;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(LogInWith("ann", "wrong").Outcome(), "101/1 401");
  const auto began = Clock::now();
  EXPECT_EQ(LogInWith("ann", "wrong").Outcome(), "101/1 401");
  EXPECT_GE(Clock::now() - began, std::chrono::milliseconds(250));
  EXPECT_EQ(LogInWith("nobody", "wrong").Outcome(), "101/1 401") << "as for a user that there is";
  EXPECT_EQ(LogInWith("bob", "b").Outcome(), "0/0 200");
  EXPECT_EQ(LogInWith("ann", "right").Outcome(), "0/0 200");

  // Many at once, the right one last: by then the guesses of this address count for nothing. Where the machine is so
  // busy that the right one is looked at before three of their answers are due, it is taken, and all begins anew.
  std::string outcome;
  for (int wave = 0; wave < 5 && outcome != "101/1 401"; ++wave) {
    std::vector<std::unique_ptr<Wire>> wires;
    for (int i = 0; i < 16; ++i) {
      const std::string body = R"({"Session":{"UserName":"ann","Password":"guess)" + std::to_string(i) + R"("}})";
      const std::string head =
          "POST " + kRoot + "V0/Sessions HTTP/1.1\r\nHost: t\r\nConnection: close\r\nContent-Length: ";
      wires.push_back(std::make_unique<Wire>(m_server->Port(), head + std::to_string(body.size()) + "\r\n\r\n" + body));
    }
    ParseAnswer(wires[0]->ReceiveAll());
    std::this_thread::sleep_for(std::chrono::seconds(1));
    outcome = LogInWith("ann", "right").Outcome();
  }
  EXPECT_EQ(outcome, "101/1 401");
}

// By what the reply says and not by the clock.
TEST(Doors, GuessesAreAnsweredLaterAndTheRightPasswordAtOnce) {
  InitSecrets();
  Site site(":memory:", {10, 1000}, SecondsNow);
  for (const char* name : {"ann", "bob"}) {
    site.Make([name, hash = HashPassword("right")](Editor& editor) { editor.AddUser(name, hash); });
  }
  Api api(site);
  const auto outcome = [&api](const std::string& name, const std::string& password) {
    HttpRequest request{"POST", kRoot + "V0/Sessions", "", "", "here", "here", ""};
    request.body = R"({"Session":{"UserName":")" + name + R"(","Password":")" + password + "\"}}";
    HttpReply reply = api.Handle(request);
    if (reply.pending) reply = reply.pending->Wait();
    return std::to_string(reply.status) + " after " + std::to_string(reply.delay.count());
  };
  for (const char* delay : {"0", "0", "0", "250", "500"}) {
    EXPECT_EQ(outcome("ann", "wrong"), std::string("401 after ") + delay);
  }
  EXPECT_EQ(outcome("nobody", "wrong"), "401 after 0") << "as for a user that there is";
  EXPECT_EQ(outcome("bob", "right"), "200 after 0");
  EXPECT_EQ(outcome("ann", "right"), "200 after 0");
  EXPECT_EQ(outcome("ann", "wrong"), "401 after 0") << "and it makes good what was wrong before";
}

// Whatever bob tries on what is ann's alone, he is told what he is told of a number that nothing has.
TEST_F(DoorTest, WhatIsPrivateCannotBeToldFromWhatDoesNotExist) {
  const int32_t group = ann.AddGroup("secret", -1, kAnn);
  const int32_t inner = ann.AddGroup("secret", group, kAnn);
  const int32_t view = ann.AddView("secret", inner, kAnn);
  const int32_t own = bob.AddView("V", -1, kBob);
  const int32_t ownGroup = bob.AddGroup("G", -1, kBob);
  EventStream stream = bob.Listen(0);
  const std::string before = ann.Get("V0/Views").body + ann.Get("V0/ViewGroups").body;

  struct Attempt {
    std::string method, path, body;
  };
  const auto attempts = [&](int32_t v, int32_t g) {
    const std::string viewId = std::to_string(v);
    const std::string groupId = std::to_string(g);
    const std::string ownId = std::to_string(own);
    return std::vector<Attempt>{
        {"GET", "V0/Views/" + viewId, ""},
        {"PUT", "V0/Views/" + viewId, ViewBody("x", -1, kBob)},
        {"PUT", "V0/Views/" + viewId, ViewBody("x", g, kAnn)},
        {"PUT", "V0/Views/" + viewId, ViewBody("", -1, kBob)},
        {"PUT", "V0/Views/" + viewId, "{"},
        {"DELETE", "V0/Views/" + viewId, ""},
        {"POST", "V1/View/" + viewId + "/Share", ShareBody("2")},
        {"POST", "V1/View/" + viewId + "/Share", ShareBody("99")},
        {"PUT", "V0/Views/Move", MoveBody(1, -1, viewId)},
        {"PUT", "V0/Views/Move", MoveBody(1, ownGroup, ownId + "," + viewId)},
        {"PUT", "V0/Views/Move", MoveBody(1, g, ownId)},
        {"PUT", "V0/Views/Move", MoveBody(1, g, viewId)},
        {"POST", "V0/Views", ViewBody("x", g, kBob)},
        {"POST", "V0/Views", ViewBody("x", g, kAnn)},
        {"POST", "V0/Views", ViewBody("x", g, kPublic)},
        {"PUT", "V0/Views/" + ownId, ViewBody("x", g, kBob)},
        {"PUT", "V0/ViewGroups/" + groupId, GroupBody("x", -1, kBob)},
        {"DELETE", "V0/ViewGroups/" + groupId, ""},
        {"POST", "V0/ViewGroups", GroupBody("x", g, kBob)},
        {"PUT", "V0/ViewGroups/Move", MoveBody(2, -1, groupId)},
        {"PUT", "V0/ViewGroups/Move", MoveBody(2, g, std::to_string(ownGroup))},
    };
  };
  for (int32_t g : {group, inner}) {
    const std::vector<Attempt> real = attempts(view, g);
    const std::vector<Attempt> none = attempts(999, 999);
    for (size_t i = 0; i < real.size(); ++i) {
      const Answer told = bob.Request(real[i].method, real[i].path, real[i].body);
      const Answer expected = bob.Request(none[i].method, none[i].path, none[i].body);
      EXPECT_NE(told.status, 200) << real[i].path << real[i].body;
      EXPECT_EQ(told.Outcome() + told.body, expected.Outcome() + expected.body) << real[i].path << real[i].body;
      EXPECT_EQ(told.headers, expected.headers) << real[i].path << real[i].body;
    }
  }
  EXPECT_EQ(ann.Get("V0/Views").body + ann.Get("V0/ViewGroups").body, before);
  EXPECT_EQ(bob.ViewIds() + " " + bob.GroupIds(), std::to_string(own) + " " + std::to_string(ownGroup));
  bob.AddView("marker", -1, kBob);
  EXPECT_EQ(stream.NextBriefs(3), "OwnViews +2; OwnViewGroups +3; OwnViews +3");
}

}  // namespace
}  // namespace server::test
