// SPDX-License-Identifier: Apache-2.0
// The manager's edits: the server first, then, silently, the cache.
#include <atomic>
#include <thread>

#include "CoreFixture.h"
#include "QorviViewPlugin/ViewDataManager/ViewDocument.h"
#include "QorviViewPlugin/ViewObserverManager/OrlUserObserver.h"
#include "ResourceStore/OrlUserManager.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;
using Ids = std::vector<unsigned int>;

constexpr char kRoot[] = "/NXAPI/Vantorel/Platform/";

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

  // The whole cache as a text.
  std::string Cached() {
    std::string text;
    for (unsigned int id : {1u, 2u, 3u, 42u, kNoId}) {
      if (!Manager().GetViewGroupByID(id)) continue;
      text += "group " + std::to_string(id) + " '" + GroupName(id) + "' parent " +
              std::to_string(static_cast<int>(Manager().GetViewGroupByID(id)->GetParentID())) + ":";
      for (unsigned int member : Members(id)) text += " " + std::to_string(member);
      text += "; ";
    }
    for (unsigned int id : {5u, 42u, kNoId}) {
      if (Manager().GetViewByID(id)) text += "view " + std::to_string(id) + " '" + ViewName(id) + "'; ";
    }
    return text;
  }
  static constexpr char kUntouched[] =
      "group 1 'one' parent -1: 5; group 2 'two' parent -1:; group 3 'child' parent 1:; view 5 'five'; ";

  NotingObserver observer;
  unsigned int newId = 1234;
  ErrorCode error{9, 9, 9, "before"};
};

struct Edit {
  const char* name;
  std::function<bool(CViewGroupManager&, unsigned int& newId, ErrorCode&)> run;
  SentRequest sent;
  const char* replyData;
  const char* cachedAfter;
};

const std::vector<Edit>& Edits() {
  static const std::vector<Edit> edits = {
      {"AddView",
       [](auto& m, auto& id, auto& e) { return m.AddView(View(kNoId, 2, "new"), id, e); },
       {"POST", std::string(kRoot) + "V0/Views", WriteViewDocument(View(kNoId, 2, "new")), "", 0},
       R"({"View":{"ID":42}})",
       "group 1 'one' parent -1: 5; group 2 'two' parent -1: 42; group 3 'child' parent 1:; view 5 'five'; "
       "view 42 'new'; "},
      {"AddViewGroup",
       [](auto& m, auto& id, auto& e) { return m.AddViewGroup(Group(kNoId, 1, "new"), id, e); },
       {"POST", std::string(kRoot) + "V0/ViewGroups", WriteViewGroupDocument(Group(kNoId, 1, "new")), "", 0},
       R"({"ViewGroup":{"ID":42}})",
       "group 1 'one' parent -1: 5; group 2 'two' parent -1:; group 3 'child' parent 1:; group 42 'new' parent 1:; "
       "view 5 'five'; "},
      {"ModifyView",
       [](auto& m, auto&, auto& e) { return m.ModifyView(View(5, 2, "moved"), e); },
       {"PUT", std::string(kRoot) + "V0/Views/5", WriteViewDocument(View(5, 2, "moved")), "", 0},
       "{}",
       "group 1 'one' parent -1:; group 2 'two' parent -1: 5; group 3 'child' parent 1:; view 5 'moved'; "},
      {"ModifyViewOfUnknownId",
       [](auto& m, auto&, auto& e) { return m.ModifyView(View(kNoId, 2, "x"), e); },
       {"PUT", std::string(kRoot) + "V0/Views/4294967295", WriteViewDocument(View(kNoId, 2, "x")), "", 0},
       "{}",
       nullptr},
      {"ModifyViewGroup",
       [](auto& m, auto&, auto& e) { return m.ModifyViewGroup(Group(3, 2, "renamed"), e); },
       {"PUT", std::string(kRoot) + "V0/ViewGroups/3", WriteViewGroupDocument(Group(3, 2, "renamed")), "", 0},
       "{}",
       "group 1 'one' parent -1: 5; group 2 'two' parent -1:; group 3 'renamed' parent 1:; view 5 'five'; "},
      {"DeleteView",
       [](auto& m, auto&, auto& e) { return m.DeleteView(5, e); },
       {"DELETE", std::string(kRoot) + "V0/Views/5", "", "", 0},
       "{}",
       "group 1 'one' parent -1:; group 2 'two' parent -1:; group 3 'child' parent 1:; "},
      {"DeleteViewGroup",
       [](auto& m, auto&, auto& e) { return m.DeleteViewGroup(1, e); },
       {"DELETE", std::string(kRoot) + "V0/ViewGroups/1", "", "", 0},
       "{}",
       "group 2 'two' parent -1:; group 3 'child' parent 1:; view 5 'five'; "},
      {"SetDefaultViewConfig",
       [](auto& m, auto&, auto& e) { return m.SetDefaultViewConfig(-3, 1, e); },
       {"PUT", std::string(kRoot) + "V1/View/Default/Config", R"({"ViewRequest":{"Type":1,"ID":-3}})", "", 0},
       "{}",
       nullptr},
  };
  return edits;
}

class EveryEditTest : public EditTest, public testing::WithParamInterface<Edit> {};

