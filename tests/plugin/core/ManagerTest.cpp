// SPDX-License-Identifier: Apache-2.0
// The cache: what its operations change, what they tell the observers, and what can be looked up.
#include "CoreFixture.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

class ManagerTest : public CoreTest {
 protected:
  ManagerTest() {
    for (const char* id : {"1", "2", "3", "9", "4294967295"}) {
      Observe(ofGroups, kViewGroup, id);
      Observe(ofViews, kView, id);
    }
  }
  // Notices since the last call; those of the group table first.
  Texts Notices() {
    Texts notices = ofGroups.Take();
    for (std::string& notice : ofViews.Take()) notices.push_back(std::move(notice));
    return notices;
  }
  static Ids GroupIds(unsigned int parentId) {
    std::vector<std::shared_ptr<CViewGroup>> groups = {nullptr};
    EXPECT_TRUE(Manager().GetViewGroups(groups, parentId));
    Ids ids;
    for (const auto& group : groups) ids.push_back(group->GetID());
    return ids;
  }

  NotingObserver ofGroups{"group "};
  NotingObserver ofViews{"view "};
};

TEST_F(ManagerTest, AnInsertedViewJoinsItsGroupAndTheGroupIsTold) {
  CacheGroup(Group(1));
  Notices();
  EXPECT_TRUE(Manager().InsertViewToCache(View(9, 1, "a"), false));
  EXPECT_EQ(ViewName(9), "a");
  EXPECT_EQ(Members(1), Ids{9});
  EXPECT_EQ(Notices(), Texts{"group 1 state 3 child '9' 16000 name '' reserved 1 info ''"});
  EXPECT_TRUE(Manager().InsertViewToCache(View(4), false));
  EXPECT_EQ(Notices(), Texts{"group 4294967295 state 3 child '4' 16000 name '' reserved 1 info ''"});
  EXPECT_TRUE(Manager().InsertViewToCache(View(5, 1), true));
  EXPECT_EQ(Notices(), Texts());
}

TEST_F(ManagerTest, AnUpdatedViewStaysAMemberOfItsOldGroup) {
  CacheGroup(Group(1));
  CacheGroup(Group(2));
  CacheView(View(9, 1, "old"));
  Notices();
  EXPECT_TRUE(Manager().UpdateViewInCache(View(9, 2, "new")));
  EXPECT_EQ(Manager().GetViewByID(9)->GetViewGroupID(), 2u);
  EXPECT_EQ(MemberNames(1), Texts{"new"});
  EXPECT_EQ(Members(2), Ids());
  EXPECT_EQ(Notices(), Texts{"view 9 state 7 child '' 1001 name '' reserved 1 info ''"});
  EXPECT_FALSE(Manager().UpdateViewInCache(View(8)));
  EXPECT_EQ(ViewName(8), "(none)");
}

TEST_F(ManagerTest, AnInsertedGroupIsToldToItsParentAndTakesInNoViews) {
  CacheView(View(9, 3));
  ViewGroupInfo group = Group(3, 2, "a");
  group.enumViewType = ViewTypeShared;
  EXPECT_TRUE(Manager().InsertViewGroupToCache(group));
  EXPECT_EQ(Members(3), Ids());
  EXPECT_EQ(Notices(), Texts{"group 2 state 3 child '3' 16001 name '' reserved 1 info '2'"});
  group.idParent = kNoId;
  group.enumViewType = -1;
  group.strName = "b";
  EXPECT_TRUE(Manager().InsertViewGroupToCache(group));
  EXPECT_EQ(GroupName(3), "a");
  EXPECT_EQ(Notices(), Texts{"group 4294967295 state 3 child '3' 16001 name '' reserved 1 info '-1'"});
}

