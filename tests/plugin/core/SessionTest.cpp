// SPDX-License-Identifier: Apache-2.0
// Every server session against every kind of reply: what is sent, answered, kept in the error record, and logged.
#include <stdexcept>

#include "CoreFixture.h"
#include "ModelText.h"
#include "QorviViewPlugin/ViewDataManager/CmsViewGroupSession.h"
#include "QorviViewPlugin/ViewDataManager/CmsViewSession.h"
#include "QorviViewPlugin/ViewDataManager/ViewDocument.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

// How a session reads its reply.
enum class Scheme { Status, AddView, AddGroup, List, Config };

struct Session {
  const char* name;
  Scheme scheme;
  // Runs it with the record that its error starts as, and leaves there what it became.
  std::function<bool(ErrorCode&)> run;
  SentRequest sent;
  const char* function;
  // What stands between the function's name and "success" or "failed" in the log.
  const char* before;
  const char* beforeTransportFailure;
  // Text of the line before the request; null for none.
  const char* announced = nullptr;
};

template <class Cms, class... Arguments>
auto Run(bool (Cms::*operation)(Arguments...), std::decay_t<Arguments>... arguments) {
  return [=](ErrorCode& error) {
    Cms session;
    session.m_error = error;
    const bool result = (session.*operation)(arguments...);
    error = session.m_error;
    return result;
  };
}

const ViewInfo kSentView = View(17, 3, "v");
const ViewGroupInfo kSentGroup = Group(4, 2, "g");
const ViewMoveRequest kMove{2, 8, {3, 7, 12}};
constexpr char kGroupBody[] =
    R"({"ViewGroup":{"ID":4,"Name":"g","ParentViewGroupID":2,"UserID":-1,"IsSharedView":-1,"SequenceIndex":-1}})";

