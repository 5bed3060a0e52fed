// SPDX-License-Identifier: Apache-2.0
// The first load, the changes that follow it, and clearing, through the exported functions.
#include "CoreFixture.h"
#include "QorviViewPlugin/FirstLoad.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

const std::string kGroups = GroupsDocument(R"({"ID":1,"Name":"one"},{"ID":2,"Name":"two","ParentViewGroupID":1})");
const std::string kViews = ViewsDocument(R"({"ID":5,"Name":"five","ViewGroupID":1},{"ID":6,"Name":"six"})");
// The answer of a load, with this error.
std::string Loaded(const std::string& error = "") {
  return R"(true {"error_info":")" + error + R"(","init_finish":true})";
}

class FirstLoadTest : public CoreTest {
 protected:
  static void Download(const std::string& groups, const std::string& views) {
    Downloads().SetDownloadedData(groups, views, true);
  }
  static std::string PollGroups() { return Call(IsInitViewGroupFinish); }
  static std::string PollViews() { return Call(IsInitViewFinish); }
  static void Load() {
    Download(kGroups, kViews);
    ASSERT_EQ(PollGroups(), Loaded());
    ASSERT_EQ(PollViews(), Loaded());
  }
  static void ChangeViews(const std::string& elements) { Downloads().NotifyViewsUpdate(ViewsDocument(elements)); }
  static void ChangeGroups(const std::string& elements) {
    Downloads().NotifyViewGroupsUpdate(GroupsDocument(elements));
  }

  // Watches these views and groups.
  void Watch() {
    for (const char* id : {"1", "2", "3", "4294967295"}) Observe(observer, kViewGroup, id);
    for (const char* id : {"5", "6", "9"}) Observe(observer, kView, id);
  }

  NotingObserver observer;
};

TEST_F(FirstLoadTest, BeforeTheDownloadEndsPollsAnswerFalseAndLeaveTheResponse) {
  EXPECT_FALSE(IsViewResourceDownFinish());
  EXPECT_EQ(PollGroups() + PollViews(), "false oldfalse old");
  EXPECT_FALSE(IsViewGroupLoadDone() || IsViewLoadDone());
  EXPECT_EQ(log->Take(), Texts());
}

TEST_F(FirstLoadTest, LoadsGroupsThenViewsAndAnswersThatItDid) {
  Download(kGroups, kViews);
  EXPECT_TRUE(IsViewResourceDownFinish());
  EXPECT_EQ(Call(IsInitViewGroupFinish, R"({"request_info":"not used"})"), Loaded());
  EXPECT_TRUE(IsViewGroupLoadDone());
  EXPECT_FALSE(IsViewLoadDone());
  EXPECT_EQ(Call(IsInitViewFinish, "{"), Loaded());
  EXPECT_TRUE(IsViewLoadDone());
  EXPECT_EQ(log->Take(), (Texts{InfoLine("[IsInitViewGroupFinish]init view_group_message data: " + kGroups),
                                InfoLine("[IsInitViewFinish]init view_messgae data: " + kViews)}));
  EXPECT_EQ(Cached(), "group 1'one' in -1: 5'five' ; group 2'two' in 1: ; view 5'five'; view 6'six'; ");
}

TEST_F(FirstLoadTest, ViewsLoadedBeforeTheirGroupsBelongToNone) {
  Download(kGroups, kViews);
  PollViews();
  PollGroups();
  EXPECT_EQ(ViewName(5) + Members(1), "five");
}

TEST_F(FirstLoadTest, ASecondPollDoesNothingAndLeavesTheResponse) {
  Load();
  log->Take();
  Download(GroupsDocument(R"({"ID":3,"Name":"late"})"), ViewsDocument(R"({"ID":9,"Name":"late"})"));
  EXPECT_EQ(PollGroups() + PollViews(), "true oldtrue old");
  EXPECT_EQ(GroupName(3) + ViewName(9), "(none)(none)");
  EXPECT_EQ(log->Take(), Texts());
}