TEST_F(ManagerTest, ARemovedGroupLeavesItsViewsAndChildren) {
  CacheGroup(Group(1));
  CacheGroup(Group(2, 1));
  CacheView(View(9, 1));
  Notices();
  EXPECT_TRUE(Manager().RemoveViewGroupFromCache(1, false));
  EXPECT_EQ(GroupName(1), "(none)");
  EXPECT_NE(Manager().GetViewByID(9), nullptr);
  EXPECT_EQ(GroupIds(1), Ids{2});
  EXPECT_EQ(Notices(), Texts{"group 4294967295 state 4 child '1' 16001 name '' reserved 1 info ''"});
  EXPECT_TRUE(Manager().RemoveViewGroupFromCache(1, false));
  EXPECT_TRUE(Manager().RemoveViewGroupFromCache(2, true));
  EXPECT_EQ(Notices(), Texts());
}

TEST_F(ManagerTest, ListingsComeInIdOrder) {
  for (unsigned int id : {7u, 3u, 5u}) CacheGroup(Group(id, id == 5 ? 3 : kNoId));
  for (unsigned int id : {7u, 3u, 5u}) CacheView(View(id, id == 5 ? 3 : kNoId));
  EXPECT_EQ(GroupIds(kNoId), (Ids{3, 7}));
  EXPECT_EQ(GroupIds(3), Ids{5});
  EXPECT_EQ(GroupIds(8), Ids());
  std::vector<std::shared_ptr<CView>> views = {Manager().GetViewByID(5)};
  Manager().GetViewsWithoutGroup(views);
  Ids ids;
  for (const auto& view : views) ids.push_back(view->GetID());
  EXPECT_EQ(ids, (Ids{5, 3, 7}));  // appended
}

TEST_F(ManagerTest, ClearingForgetsChecksAndReadinessSilently) {
  CacheView(View(9));
  PendingChecks checks{{1001, {9}}};
  Manager().SetPendingChecks(checks);
  Manager().SetResourceReady(true);
  Notices();
  Manager().ClearViewData();
  Manager().TakePendingChecks(checks);
  EXPECT_TRUE(checks.empty() && !Manager().IsResourceReady());
  EXPECT_EQ(Notices(), Texts());
}

TEST_F(ManagerTest, MembersAreKeptOnceEachInTheOrderOfTheirLastArrival) {
  CViewGroup group(Group(1));
  std::vector<std::shared_ptr<CView>> out = {nullptr};
  EXPECT_TRUE(group.GetMemberViews(out));
  EXPECT_EQ(out.size(), 1u);  // an empty group leaves the output as it is
  EXPECT_FALSE(group.AddMemberView(nullptr));
  for (unsigned int id : {1u, 2u, 3u, 1u}) EXPECT_TRUE(group.AddMemberView(std::make_shared<CView>(View(id))));
  group.AppendMemberView(std::make_shared<CView>(View(3, kNoId, "again")));
  const auto ids = [&] {
    std::vector<std::shared_ptr<CView>> views;
    group.GetMemberViews(views);
    Ids result;
    for (const auto& view : views) result.push_back(view->GetID());
    return result;
  };
  EXPECT_EQ(ids(), (Ids{2, 3, 1, 3}));
  EXPECT_EQ(group.FindMemberView(3)->GetName(), "");
  const CViewGroup copy = group;
  EXPECT_TRUE(group.RemoveMemberView(3));
  EXPECT_EQ(ids(), (Ids{2, 1, 3}));
  EXPECT_FALSE(group.RemoveMemberView(8));
  EXPECT_TRUE(group.ClearMemberViews());
  EXPECT_EQ(ids(), Ids());
  EXPECT_EQ(copy.FindMemberView(3)->GetName(), "");  // the copy keeps its own list
}

TEST_F(ManagerTest, RelatedResourcesAreNumberedAsTheServerDoes) {
  EXPECT_EQ(Manager().ServerToRelateType(1027), 8);
  EXPECT_EQ(Manager().RelateTypeToServer(static_cast<RelateResourceType>(8)), 1027);
}

}  // namespace
}  // namespace core_test