const std::vector<Session>& Sessions() {
  const std::string root = "/NXAPI/Vantorel/Platform/";
  const std::string views = root + "V0/Views";
  const std::string groups = root + "V0/ViewGroups";
  const std::string config = root + "V1/View/Default/Config";
  static const std::vector<Session> sessions = {
      {"GetCmsViewList",
       Scheme::List,
       Run(&CmsViewList::GetCmsViewList, 5),
       {"GET", views, "", R"({"ViewsRequest":{"ClientResourceVersion":5}})", 30000},
       "QorviViewPlugin::CmsViewList::GetCmsViewList",
       "[CmsViewList::GetCmsViewList] ",
       "[CmsViewList::GetCmsViewList] "},
      {"AddCmsView",
       Scheme::AddView,
       Run(&CmsAddView::AddCmsView, kSentView),
       {"POST", views, WriteViewDocument(kSentView), "", 0},
       "QorviViewPlugin::CmsAddView::AddCmsView",
       "[CmsAddView::AddCmsView] ",
       "[CmsAddView::AddCmsView] "},
      {"ModifyCmsView",
       Scheme::Status,
       Run(&CmsModifyView::ModifyCmsView, kSentView),
       {"PUT", views + "/17", WriteViewDocument(kSentView), "", 0},
       "QorviViewPlugin::CmsModifyView::ModifyCmsView",
       "[CmsModifyView::ModifyCmsView] ",
       ""},
      {"DeleteCmsView",
       Scheme::Status,
       Run(&CmsDeleteView::DeleteCmsView, 4294967295u),
       {"DELETE", views + "/4294967295", "", "", 0},
       "QorviViewPlugin::CmsDeleteView::DeleteCmsView",
       "[CmsDeleteView::DeleteCmsView] ",
       "[CmsDeleteView::DeleteCmsView] "},
      {"OrderCmsView",
       Scheme::Status,
       Run(&CmsOrderView::OrderCmsView, kMove),
       {"PUT", views + "/Move", R"({"ViewMoveRequest":{"Type":1,"ViewGroupID":2,"UserID":8,"IDs":"3,7,12"}})", "", 0},
       "QorviViewPlugin::CmsOrderView::OrderCmsView",
       "[CmsOrderView::OrderCmsView] ",
       "[CmsOrderView::OrderCmsView] "},
      {"GetCmsViewGroupList",
       Scheme::List,
       Run(&CmsViewGroupList::GetCmsViewGroupList, 5),
       {"GET", groups, "", R"({"ViewGroupsRequest":{"ClientResourceVersion":5}})", 30000},
       "QorviViewPlugin::CmsViewGroupList::GetCmsViewGroupList",
       "",
       ""},
      {"AddCmsViewGroup",
       Scheme::AddGroup,
       Run(&CmsAddViewGroup::AddCmsViewGroup, kSentGroup),
       {"POST", groups, kGroupBody, "", 0},
       "QorviViewPlugin::CmsAddViewGroup::AddCmsViewGroup",
       "[CmsAddViewGroup::AddCmsViewGroup] ",
       "[CmsAddViewGroup::AddCmsViewGroup] ",
       "add plan group data: "},
      {"ModifyCmsViewGroup",
       Scheme::Status,
       Run(&CmsModifyViewGroup::ModifyCmsViewGroup, kSentGroup),
       {"PUT", groups + "/4", kGroupBody, "", 0},
       "QorviViewPlugin::CmsModifyViewGroup::ModifyCmsViewGroup",
       "[CmsModifyViewGroup::ModifyCmsViewGroup] ",
       "[CmsModifyViewGroup::ModifyCmsViewGroup] ",
       "update plan group data: "},
      {"DeleteCmsViewGroup",
       Scheme::Status,
       Run(&CmsDeleteViewGroup::DeleteCmsViewGroup, 4u),
       {"DELETE", groups + "/4", "", "", 0},
       "QorviViewPlugin::CmsDeleteViewGroup::DeleteCmsViewGroup",
       "[CmsDeleteViewGroup::DeleteCmsViewGroup] ",
       " "},
      {"OrderCmsViewGroup",
       Scheme::Status,
       Run(&CmsOrderViewGroup::OrderCmsViewGroup, kMove),
       {"PUT", groups + "/Move", R"({"ViewMoveRequest":{"Type":2,"ViewGroupID":2,"UserID":8,"IDs":","}})", "", 0},
       "QorviViewPlugin::CmsOrderViewGroup::OrderCmsViewGroup",
       "[CmsOrderViewGroup::OrderCmsViewGroup] ",
       "[CmsOrderViewGroup::OrderCmsViewGroup] "},
      {"GetDefualtViewConfig",
       Scheme::Config,
       [](ErrorCode& error) {
         uint32_t id = 0;
         uint32_t type = 0;
         return CmsViewConfig().GetDefualtViewConfig(id, type, error);
       },
       {"GET", config, "", "", 0},
       "QorviViewPlugin::CmsViewConfig::GetDefualtViewConfig",
       "[CmsViewConfig::GetDefualtViewConfig] ",
       "[CmsViewConfig::GetDefualtViewConfig] "},
      {"SetDefualtViewConfig",
       Scheme::Config,
       [](ErrorCode& error) { return CmsViewConfig().SetDefualtViewConfig(17, 1, error); },
       {"PUT", config, R"({"ViewRequest":{"Type":1,"ID":17}})", "", 0},
       "QorviViewPlugin::CmsViewConfig::SetDefualtViewConfig",
       "[CmsViewConfig::SetDefualtViewConfig] ",
       "[CmsViewConfig::SetDefualtViewConfig] "},
  };
  return sessions;
}

class SessionTest : public CoreTest, public testing::WithParamInterface<Session> {
 protected:
  // Runs the session with the server as it is now.
  void Expect(bool expectedResult, const std::string& expectedError, const LogLine& expectedLine) {
    ErrorCode error(7, 8, 9, "before");
    EXPECT_EQ(GetParam().run(error), expectedResult);
    EXPECT_EQ(Text(error), expectedError);
    EXPECT_EQ(server.Take(), std::vector{GetParam().sent});
    std::vector<LogLine> lines;
    if (GetParam().announced) lines.push_back(InfoLine(Name() + GetParam().announced + GetParam().sent.body));
    lines.push_back(expectedLine);
    EXPECT_EQ(log->Take(), lines);
  }
  std::string Name() const { return std::string("[") + GetParam().function + "]"; }
  LogLine Succeeded() const { return InfoLine(Name() + GetParam().before + "success"); }
  LogLine Failed(const char* before, int mainError, int subError) const {
    return ErrorLine(Name() + before + "failed, [MainError: " + std::to_string(mainError) +
                     "],[SubError: " + std::to_string(subError) + "]");
  }
  LogLine EmptyReply() const { return ErrorLine(Name() + GetParam().before + "failed, strRawData empty"); }
  // The cascading text of a reply reaches the record of some sessions only.
  std::string Cascading(const std::string& text) const {
    const bool isRead = GetParam().scheme == Scheme::Status || GetParam().scheme == Scheme::List;
    return isRead ? text : "before";
  }
};

