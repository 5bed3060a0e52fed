// SPDX-License-Identifier: Apache-2.0
// The manager's edits: the server first, then, silently, the cache.
#include "CoreFixture.h"
#include "QorviViewPlugin/ViewObserverManager/OrlUserObserver.h"
#include "ResourceStore/OrlUserManager.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;
class EditTest : public CoreTest {
 protected:
  EditTest() {
    CacheGroup(Group(1, kNoId, "one"));
    CacheGroup(Group(2, kNoId, "two"));
    CacheGroup(Group(3, 1, "child"));
    CacheView(View(5, 1, "five"));
    for (const char* id : {"1", "2", "3", "5", "42", "4294967295"}) {
      Observe(observer, kView, id);
      Observe(observer, kViewGroup, id);
    }
  }

  static constexpr char kUntouched[] =
      "group 1 'one' in -1: 5 'five'; group 2 'two' in -1; group 3 'child' in 1; view 5 'five'; ";

  NotingObserver observer;
  unsigned int newId = 1234;
  ErrorCode error{9, 9, 9, "before"};
};

struct Edit {
  const char* name;
  std::function<bool(CViewGroupManager&, unsigned int& newId, ErrorCode&)> run;
  const char* cachedAfter;  // null: as before
};

const Edit kEdits[] = {
    {"AddView", [](auto& m, auto& id, auto& e) { return m.AddView(View(kNoId, 2, "new"), id, e); },
     "group 1 'one' in -1: 5 'five'; group 2 'two' in -1: 42 'new'; group 3 'child' in 1; view 5 'five'; "
     "view 42 'new'; "},
    {"AddViewGroup", [](auto& m, auto& id, auto& e) { return m.AddViewGroup(Group(kNoId, 1, "new"), id, e); },
     "group 1 'one' in -1: 5 'five'; group 2 'two' in -1; group 3 'child' in 1; group 42 'new' in 1; view 5 'five'; "},
    {"ModifyView", [](auto& m, auto&, auto& e) { return m.ModifyView(View(5, 2, "moved"), e); },
     "group 1 'one' in -1; group 2 'two' in -1: 5 'moved'; group 3 'child' in 1; view 5 'moved'; "},
    {"ModifyViewOfUnknownId", [](auto& m, auto&, auto& e) { return m.ModifyView(View(kNoId, 2, "x"), e); }, nullptr},
    {"ModifyViewGroup", [](auto& m, auto&, auto& e) { return m.ModifyViewGroup(Group(3, 2, "renamed"), e); },
     "group 1 'one' in -1: 5 'five'; group 2 'two' in -1; group 3 'renamed' in 1; view 5 'five'; "},
    {"DeleteView", [](auto& m, auto&, auto& e) { return m.DeleteView(5, e); },
     "group 1 'one' in -1; group 2 'two' in -1; group 3 'child' in 1; "},
    {"DeleteViewGroup", [](auto& m, auto&, auto& e) { return m.DeleteViewGroup(1, e); },
     "group 2 'two' in -1; group 3 'child' in 1; view 5 'five'; "},
    {"SetDefaultViewConfig", [](auto& m, auto&, auto& e) { return m.SetDefaultViewConfig(-3, 1, e); }, nullptr},
};

class EveryEditTest : public EditTest, public testing::WithParamInterface<Edit> {};

TEST_P(EveryEditTest, ChangesTheCacheSilentlyOnceTheServerHasAccepted) {
  const char* const cachedAfter = GetParam().cachedAfter ? GetParam().cachedAfter : kUntouched;
  const unsigned int idAfter = std::string(GetParam().name).starts_with("Add") ? 42 : 1234;
  observer.Take();
  server.Answer(R"({"ResponseStatus":{"ErrorCode":4,"Data":{"View":{"ID":42},"ViewGroup":{"ID":42}}}})");
  EXPECT_FALSE(GetParam().run(Manager(), newId, error));
  EXPECT_EQ(Cached() + std::to_string(newId), std::string(kUntouched) + "1234");
  server.Answer(Accepted(R"({"View":{"ID":42},"ViewGroup":{"ID":42}})"));
  EXPECT_TRUE(GetParam().run(Manager(), newId, error));
  EXPECT_EQ(Cached() + std::to_string(newId), cachedAfter + std::to_string(idAfter));
  EXPECT_EQ(observer.Take(), Texts());
}