TEST_P(EveryEditTest, ChangesTheCacheSilentlyOnceTheServerHasAccepted) {
  observer.Take();
  server.Answer(Accepted(GetParam().replyData));
  EXPECT_TRUE(GetParam().run(Manager(), newId, error));
  EXPECT_EQ(server.Take(), std::vector{GetParam().sent});
  EXPECT_EQ(Cached(), GetParam().cachedAfter ? GetParam().cachedAfter : kUntouched);
  EXPECT_EQ(newId, GetParam().sent.method == "POST" ? 42u : 1234u);
  EXPECT_EQ(observer.Take(), std::vector<std::string>());
}

TEST_P(EveryEditTest, LeavesTheCacheAloneAndPassesTheErrorOnWhenItFails) {
  const bool isAdd = GetParam().sent.method == "POST";
  const bool isConfig = GetParam().sent.url.ends_with("Config");
  const struct {
    std::function<void()> prepare;
    std::string error;
  } failures[] = {
      {[this] { server.BreakDown(ErrorCode(1, 7, 5, "wire")); }, "1/7/5/wire"},
      {[this] { server.Answer(Refused(100, 4, "why")); }, isAdd      ? "100/4/1/"
                                                          : isConfig ? "100/4/1/before"
                                                                     : "100/4/1/why"},
      {[this] { server.Answer("{}"); }, isConfig ? "-1/-1/1/before" : "-1/-1/1/"},
  };
  for (const auto& failure : failures) {
    failure.prepare();
    error = ErrorCode(9, 9, 9, "before");
    EXPECT_FALSE(GetParam().run(Manager(), newId, error));
    EXPECT_EQ(Text(error), failure.error);
    EXPECT_EQ(Cached(), kUntouched);
    EXPECT_EQ(newId, 1234u);
  }
}

INSTANTIATE_TEST_SUITE_P(Edits, EveryEditTest, testing::ValuesIn(Edits()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(EditTest, AnEmptyReplyFailsAddsAndStatusEditsAndPassesTheDefaultView) {
  server.Answer("");
  EXPECT_FALSE(Manager().AddView(View(kNoId), newId, error));
  EXPECT_EQ(Text(error), "0/0/1/");
  EXPECT_FALSE(Manager().AddViewGroup(Group(kNoId), newId, error));
  EXPECT_EQ(Text(error), "0/0/0/");
  EXPECT_FALSE(Manager().DeleteView(5, error));
  EXPECT_EQ(Text(error), "-1/-1/1/");
  EXPECT_EQ(Cached(), kUntouched);
  int id = 7;
  int type = 8;
  EXPECT_TRUE(Manager().GetDefaultViewConfig(id, type, error));
  EXPECT_EQ(id, 7);
  EXPECT_EQ(type, 8);
}

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
  EXPECT_EQ(Cached(), kUntouched);
  EXPECT_EQ(MemberNames(1), std::vector<std::string>{"again"});
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

TEST_F(EditTest, AGroupThatIsNotCachedIsNotDeletedOnTheServer) {
  server.Answer(Accepted());
  EXPECT_FALSE(Manager().DeleteViewGroup(7, error));
  EXPECT_EQ(Text(error), "2/20/3/");
  EXPECT_EQ(server.Take(), std::vector<SentRequest>());
}

TEST_F(EditTest, TheDefaultViewIsReadFromAcceptedAndRefusedRepliesAlike) {
  int id = 7;
  int type = 8;
  server.Answer(Accepted(R"({"Config":{"Type":1,"ID":17}})"));
  EXPECT_TRUE(Manager().GetDefaultViewConfig(id, type, error));
  EXPECT_EQ(std::make_pair(id, type), std::make_pair(17, 1));
  server.Answer(Refused(100, 5));
  EXPECT_FALSE(Manager().GetDefaultViewConfig(id, type, error));
  EXPECT_EQ(std::make_pair(id, type), std::make_pair(-1, -1));
  id = 7;
  server.BreakDown(ErrorCode(1, 7, 0, ""));
  EXPECT_FALSE(Manager().GetDefaultViewConfig(id, type, error));
  EXPECT_EQ(id, 7);
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

TEST_F(UsersTest, SeveralThreadsMayAskAtOnce) {
  Users().SetDownload({std::make_shared<ResourceStore::CUserInfo>(1, "ada", true, 0)}, ErrorCode());
  std::atomic<int> succeeded{0};
  std::vector<std::thread> threads;
  for (int n = 0; n < 4; ++n) {
    threads.emplace_back([&] {
      std::vector<std::shared_ptr<ResourceStore::CUserInfo>> users;
      ErrorCode own;
      if (Manager().GetAllUsers(own, users) && users.size() == 1) ++succeeded;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(succeeded, 4);
}

TEST(UserObserver, KeepsTheLastOutcomeAndEndsTheWaitLast) {
  COrlUserObserver observer;
  EXPECT_FALSE(observer.IsWaiting() || observer.IsSucceeded());
  using Param = ResourceStore::CIOrlUserObserverParam;
  for (int state : {1, 2, -1}) {
    observer.SetWaiting(true);
    Param failed(static_cast<Param::State>(state), ErrorCode(4, 503, 0, "down"));
    observer.OnUserListNotify(failed);
    EXPECT_FALSE(observer.IsWaiting() || observer.IsSucceeded());
    EXPECT_EQ(Text(observer.GetErrorCode()), "4/503/0/down");
  }
  Param succeeded(Param::Succeeded, ErrorCode(1, 2, 3, "not looked at"));
  observer.OnUserListNotify(succeeded);
  EXPECT_TRUE(observer.IsSucceeded());
  EXPECT_EQ(Text(observer.GetErrorCode()), "0/0/0/");
}

}  // namespace
}  // namespace core_test
