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
  std::string name;  // "<class>::<function>"
  Scheme scheme;
  // Runs it with the record that its error starts as, and leaves there what it became.
  std::function<bool(ErrorCode&)> run;
  SentRequest sent;
  // What stands between the function's name and "success" or "failed" in the log.
  std::string before = "[" + name + "] ";
  std::string beforeTransportFailure = before;
  // Text of the line before the request; empty for none.
  std::string announced = "";
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

bool GetConfig(ErrorCode& error) {
  uint32_t id = 0;
  uint32_t type = 0;
  return CmsViewConfig().GetDefualtViewConfig(id, type, error);
}
bool SetConfig(ErrorCode& error) {
  return CmsViewConfig().SetDefualtViewConfig(17, 1, error);
}

std::vector<Session> Sessions() {
  const std::string root = "/NXAPI/Vantorel/Platform/";
  const std::string views = root + "V0/Views";
  const std::string groups = root + "V0/ViewGroups";
  const std::string config = root + "V1/View/Default/Config";
  std::vector<Session> all;
  const auto add = [&all](const char* name, Scheme scheme, const auto& run, const SentRequest& sent) -> Session& {
    return all.emplace_back(Session{name, scheme, run, sent});
  };
  add("CmsViewList::GetCmsViewList", Scheme::List, Run(&CmsViewList::GetCmsViewList, 5),
      {"GET", views, "", R"({"ViewsRequest":{"ClientResourceVersion":5}})", 30000});
  add("CmsAddView::AddCmsView", Scheme::AddView, Run(&CmsAddView::AddCmsView, kSentView),
      {"POST", views, WriteViewDocument(kSentView), "", 0});
  add("CmsModifyView::ModifyCmsView", Scheme::Status, Run(&CmsModifyView::ModifyCmsView, kSentView),
      {"PUT", views + "/17", WriteViewDocument(kSentView), "", 0})
      .beforeTransportFailure = "";
  add("CmsDeleteView::DeleteCmsView", Scheme::Status, Run(&CmsDeleteView::DeleteCmsView, 4294967295u),
      {"DELETE", views + "/4294967295", "", "", 0});
  add("CmsOrderView::OrderCmsView", Scheme::Status, Run(&CmsOrderView::OrderCmsView, kMove),
      {"PUT", views + "/Move", R"({"ViewMoveRequest":{"Type":1,"ViewGroupID":2,"UserID":8,"IDs":"3,7,12"}})", "", 0});
  Session& list =
      add("CmsViewGroupList::GetCmsViewGroupList", Scheme::List, Run(&CmsViewGroupList::GetCmsViewGroupList, 5),
          {"GET", groups, "", R"({"ViewGroupsRequest":{"ClientResourceVersion":5}})", 30000});
  list.before = list.beforeTransportFailure = "";
  add("CmsAddViewGroup::AddCmsViewGroup", Scheme::AddGroup, Run(&CmsAddViewGroup::AddCmsViewGroup, kSentGroup),
      {"POST", groups, kGroupBody, "", 0})
      .announced = "add plan group data: ";
  add("CmsModifyViewGroup::ModifyCmsViewGroup", Scheme::Status,
      Run(&CmsModifyViewGroup::ModifyCmsViewGroup, kSentGroup), {"PUT", groups + "/4", kGroupBody, "", 0})
      .announced = "update plan group data: ";
  add("CmsDeleteViewGroup::DeleteCmsViewGroup", Scheme::Status, Run(&CmsDeleteViewGroup::DeleteCmsViewGroup, 4u),
      {"DELETE", groups + "/4", "", "", 0})
      .beforeTransportFailure = " ";
  add("CmsOrderViewGroup::OrderCmsViewGroup", Scheme::Status, Run(&CmsOrderViewGroup::OrderCmsViewGroup, kMove),
      {"PUT", groups + "/Move", R"({"ViewMoveRequest":{"Type":2,"ViewGroupID":2,"UserID":8,"IDs":","}})", "", 0});
  add("CmsViewConfig::GetDefualtViewConfig", Scheme::Config, GetConfig, {"GET", config, "", "", 0});
  add("CmsViewConfig::SetDefualtViewConfig", Scheme::Config, SetConfig,
      {"PUT", config, R"({"ViewRequest":{"Type":1,"ID":17}})", "", 0});
  return all;
}

class SessionTest : public CoreTest, public testing::WithParamInterface<Session> {
 protected:
  // Runs the session with the server as it is now.
  void Expect(bool expectedResult, const std::string& expectedError, const LogLine& expectedLine) {
    ErrorCode error(7, 8, 9, "before");
    EXPECT_EQ(GetParam().run(error), expectedResult);
    EXPECT_EQ(Text(error), expectedError);
    EXPECT_EQ(server.Take(), std::vector{GetParam().sent});
    const std::string& announced = GetParam().announced;
    EXPECT_EQ(log->Take(), announced.empty()
                               ? Texts{expectedLine}
                               : (Texts{InfoLine(Name() + announced + GetParam().sent.body), expectedLine}));
  }
  static std::string Name() { return "[QorviViewPlugin::" + GetParam().name + "]"; }
  LogLine Succeeded() const { return InfoLine(Name() + GetParam().before + "success"); }
  LogLine Failed(const std::string& before, int mainError, int subError) const {
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

TEST_P(SessionTest, FailsWithTheTransportsOrTheServersErrorElseMinusOne) {
  server.BreakDown(ErrorCode(4, 503, 6, "wire"));
  Expect(false, "4/503/6/wire", Failed(GetParam().beforeTransportFailure, 4, 503));
  server.Answer(Refused(100, 4, "c"));
  Expect(false, "100/4/1/" + Cascading("c"), Failed(GetParam().before, 100, 4));
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
                         [](const auto& row) { return row.param.name.substr(row.param.name.find("::") + 2); });

class SessionDataTest : public CoreTest {};

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

  server.Answer(R"({"ResponseStatus":{"ErrorCode":5,"Data":{"ViewList":{"View":[{}]},"ViewGroupList":{"ViewGroup":[)"
                R"({}]}}}})");
  EXPECT_FALSE(views.GetCmsViewList(0) || groups.GetCmsViewGroupList(0));
  EXPECT_EQ(views.m_vcViews.size() + groups.m_vcViewGroups.size(), 6u) << "a refused list is not read";
}

TEST_F(SessionDataTest, AListedModifiedViewIsCheckedForUnknownElements) {
  CacheView(View(9));
  server.Answer(ViewsDocument(
      R"({"ID":9,"Method":1,"PlanPages":[{"PlanViewItem":[{"ResourceType":1002,"ResourceID":990099}]}]})"));
  PendingChecks pending;
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

}  // namespace
}  // namespace core_test