TEST_F(FirstLoadTest, ADownloadThatCannotBeReadStillCountsAsLoaded) {
  const struct {
    std::string document, error, code;
  } rows[] = {
      {Refused(100, 4, "cascade down"), "cascade down", "4"},
      {R"({"ResponseStatus":{"ErrorModule":0,"CascadingErrorInfo":"no code"}})", "no code", "-1"},
      {R"({"ResponseStatus":{"ErrorCode":-2,"Data":{"ViewList":{"View":[{"ID":5}]},"ViewGroupList":{"ViewGroup":[)"
       R"({"ID":1}]}}}})",
       "", "-2"},
      {"rubbish", "", "-1"},
  };
  const auto refusal = [](const std::string& function, const std::string& code) {
    return ErrorLine("[QorviViewPlugin::CViewGroupManager::" + function + "]" + function + "_Error:" + code);
  };
  for (const auto& [document, error, code] : rows) {
    ClearViewData();
    Download(document, document);
    log->Take();
    EXPECT_EQ(PollGroups(), Loaded(error));
    EXPECT_EQ(log->Take().back(), refusal("AnalysisViewGroupInitData", code));
    EXPECT_EQ(PollViews(), Loaded(error));
    EXPECT_EQ(log->Take().back(), refusal("AnalysisViewInitData", code));
    EXPECT_EQ(PollGroups() + PollViews() + Cached(), "true oldtrue old");
  }
  ClearViewData();
  Download("", "");
  EXPECT_EQ(PollGroups(), Loaded());
  EXPECT_EQ(PollViews(), Loaded());
}

TEST_F(FirstLoadTest, EveryPollBeforeTheLoadRegistersForChangesAndNoneAfterIt) {
  PollGroups();
  PollViews();
  ChangeGroups(R"({"ID":3,"Name":"early"})");
  ChangeViews(R"({"ID":9,"Name":"early"})");
  EXPECT_EQ(GroupName(3) + ViewName(9), "earlyearly");
  Downloads().SetViewsUpdateCallback(nullptr);
  PollViews();
  ChangeViews(R"({"ID":9,"Name":"again","Method":1})");
  EXPECT_EQ(ViewName(9), "again");
  Load();
  Downloads().SetViewsUpdateCallback(nullptr);
  Downloads().SetViewGroupsUpdateCallback(nullptr);
  PollGroups();
  PollViews();
  ChangeGroups(R"({"ID":3,"Method":2})");
  ChangeViews(R"({"ID":9,"Method":2})");
  EXPECT_EQ(GroupName(3) + ViewName(9), "earlyagain");
}

TEST_F(FirstLoadTest, ClearingForgetsObjectsObserversAndTheLoadItself) {
  Load();
  Watch();
  ClearViewData();
  EXPECT_EQ(GroupName(1) + ViewName(5), "(none)(none)");
  EXPECT_FALSE(IsViewGroupLoadDone() || IsViewLoadDone());
  // The callbacks stay: changes go into the empty cache.
  ChangeViews(R"({"ID":9,"Name":"new"},{"ID":9,"Name":"newer","Method":1})");
  EXPECT_EQ(ViewName(9), "newer");
  EXPECT_EQ(observer.Take(), Texts());
  ClearViewData();
  Downloads().SetViewsUpdateCallback(nullptr);
  Load();
  EXPECT_EQ(ViewName(5), "five");
  ChangeViews(R"({"ID":5,"Name":"changed","Method":1})");
  EXPECT_EQ(ViewName(5), "changed");
}

// --- Changes

TEST_F(FirstLoadTest, AViewAddedBetweenTheLoadsOfAClearedCacheIsListedTwiceWithoutNumbers) {
  Load();
  ClearViewData();
  Download(kGroups, ViewsDocument(R"({"ID":5,"Name":"five","ViewGroupID":1},{"ID":9,"Name":"nine","ViewGroupID":1})"));
  PollGroups();
  ChangeViews(R"({"ID":9,"Name":"nine","ViewGroupID":1,"Method":0})");
  PollViews();
  EXPECT_EQ(Members(1), "9'nine' 5'five' 9'nine' ");
}

TEST_F(FirstLoadTest, ChangesOfViewsReachCacheAndObservers) {
  Load();
  Watch();
  ChangeViews(
      R"({"ID":9,"Name":"new","ViewGroupID":1},{"ID":6,"Name":"SIX","Method":1},{"ID":5,"ViewGroupID":1,)"
      R"("Method":2},{"ID":77,"Method":2},{"ID":8,"Name":"ignored","Method":1},{"ID":9,"Name":"ignored","Method":3},)"
      R"({"ID":9,"Name":"ignored","Method":-1})");
  EXPECT_EQ(ViewName(9) + ViewName(6) + ViewName(5) + ViewName(8), "newSIX(none)(none)");
  EXPECT_EQ(observer.Take(), (Texts{"1 state 3 child '9' 16000 name '' reserved 1 info ''",
                                    "6 state 7 child '' 1001 name '' reserved 1 info ''",
                                    "1 state 4 child '5' 16000 name '' reserved 1 info ''"}));
  EXPECT_EQ(Members(1), "5'' 9'new' ") << "once";
  // An added view that is cached already is replaced; only the arrival is told.
  ChangeViews(R"({"ID":9,"Name":"newer"})");
  EXPECT_EQ(ViewName(9), "newer");
  EXPECT_EQ(observer.Take(), Texts{"4294967295 state 3 child '9' 16000 name '' reserved 1 info ''"});
}