TEST_P(SessionTest, SucceedsWhenTheSubErrorIsZero) {
  server.Answer(R"({"ResponseStatus":{"ErrorModule":3,"ErrorCode":0,"CascadingErrorInfo":"c"}})");
  Expect(true, "3/0/1/" + Cascading("c"), Succeeded());
  server.Answer(R"({"ResponseStatus":{"ErrorCode":0}})");
  Expect(true, "-1/0/1/" + Cascading(""), Succeeded());
}

TEST_P(SessionTest, PassesOnTheTransportsRecordWhenNoReplyArrives) {
  server.BreakDown(ErrorCode(4, 503, 6, "wire"));
  Expect(false, "4/503/6/wire", Failed(GetParam().beforeTransportFailure, 4, 503));
}

TEST_P(SessionTest, FailsWithTheStatusOfARefusal) {
  server.Answer(Refused(100, 4, "c"));
  Expect(false, "100/4/1/" + Cascading("c"), Failed(GetParam().before, 100, 4));
}

TEST_P(SessionTest, FailsWithMinusOneWhenTheReplyHasNoStatus) {
  for (const char* body : {"{}", "[]", "null", "not JSON", R"({"ResponseStatus":[]})"}) {
    SCOPED_TRACE(body);
    server.Answer(body);
    Expect(false, "-1/-1/1/" + Cascading(""), Failed(GetParam().before, -1, -1));
  }
}

TEST_P(SessionTest, TakesAnEmptyReplyInTheWayOfItsScheme) {
  server.Answer("");
  switch (GetParam().scheme) {
    case Scheme::Status:
      return Expect(false, "-1/-1/1/", Failed(GetParam().before, -1, -1));
    case Scheme::AddView:
      return Expect(false, "7/8/1/before", EmptyReply());
    case Scheme::AddGroup:
    case Scheme::List:
      return Expect(false, "7/8/9/before", EmptyReply());
    case Scheme::Config:
      return Expect(true, "7/8/9/before", EmptyReply());
  }
}

INSTANTIATE_TEST_SUITE_P(Sessions, SessionTest, testing::ValuesIn(Sessions()),
                         [](const auto& row) { return std::string(row.param.name); });

class SessionDataTest : public CoreTest {};

TEST_F(SessionDataTest, ANewIdIsTakenFromAnAcceptedReplyOnly) {
  const struct {
    std::string body;
    uint32_t viewId;
    uint32_t groupId;
  } rows[] = {
      {Accepted(R"({"View":{"ID":41},"ViewGroup":{"ID":"42"}})"), 41, 42},
      {Accepted(R"({"View":{"ID":4294967294},"ViewGroup":{}})"), 4294967294u, kNoId},
      {Accepted(R"({"View":[],"ViewGroup":{"ID":true}})"), kNoId, kNoId},
      {R"({"ResponseStatus":{"ErrorCode":5,"Data":{"View":{"ID":41},"ViewGroup":{"ID":42}}}})", 7, 7},
      {"", 7, 7},
  };
  for (const auto& row : rows) {
    server.Answer(row.body);
    CmsAddView view;
    EXPECT_EQ(view.m_idNew, kNoId);
    view.m_idNew = 7;
    view.AddCmsView(kSentView);
    EXPECT_EQ(view.m_idNew, row.viewId) << row.body;
    CmsAddViewGroup group;
    EXPECT_EQ(group.m_idNew, kNoId);
    group.m_idNew = 7;
    group.AddCmsViewGroup(kSentGroup);
    EXPECT_EQ(group.m_idNew, row.groupId) << row.body;
  }
}