INSTANTIATE_TEST_SUITE_P(Edits, EveryEditTest, testing::ValuesIn(kEdits),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(EditTest, AnAcceptedAddWithoutAnIdIsCachedUnderMinusOne) {
  server.Answer(Accepted());
  EXPECT_TRUE(Manager().AddView(View(3, 2, "lost"), newId, error));
  EXPECT_EQ(newId, kNoId);
  EXPECT_EQ(ViewName(kNoId), "lost");
  EXPECT_TRUE(Manager().AddViewGroup(Group(3, 2, "lost"), newId, error));
  EXPECT_EQ(GroupName(kNoId), "lost");
}

TEST_F(EditTest, AnAddedIdThatIsCachedAlreadyKeepsTheOldEntry) {
  server.Answer(Accepted(R"({"View":{"ID":5},"ViewGroup":{"ID":1}})"));
  EXPECT_TRUE(Manager().AddView(View(kNoId, 1, "again"), newId, error));
  EXPECT_TRUE(Manager().AddViewGroup(Group(kNoId, 1, "again"), newId, error));
  EXPECT_EQ(Cached(), "group 1 'one' in -1: 5 'again'; group 2 'two' in -1; group 3 'child' in 1; view 5 'five'; ");
}

TEST_F(EditTest, AViewMovesOnlyBetweenGroupsThatAreCached) {
  server.Answer(Accepted());
  EXPECT_TRUE(Manager().ModifyView(View(5, 77, "five"), error));
  EXPECT_EQ(Members(1), Ids());
  EXPECT_TRUE(Manager().ModifyView(View(5, 2, "five"), error));
  EXPECT_EQ(Members(2), Ids{5});
  EXPECT_TRUE(Manager().ModifyView(View(5, 2, "renamed"), error));
  EXPECT_EQ(MemberNames(2), std::vector<std::string>{"renamed"});
}

// --- The server's users

class UsersTest : public EditTest {
 protected:
  ~UsersTest() override { Users().ResetDownload(); }
  static ResourceStore::COrlUserManager& Users() {
    return Vant::Base::CSingleton<ResourceStore::COrlUserManager>::Instance();
  }
  std::string Asked(bool expectSuccess) {
    std::vector<std::shared_ptr<ResourceStore::CUserInfo>> users;
    error = ErrorCode(9, 9, 9, "before");
    EXPECT_EQ(Manager().GetAllUsers(error, users), expectSuccess);
    std::string names;
    for (const auto& user : users) names += user->GetVal_m_strUsername() + " ";
    return names + Text(error);
  }
};

TEST_F(UsersTest, EachCallWaitsForADownloadOfItsOwn) {
  Users().SetDownload({std::make_shared<ResourceStore::CUserInfo>(1, "ada", true, 0)}, ErrorCode());
  EXPECT_EQ(Asked(true), "ada 0/0/0/");
  Users().SetDownload({}, ErrorCode(4, 503, 0, "down"));
  // The users of the last download that succeeded come with the error.
  EXPECT_EQ(Asked(false), "ada 4/503/0/down");
  Users().SetDownload({std::make_shared<ResourceStore::CUserInfo>(2, "eve", false, 3)}, ErrorCode());
  EXPECT_EQ(Asked(true), "eve 0/0/0/");
}

TEST(UserObserver, TakesEveryEndButSuccessForAFailure) {
  COrlUserObserver observer;
  using Param = ResourceStore::CIOrlUserObserverParam;
  for (int state : {1, 2, -1}) {
    observer.SetWaiting(true);
    Param failed(static_cast<Param::State>(state), ErrorCode(4, 503, 0, "down"));
    observer.OnUserListNotify(failed);
    EXPECT_FALSE(observer.IsWaiting() || observer.IsSucceeded());
    EXPECT_EQ(Text(observer.GetErrorCode()), "4/503/0/down");
  }
}

}  // namespace
}  // namespace core_test
