// SPDX-License-Identifier: Apache-2.0
// The manager's edits: the server first, then, silently, the cache.
#include "CoreFixture.h"
#include "QorviViewPlugin/FirstLoad.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

class EditTest : public CoreTest {
 protected:
  EditTest() { Fill(); }
  void Fill() {
    ClearViewData();
    CacheGroup(Group(1, kNoId, "one"));
    CacheGroup(Group(2, kNoId, "two"));
    CacheGroup(Group(3, 1, "child"));
    CacheView(View(5, 1, "five"));
    for (const char* id : {"1", "2", "3", "5", "42", "4294967295"}) {
      Observe(observer, kView, id);
      Observe(observer, kViewGroup, id);
    }
  }
  std::string Outcome() { return Cached() + std::to_string(newId); }

  NotingObserver observer;
  unsigned int newId = 7;
  ErrorCode error{9, 9, 9, "before"};
};

TEST_F(EditTest, ChangesTheCacheSilentlyOnceTheServerHasAccepted) {
  const std::string one = "group 1'one' in -1: 5'five' ; ", two = "group 2'two' in -1: ; ";
  const std::string child = "group 3'child' in 1: ; ", five = "view 5'five'; ";
  const std::string untouched = one + two + child + five + "7";
  const std::pair<std::function<bool()>, std::string> edits[] = {
      {[&] { return Manager().AddView(View(kNoId, 2, "new"), newId, error); },
       one + "group 2'two' in -1: 42'new' ; " + child + five + "view 42'new'; 42"},
      {[&] { return Manager().AddViewGroup(Group(kNoId, 1, "new"), newId, error); },
       one + two + child + "group 42'new' in 1: ; " + five + "42"},
      {[&] { return Manager().ModifyView(View(5, 2, "moved"), error); },
       "group 1'one' in -1: ; group 2'two' in -1: 5'moved' ; " + child + "view 5'moved'; 7"},
      {[&] { return Manager().ModifyView(View(kNoId, 2, "x"), error); }, untouched},
      {[&] { return Manager().ModifyViewGroup(Group(3, 2, "renamed"), error); },
       one + two + "group 3'renamed' in 1: ; " + five + "7"},
      {[&] { return Manager().DeleteView(5, error); }, "group 1'one' in -1: ; " + two + child + "7"},
      {[&] { return Manager().DeleteViewGroup(1, error); }, two + child + five + "7"},
      {[&] { return Manager().SetDefaultViewConfig(-3, 1, error); }, untouched},
  };
  for (const auto& [edit, after] : edits) {
    Fill();
    newId = 7;
    server.Answer(R"({"ResponseStatus":{"ErrorCode":4,"Data":{"View":{"ID":42},"ViewGroup":{"ID":42}}}})");
    EXPECT_FALSE(edit());
    EXPECT_EQ(Outcome(), untouched) << "refused: " << after;
    server.Answer(Accepted(R"({"View":{"ID":42},"ViewGroup":{"ID":42}})"));
    EXPECT_TRUE(edit());
    EXPECT_EQ(Outcome(), after);
  }
  EXPECT_EQ(observer.Take(), Texts());
}

TEST_F(EditTest, AnAcceptedAddWithoutAnIdIsCachedUnderMinusOne) {
  server.Answer(Accepted());
  EXPECT_TRUE(Manager().AddView(View(3, 2, "lost"), newId, error));
  EXPECT_EQ(newId, kNoId);
  EXPECT_TRUE(Manager().AddViewGroup(Group(3, 2, "lost"), newId, error));
  EXPECT_EQ(ViewName(kNoId) + GroupName(kNoId), "lostlost");
}

TEST_F(EditTest, AnAddedIdThatIsCachedAlreadyKeepsTheOldEntry) {
  server.Answer(Accepted(R"({"View":{"ID":5},"ViewGroup":{"ID":1}})"));
  EXPECT_TRUE(Manager().AddView(View(kNoId, 1, "again"), newId, error));
  EXPECT_TRUE(Manager().AddViewGroup(Group(kNoId, 1, "again"), newId, error));
  EXPECT_EQ(Outcome(), "group 1'one' in -1: 5'again' ; group 2'two' in -1: ; group 3'child' in 1: ; view 5'five'; 1");
}

TEST_F(EditTest, AViewMovesOnlyBetweenGroupsThatAreCached) {
  server.Answer(Accepted());
  EXPECT_TRUE(Manager().ModifyView(View(5, 77, "five"), error));
  EXPECT_EQ(Members(1), "");
  EXPECT_TRUE(Manager().ModifyView(View(5, 2, "five"), error));
  EXPECT_TRUE(Manager().ModifyView(View(5, 2, "renamed"), error));
  EXPECT_EQ(Members(2), "5'renamed' ");
}

TEST_F(EditTest, WhatIsChangedAfterAnotherClientsMoveShowsInTheOldGroupsList) {
  ViewDataResourceUpdate(ViewsDocument(R"({"ID":5,"Name":"moved","ViewGroupID":2,"Method":1})"));
  EXPECT_EQ(Members(1) + "| " + Members(2), "5'moved' | 5'moved' ");
  server.Answer(Accepted());
  EXPECT_TRUE(Manager().ModifyView(View(5, 2, "renamed"), error));
  EXPECT_EQ(Members(1) + "| " + Members(2), "5'renamed' | 5'moved' ");
}

// --- The server's users

class UsersTest : public CoreTest {};

TEST_F(UsersTest, EachCallWaitsForADownloadOfItsOwn) {
  using User = ResourceStore::CUserInfo;
  const auto asked = [] {
    std::vector<std::shared_ptr<User>> users;
    ErrorCode error(9, 9, 9, "before");
    std::string text = Manager().GetAllUsers(error, users) ? "true " : "false ";
    for (const auto& user : users) text += user->GetVal_m_strUsername() + " ";
    return text + Text(error);
  };
  Users().SetDownload({std::make_shared<User>(1, "ada", true, 0)}, ErrorCode());
  EXPECT_EQ(asked(), "true ada 0/0/0/");
  Users().SetDownload({}, ErrorCode(4, 503, 0, "down"));
  // The users of the last download that succeeded come with the error.
  EXPECT_EQ(asked(), "false ada 4/503/0/down");
  Users().SetDownload({std::make_shared<User>(2, "eve", false, 3)}, ErrorCode());
  EXPECT_EQ(asked(), "true eve 0/0/0/");
}

}  // namespace
}  // namespace core_test
