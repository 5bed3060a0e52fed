// SPDX-License-Identifier: Apache-2.0
// Attacks on the server's door: what lies in the store, guessing passwords, looking into what is private.
#include <algorithm>
#include <regex>

#include "../Cases.h"
#include "TestClient.h"
#include "server/api/Api.h"
#include "server/login/Secrets.h"

namespace server::test {
namespace {

// One of those that are numbered in a request.
std::string With(const std::string& request, int32_t view, int32_t group) {
  const std::string withView = std::regex_replace(request, std::regex("VIEW"), std::to_string(view));
  return std::regex_replace(withView, std::regex("GROUP"), std::to_string(group));
}

class DoorTest : public ServerTest {};

TEST_F(DoorTest, TheStoreHoldsNoPasswordAndNoTokenThatCouldBeUsed) {
  std::string error;
  ASSERT_TRUE(m_server->SetPassword("ann", "open sesame, please", error)) << error;
  const Client stranger(m_server->Port(), "");
  const std::string token = stranger.LogIn("ann", "open sesame, please").Token();
  EXPECT_GE(token.size(), 43u) << "256 bits";
  EXPECT_NE(token, stranger.LogIn("ann", "open sesame, please").Token());
  std::string stored;
  for (const auto& file : std::filesystem::directory_iterator(m_folder)) stored += Bytes(file.path().string());
  EXPECT_EQ(stored.find("open sesame"), std::string::npos);
  EXPECT_EQ(stored.find(token), std::string::npos);
  EXPECT_NE(stored.find("$argon2id$v=19$m=65536,t=2,p=1$"), std::string::npos);
  for (const std::string& near : {token.substr(1), token + "A", "A" + token.substr(1)}) {
    EXPECT_EQ(Client(m_server->Port(), near).Get("V0/Users").Outcome(), "101/2 401");
  }
}

// Answers log-ins of ann, bob and cid, by what the reply says and not by the clock. No password fits cid's, which shows
// at once: what stands for it is no hash.
class SiteOfThree {
 public:
  SiteOfThree() {
    InitSecrets();
    m_site.Make([hash = HashPassword("right")](Editor& editor) {
      for (const char* name : {"ann", "bob"}) editor.AddUser(name, hash);
      editor.AddUser("cid", "-");
    });
  }
  void SetHashOfCid(const std::string& hash) {
    m_site.Make([&hash](Editor& editor) { editor.SetPassword("cid", hash); });
  }
  std::string LogIn(const std::string& name, const std::string& password, const std::string& from = "here") {
    HttpRequest request{"POST", kRoot + "V0/Sessions", "", "", from, from, ""};
    request.body = R"({"Session":{"UserName":")" + name + R"(","Password":")" + password + "\"}}";
    m_reply = m_api.Handle(request);
    if (m_reply.pending) m_reply = m_reply.pending->Wait();
    return std::to_string(m_reply.status) + " after " + std::to_string(m_reply.delay.count());
  }
  // A header of the last reply.
  std::string Told(const std::string& name) const {
    const auto found = std::ranges::find(m_reply.headers, name, [](const auto& header) { return header.first; });
    return found == m_reply.headers.end() ? "" : found->second;
  }

 private:
  Site m_site{":memory:", {10, 1000}, SecondsNow};
  Api m_api{m_site};
  HttpReply m_reply;
};

TEST(Doors, GuessesAreAnsweredLaterAndTheRightPasswordAtOnceUnlessManyAnswersAreDue) {
  SiteOfThree site;
  for (const char* delay : {"0", "0", "0", "250", "500"}) {
    EXPECT_EQ(site.LogIn("ann", "wrong"), std::string("401 after ") + delay);
  }
  EXPECT_EQ(site.LogIn("nobody", "wrong"), "401 after 0") << "as for a user that there is";
  EXPECT_EQ(site.LogIn("bob", "right"), "200 after 0");
  EXPECT_EQ(site.LogIn("ann", "right"), "200 after 0");
  EXPECT_EQ(site.LogIn("ann", "wrong"), "401 after 0") << "and it makes good what was wrong before";
  const std::string hash = HashPassword("right");
  for (int i = 0; i < 11; ++i) site.LogIn("cid", "wrong");
  site.SetHashOfCid(hash);
  EXPECT_EQ(site.LogIn("cid", "right"), "401 after 8000")
      << "three answers are due: guessing in parallel does not help";
  EXPECT_EQ(site.LogIn("cid", "right", "there"), "200 after 0");
}

TEST(Doors, AnAddressWhereManyFailedWaitsButNotWhoGotInThereNorOthers) {
  SiteOfThree site;
  EXPECT_EQ(site.LogIn("ann", "right"), "200 after 0");
  for (int i = 0; i < 200; ++i) site.LogIn("cid", "wrong");
  EXPECT_EQ(site.LogIn("bob", "right"), "429 after 0");
  EXPECT_GT(std::stoi(site.Told("Retry-After")), 60);
  EXPECT_EQ(site.LogIn("ann", "right"), "200 after 0");
  EXPECT_EQ(site.LogIn("bob", "right", "there"), "200 after 0");
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

  for (const auto& attempt : testing_support::Cases(TABLES "Edits.txt")) {
    const Answer expected = bob.Do(With(attempt.text, 999, 999));
    for (int32_t g : {group, inner}) {
      const Answer told = bob.Do(With(attempt.text, view, g));
      EXPECT_NE(told.status, 200) << attempt.text;
      EXPECT_EQ(told.Outcome() + told.body, expected.Outcome() + expected.body) << attempt.text;
      EXPECT_EQ(told.headers, expected.headers) << attempt.text;
    }
  }
  EXPECT_EQ(ann.Get("V0/Views").body + ann.Get("V0/ViewGroups").body, before);
  EXPECT_EQ(bob.ViewIds() + " " + bob.GroupIds(), std::to_string(own) + " " + std::to_string(ownGroup));
  bob.AddView("marker", -1, kBob);
  EXPECT_EQ(stream.NextBriefs(3), "OwnViews +2; OwnViewGroups +3; OwnViews +3");
}

}  // namespace
}  // namespace server::test