TEST_F(SessionDataTest, ListsAreReadInReplyOrder) {
  server.Answer(Accepted(R"({"ViewList":{"View":[{"ID":2,"UserID":3,"SharedUserID":7,"PlanPages":[{"PlanViewItem":[{)"
                         R"("ResourceType":7000}]},{}]},{"ID":1,"Method":2},{"ID":2}]},"ViewGroupList":{"ViewGroup":[)"
                         R"({"ID":5,"UserID":3,"IsSharedView":1,"Method":1},{"ID":4},{"ID":5,"Method":2}]}})"));
  CmsViewList views;
  EXPECT_TRUE(views.GetCmsViewList(0));
  ASSERT_EQ(views.m_vcViews.size(), 3u);
  EXPECT_EQ(Difference(ViewInfo(), views.m_vcViews[0]),
            "idView=2 type=1 user=3 auto=-1 time=-1 pages=[-1 '' windows 1][-1 '' windows 0]");
  EXPECT_EQ(views.m_vcViews[0].vcPages[0].vcWindows[0].enum_resource_type_, 7000);
  EXPECT_EQ(Difference(ViewInfo(), views.m_vcViews[1]), "idView=1 auto=-1 time=-1 method=2");
  CmsViewGroupList groups;
  EXPECT_TRUE(groups.GetCmsViewGroupList(0));
  ASSERT_EQ(groups.m_vcViewGroups.size(), 3u);
  EXPECT_EQ(Difference(ViewGroupInfo(), groups.m_vcViewGroups[0]), "idViewGroup=5 user=3 type=1 method=1");
  EXPECT_EQ(Difference(ViewGroupInfo(), groups.m_vcViewGroups[1]), "idViewGroup=4");
}

TEST_F(SessionDataTest, ARefusedListIsNotRead) {
  server.Answer(R"({"ResponseStatus":{"ErrorCode":5,"Data":{"ViewList":{"View":[{}]},"ViewGroupList":{"ViewGroup":[)"
                R"({}]}}}})");
  CmsViewList views;
  CmsViewGroupList groups;
  EXPECT_FALSE(views.GetCmsViewList(0) || groups.GetCmsViewGroupList(0));
  EXPECT_TRUE(views.m_vcViews.empty() && groups.m_vcViewGroups.empty());
}

TEST_F(SessionDataTest, AListedModifiedViewIsCheckedForUnknownElements) {
  CacheView(View(9));
  const std::string modified = ViewsDocument(
      R"({"ID":9,"Method":1,"PlanPages":[{"PlanViewItem":[{"ResourceType":1002,"ResourceID":990099}]}]})");
  server.Answer(modified);
  PendingChecks pending;
  EXPECT_TRUE(CmsViewList().GetCmsViewList(0));
  Manager().TakePendingChecks(pending);
  EXPECT_EQ(pending, PendingChecks());
  Manager().GetViewByID(9)->SetResourceFlag(1002, true);
  EXPECT_TRUE(CmsViewList().GetCmsViewList(0));
  Manager().TakePendingChecks(pending);
  EXPECT_EQ(pending, (PendingChecks{{1002, {9}}}));
}

TEST_F(SessionDataTest, AMoveWithoutIdsIsSentForViewsAndThrowsForGroups) {
  server.Answer(Accepted());
  EXPECT_TRUE(CmsOrderView().OrderCmsView({kNoId, kNoId, {}}));
  EXPECT_EQ(server.Take().at(0).body, R"({"ViewMoveRequest":{"Type":1,"ViewGroupID":-1,"UserID":-1,"IDs":""}})");
  EXPECT_THROW(CmsOrderViewGroup().OrderCmsViewGroup({kNoId, kNoId, {}}), std::out_of_range);
  EXPECT_EQ(server.Take(), std::vector<SentRequest>());
}

TEST_F(SessionDataTest, TheDefaultViewIsAssignedFromEveryReplyWithABody) {
  const struct {
    std::string body;
    bool result;
    uint32_t id;
    uint32_t type;
  } rows[] = {
      {Accepted(R"({"Config":{"Type":1,"ID":17}})"), true, 17, 1},
      {Accepted(R"({"Config":{"ID":-3}})"), true, 0xFFFFFFFDu, kNoId},
      {R"({"ResponseStatus":{"ErrorCode":5}})", false, kNoId, kNoId},
      {R"({"ResponseStatus":{"ErrorCode":5,"Data":{"Config":{"Type":1,"ID":17}}}})", false, 17, 1},
      {"rubbish", false, kNoId, kNoId},
      {"", true, 70, 80},
  };
  for (const auto& row : rows) {
    server.Answer(row.body);
    uint32_t id = 70;
    uint32_t type = 80;
    ErrorCode error;
    EXPECT_EQ(CmsViewConfig().GetDefualtViewConfig(id, type, error), row.result) << row.body;
    EXPECT_EQ(id, row.id) << row.body;
    EXPECT_EQ(type, row.type) << row.body;
  }
  server.BreakDown(ErrorCode(1, 7, 0, ""));
  uint32_t id = 70;
  uint32_t type = 80;
  ErrorCode error;
  EXPECT_FALSE(CmsViewConfig().GetDefualtViewConfig(id, type, error));
  EXPECT_EQ(id + type, 150u);
}

}  // namespace
}  // namespace core_test
