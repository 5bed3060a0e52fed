// SPDX-License-Identifier: Apache-2.0
// What the manager makes of downloaded data and change documents.
#include "CoreFixture.h"
#include "ModelText.h"
#include "ResourceStore/Element.h"

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

struct EnvelopeRow {
  const char* document;
  const char* cascading;
  int loggedCode;
};

constexpr EnvelopeRow kUnusable[] = {
    {R"({"ResponseStatus":{"ErrorModule":100,"ErrorCode":4,"CascadingErrorInfo":"down"}})", "down", 4},
    {R"({"ResponseStatus":{"ErrorModule":0,"CascadingErrorInfo":"no code"}})", "no code", -1},
    {R"({"ResponseStatus":{"ErrorCode":"x"}})", "", -1},
    {R"({"ResponseStatus":{"ErrorCode":-2,"Data":{"ViewList":{"View":[{}]},"ViewGroupList":{"ViewGroup":[{}]}}}})", "",
     -2},
    {R"({})", "", -1},
    {R"([])", "", -1},
    {R"(not JSON)", "", -1},
    {R"({"ResponseStatus":{"ErrorCode":0)", "", -1},
};

TEST_F(IngestionTest, AnUnusableEnvelopeIsLoggedAndNotRead) {
  const auto line = [](const std::string& function, int code) {
    return ErrorLine("[QorviViewPlugin::CViewGroupManager::" + function + "]" + function +
                     "_Error:" + std::to_string(code));
  };
  for (const EnvelopeRow& row : kUnusable) {
    for (const bool areViews : {false, true}) {
      error = "before";
      EXPECT_FALSE(areViews ? ReadViews(row.document) : ReadGroups(row.document)) << row.document;
      EXPECT_EQ(error, row.cascading) << row.document;
      EXPECT_EQ(log->Take(),
                Texts{line(areViews ? "AnalysisViewInitData" : "AnalysisViewGroupInitData", row.loggedCode)});
    }
  }
  EXPECT_TRUE(groups.empty() && groupList.empty() && views.empty() && viewList.empty());
}

TEST_F(IngestionTest, AnEmptyTextIsSuccessForGroupsAndAnErrorForViews) {
  EXPECT_TRUE(ReadGroups(""));
  EXPECT_EQ(error, "before");
  EXPECT_EQ(log->Take(), std::vector<LogLine>());
  EXPECT_FALSE(ReadViews(""));
  EXPECT_EQ(error, "");
  EXPECT_EQ(log->Take().size(), 1u);
}

TEST_F(IngestionTest, RecordsComeInDocumentOrderAndTheFirstOfAnIdIsKept) {
  EXPECT_TRUE(
      ReadGroups(GroupsDocument(R"({"ID":3,"Name":"a","Method":2},{"ID":1,"Name":"b"},{"ID":3,"Name":"c"},{})")));
  EXPECT_TRUE(ReadViews(ViewsDocument(R"({"ID":7,"Name":"x"},{"ID":7,"Name":"y","Method":1},{})")));
  EXPECT_EQ(error, "");
  std::string text;
  for (const auto& group : groupList) text += group.strName + std::to_string(group.nMethod) + " ";
  for (const auto& view : viewList) text += view.strName + std::to_string(view.nMethod) + " ";
  EXPECT_EQ(text, "a2 b0 c0 0 x0 y1 0 ");
  ASSERT_EQ(groups.size(), 3u);
  EXPECT_EQ(groups.at(3)->Info()->strName, "a");
  EXPECT_TRUE(groups.contains(kNoId));
  ASSERT_EQ(views.size(), 2u);
  EXPECT_EQ(views.at(7)->GetName(), "x");
  EXPECT_EQ(log->Take(), std::vector<LogLine>());
}

TEST_F(IngestionTest, AListThatIsMissingOrNoListIsReadAsOneOrNoElement) {
  for (const char* data : {"{}", "null", R"({"ViewList":{}})", R"({"ViewList":{"View":null}})", R"({"ViewList":[]})"}) {
    EXPECT_TRUE(ReadViews(Accepted(data))) << data;
    EXPECT_TRUE(viewList.empty()) << data;
  }
  EXPECT_TRUE(ReadViews(Accepted(R"({"ViewList":{"View":{"ID":5}}})")));
  EXPECT_TRUE(ReadGroups(Accepted(R"({"ViewGroupList":{"ViewGroup":{"ID":6}}})")));
  EXPECT_TRUE(views.contains(5));
  EXPECT_TRUE(groups.contains(6));
}

TEST_F(IngestionTest, ViewsJoinTheCachedGroupsAlsoFromAScratchTable) {
  CacheGroup(Group(1));
  EXPECT_TRUE(ReadViews(ViewsDocument(R"({"ID":9,"ViewGroupID":1},{"ID":4,"ViewGroupID":1},{"ID":9,"ViewGroupID":1},)"
                                      R"({"ID":5,"ViewGroupID":2})")));
  // Appended without a look for duplicates, the object of the dropped entry included.
  EXPECT_EQ(Members(1), (std::vector<unsigned int>{9, 4, 9}));
  EXPECT_EQ(Manager().GetViewByID(9), nullptr);
}

