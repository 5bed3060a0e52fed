// SPDX-License-Identifier: Apache-2.0
// What the manager makes of downloaded data and change documents.
#include "CoreFixture.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

class IngestionTest : public CoreTest {
 protected:
  bool ReadGroups(const std::string& data) {
    return Manager().AnalysisViewGroupInitData(data, error, groups, groupList);
  }
  bool ReadViews(const std::string& data) { return Manager().AnalysisViewInitData(data, error, views, viewList); }

  std::string error = "before";
  ViewGroupTable groups;
  std::list<ViewGroupInfo> groupList;
  ViewTable views;
  std::list<ViewInfo> viewList;
};

TEST_F(IngestionTest, AnEmptyTextIsSuccessForGroupsAndAnErrorForViews) {
  EXPECT_TRUE(ReadGroups(""));
  EXPECT_EQ(error, "before");
  EXPECT_EQ(log->Take(), Texts());
  EXPECT_FALSE(ReadViews(""));
  EXPECT_EQ(error, "");
  EXPECT_EQ(log->Take().size(), 1u);
}

TEST_F(IngestionTest, RecordsComeInDocumentOrderAndTheFirstOfAnIdIsKept) {
  EXPECT_TRUE(
      ReadGroups(GroupsDocument(R"({"ID":3,"Name":"a","Method":2},{"ID":1,"Name":"b"},{"ID":3,"Name":"c"},{})")));
  EXPECT_TRUE(ReadViews(ViewsDocument(R"({"ID":7,"Name":"x"},{"ID":7,"Name":"y","Method":1},{})")));
  std::string text;
  for (const auto& group : groupList) text += group.strName + std::to_string(group.nMethod) + " ";
  for (const auto& view : viewList) text += view.strName + std::to_string(view.nMethod) + " ";
  EXPECT_EQ(text, "a2 b0 c0 0 x0 y1 0 ");
  EXPECT_EQ(groups.at(3)->Info()->strName + views.at(7)->GetName(), "ax");
  EXPECT_TRUE(groups.contains(kNoId) && views.contains(kNoId));
  EXPECT_EQ(ViewName(7), "(none)") << "a scratch table";
  EXPECT_EQ(log->Take(), Texts());
}

TEST_F(IngestionTest, FirstLoadsGoIntoTheCacheAndLeaveWhatIsThere) {
  CacheGroup(Group(1, kNoId, "cached"));
  CacheView(View(9, kNoId, "cached"));
  Manager().LoadViewGroups(GroupsDocument(R"({"ID":1,"Name":"loaded"},{"ID":2,"Name":"loaded"})"), error);
  Manager().LoadViews(ViewsDocument(R"({"ID":9,"Name":"loaded"},{"ID":4,"Name":"loaded","ViewGroupID":2})"), error);
  EXPECT_EQ(GroupName(1) + GroupName(2) + ViewName(9) + ViewName(4), "cachedloadedcachedloaded");
  // The member is the cached object itself.
  EXPECT_EQ(Manager().GetViewGroupByID(2)->FindMemberView(4), Manager().GetViewByID(4));
}

// --- The check for elements that are not known yet

class PendingChecksTest : public IngestionTest {
 protected:
  PendingChecksTest() { CacheView(View(9)); }

  static void PutElements(std::vector<std::pair<unsigned int, int>> idsAndTypes) {
    Elements().Clear();
    std::vector<std::shared_ptr<ResourceStore::CElement>> made;
    for (auto [id, type] : idsAndTypes) made.push_back(std::make_shared<ResourceStore::CElement>(id, type, "", 1));
    Elements().PutElements(made);
  }
  static void Watch(std::initializer_list<int> types) {
    for (int type : types) Manager().GetViewByID(9)->SetResourceFlag(type, true);
  }
  // What a change document leaves there.
  PendingChecks After(const std::string& elements) {
    EXPECT_TRUE(ReadViews(ViewsDocument(elements)));
    PendingChecks pending;
    Manager().TakePendingChecks(pending);
    return pending;
  }
};

TEST_F(PendingChecksTest, NoteAWatchedTypeOfWhichTheNewRecordOfACachedViewShowsAnUnknownElement) {
  constexpr char kModified[] =
      R"({"ID":9,"Method":1,"PlanPages":[{"PlanViewItem":[{"ResourceType":1001,"ResourceID":1},)"
      R"({"ResourceType":1002,"ResourceID":2},{"ResourceType":1005,"ResourceID":5}]},{"PlanViewItem":[)"
      R"({"ResourceType":1006,"ResourceID":6},{"ResourceType":1001,"ResourceID":11},)"
      R"({"ResourceType":1027,"ResourceID":7}]}]})";
  const std::string shown = R"(,"PlanPages":[{"PlanViewItem":[{"ResourceType":1002}]}]})";
  EXPECT_EQ(After(kModified), PendingChecks());
  Watch({1002, 1006});
  EXPECT_EQ(After(kModified), (PendingChecks{{1002, {9}}, {1006, {9}}}));
  Watch({1001, 1005});
  PutElements({{2, 1002}, {6, 1006}});
  EXPECT_EQ(After(kModified), (PendingChecks{{1001, {9}}, {1005, {9}}}));
  PutElements({{1, 1001}, {2, 1002}, {5, 1005}, {6, 1006}, {11, 1001}});
  EXPECT_EQ(After(kModified), PendingChecks());
  // What notes nothing leaves what was noted before: here an added view, and one that is not cached.
  PendingChecks earlier{{1001, {3}}};
  Manager().SetPendingChecks(earlier);
  EXPECT_TRUE(earlier.empty());
  EXPECT_EQ(After(R"({"ID":9)" + shown + R"(,{"ID":8,"Method":1)" + shown), (PendingChecks{{1001, {3}}}));
}

TEST_F(PendingChecksTest, AreForgottenWithReadinessByClearing) {
  PendingChecks checks{{1001, {9}}};
  Manager().SetPendingChecks(checks);
  Manager().SetResourceReady(true);
  Manager().ClearViewData();
  EXPECT_EQ(After(""), PendingChecks());
  EXPECT_FALSE(Manager().IsResourceReady());
}

TEST_F(PendingChecksTest, AViewWhoseOwnElementsAreGoneNoLongerCounts) {
  ViewInfo view = View(9);
  view.vcPages = {{"", 1, {CameraGridStruct()}}};
  view.vcPages[0].vcWindows[0].id_element_ = 1;
  Manager().UpdateViewInCache(view);
  const auto cached = Manager().GetViewByID(9);
  PutElements({{1, 1001}});
  EXPECT_FALSE(cached->CheckResourceExist(1001));
  cached->SetResourceFlag(1002, false);
  Watch({1001, 1027});
  EXPECT_TRUE(cached->CheckResourceExist(1001) && !cached->CheckResourceExist(1002));
  EXPECT_TRUE(cached->CheckResourceExist(1027)) << "of the other types nothing is looked up";
  PutElements({{1, 1002}});
  EXPECT_FALSE(cached->CheckResourceExist(1001));
}

}  // namespace
}  // namespace core_test