TEST_F(FirstLoadTest, ChangesOfGroupsReachCacheAndObservers) {
  Load();
  Watch();
  ChangeGroups(R"({"ID":3,"Name":"three","ParentViewGroupID":2,"UserID":8},{"ID":1,"Name":"ONE","Method":1},)"
               R"({"ID":2,"Method":2},{"ID":4,"Method":2},{"ID":3,"Name":"ignored","Method":7})");
  // A renamed group keeps its members.
  EXPECT_EQ(Cached(), "group 1'ONE' in -1: 5'five' ; group 3'three' in 2: ; view 5'five'; view 6'six'; ");
  EXPECT_EQ(observer.Take(), (Texts{"2 state 3 child '3' 16001 name '' reserved 1 info '1'",
                                    "1 state 2 child '' 1001 name 'ONE' reserved 1 info ''",
                                    "1 state 4 child '2' 16001 name '' reserved 1 info ''"}));
  // An added group that is cached already is replaced, without its members; only the arrival is told.
  ChangeGroups(R"({"ID":1,"Name":"again"})");
  EXPECT_EQ(GroupName(1) + Members(1), "again");
  EXPECT_EQ(observer.Take(), Texts{"4294967295 state 3 child '1' 16001 name '' reserved 1 info '0'"});
}

TEST_F(FirstLoadTest, AModifiedOrDeletedViewLeavesASecondObjectAmongItsGroupsMembers) {
  Load();
  ChangeViews(R"({"ID":5,"Name":"FIVE","ViewGroupID":1,"Method":1})");
  EXPECT_EQ(Members(1), "5'FIVE' 5'FIVE' ");
  ChangeViews(R"({"ID":5,"Name":"gone","ViewGroupID":1,"Method":2})");
  EXPECT_EQ(ViewName(5) + Members(1), "(none)5'FIVE' 5'gone' ");
  // A deletion that names no group adds none.
  ChangeViews(R"({"ID":6,"Method":2})");
  // One that was moved stays in its old group's list.
  ChangeViews(R"({"ID":9,"ViewGroupID":1},{"ID":9,"Name":"moved","ViewGroupID":2,"Method":1})");
  EXPECT_EQ(Manager().GetViewByID(9)->GetViewGroupID(), 2u);
  EXPECT_EQ(Members(1) + Members(2), "5'FIVE' 5'gone' 9'moved' 9'moved' ");
}

TEST_F(FirstLoadTest, ChangesAreLoggedAsTheyCame) {
  Load();
  Download("rubbish", "rubbish");  // where nothing was missed nobody asks for the lists again
  log->Take();
  Downloads().NotifyViewsUpdate("{}");
  Downloads().NotifyViewsUpdate("{}");
  Downloads().NotifyViewGroupsUpdate("");
  const std::string views = InfoLine("[ViewDataResourceUpdate]ViewDataResourceUpdate Resource Origian Data : {}");
  const std::string error =
      ErrorLine("[QorviViewPlugin::CViewGroupManager::AnalysisViewInitData]AnalysisViewInitData_Error:-1");
  const std::string groups = "[ViewGroupDataResourceUpdate]ViewGroupDataResourceUpdate Resource Origian Data : ";
  EXPECT_EQ(log->Take(), (Texts{views, error, views, error, InfoLine(groups)}));
}

TEST_F(FirstLoadTest, AnObserverMayLoadAndClearDuringANotice) {
  Load();
  Observe(observer, kViewGroup, "1");
  observer.onNotice = [](const auto& param) {
    if (param.enum_state != 3) return;
    ClearViewData();
    EXPECT_EQ(PollGroups(), Loaded());
    EXPECT_EQ(PollViews(), Loaded());
  };
  ChangeViews(R"({"ID":9,"ViewGroupID":1},{"ID":6,"Name":"SIX","Method":1})");
  EXPECT_EQ(ViewName(9) + ViewName(5) + ViewName(6), "(none)fiveSIX");
}

}  // namespace
}  // namespace core_test