TEST_F(IngestionTest, FirstLoadsGoIntoTheCacheAndLeaveWhatIsThere) {
  CacheGroup(Group(1, kNoId, "cached"));
  CacheView(View(9, kNoId, "cached"));
  Manager().LoadViewGroups(GroupsDocument(R"({"ID":1,"Name":"loaded"},{"ID":2,"Name":"loaded"})"), error);
  Manager().LoadViews(ViewsDocument(R"({"ID":9,"Name":"loaded"},{"ID":4,"Name":"loaded","ViewGroupID":2})"), error);
  EXPECT_EQ(GroupName(1) + GroupName(2), "cachedloaded");
  EXPECT_EQ(ViewName(9) + ViewName(4), "cachedloaded");
  // The member is the cached object itself.
  EXPECT_EQ(Manager().GetViewGroupByID(2)->FindMemberView(4), Manager().GetViewByID(4));
}

// --- The check for elements that are not known yet

constexpr char kModifiedView[] =
    R"({"ID":9,"Method":1,"PlanPages":[{"PlanViewItem":[{"ResourceType":1001,"ResourceID":1},)"
    R"({"ResourceType":1002,"ResourceID":2},{"ResourceType":1005,"ResourceID":5}]},{"PlanViewItem":[)"
    R"({"ResourceType":1006,"ResourceID":6},{"ResourceType":1001,"ResourceID":11},{"ResourceType":1027,"ResourceID":7}]}]})";

class PendingChecksTest : public IngestionTest {
 protected:
  PendingChecksTest() {
    CacheView(View(9));
    PutElements({{1, 1001}, {2, 1002}, {5, 1005}, {6, 1006}, {11, 1001}});
  }
  ~PendingChecksTest() override { Vant::Base::CSingleton<ResourceStore::CElementManager>::Instance().Clear(); }

  static void PutElements(std::vector<std::pair<unsigned int, int>> idsAndTypes) {
    auto& elements = Vant::Base::CSingleton<ResourceStore::CElementManager>::Instance();
    elements.Clear();
    std::vector<std::shared_ptr<ResourceStore::CElement>> made;
    for (auto [id, type] : idsAndTypes) made.push_back(std::make_shared<ResourceStore::CElement>(id, type, "", 1));
    elements.PutElements(made);
  }

  void Watch(std::initializer_list<int> types) {
    for (int type : types) Manager().GetViewByID(9)->SetResourceFlag(type, true);
  }

  static PendingChecks Taken() {
    PendingChecks pending;
    Manager().TakePendingChecks(pending);
    return pending;
  }
};

TEST_F(PendingChecksTest, NoteAWatchedTypeOfWhichTheNewRecordShowsAnUnknownElement) {
  Watch({1001, 1002, 1005, 1006});
  EXPECT_TRUE(ReadViews(ViewsDocument(kModifiedView)));
  EXPECT_EQ(Taken(), PendingChecks());
  PutElements({{2, 1002}, {6, 1006}});
  EXPECT_TRUE(ReadViews(ViewsDocument(kModifiedView)));
  EXPECT_EQ(Taken(), (PendingChecks{{1001, {9}}, {1005, {9}}}));
  EXPECT_EQ(Taken(), PendingChecks());
}

TEST_F(PendingChecksTest, FireForWatchedTypesOfModifiedViewsThatAreCachedAndLeaveEarlierOnesOtherwise) {
  PendingChecks earlier{{1001, {3}}};
  Manager().SetPendingChecks(earlier);
  EXPECT_TRUE(earlier.empty());
  PutElements({});
  EXPECT_TRUE(ReadViews(ViewsDocument(kModifiedView)));
  Watch({1002, 1006});
  EXPECT_TRUE(
      ReadViews(ViewsDocument(R"({"ID":9,"PlanPages":[{"PlanViewItem":[{"ResourceType":1002}]}]},)"
                              R"({"ID":8,"Method":1,"PlanPages":[{"PlanViewItem":[{"ResourceType":1002}]}]})")));
  EXPECT_EQ(Taken(), (PendingChecks{{1001, {3}}}));
  EXPECT_TRUE(ReadViews(ViewsDocument(kModifiedView)));
  EXPECT_EQ(Taken(), (PendingChecks{{1002, {9}}, {1006, {9}}}));
}

TEST_F(PendingChecksTest, AreForgottenWithReadinessByClearing) {
  PendingChecks checks{{1001, {9}}};
  Manager().SetPendingChecks(checks);
  Manager().SetResourceReady(true);
  Manager().ClearViewData();
  EXPECT_EQ(Taken(), PendingChecks());
  EXPECT_FALSE(Manager().IsResourceReady());
}

TEST_F(PendingChecksTest, AViewWhoseOwnElementsAreGoneNoLongerCounts) {
  ViewInfo view = View(9);
  view.vcPages = {{"", 1, {CameraGridStruct()}}};
  view.vcPages[0].vcWindows[0].id_element_ = 1;
  Manager().UpdateViewInCache(view);
  const auto cached = Manager().GetViewByID(9);
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
