// SPDX-License-Identifier: Apache-2.0
// Every server session against every kind of reply: what is sent, answered, kept in the error record, and logged.
#include <stdexcept>

#include "CoreFixture.h"
#include "ModelText.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewGroupSession.h"
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewSession.h"

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
  std::string sent;
  // Text of the line before the request, which the body follows; empty for none.
  std::string announced = "";
  // What stands between the function's name and "success" or "failed" in the log.
  std::string beforeTransportFailure = "[" + name + "] ";
  std::string before = "[" + name + "] ";
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

std::vector<Session> Sessions() {
  const std::string root = "/NXAPI/Vantorel/Platform/";
  const std::string views = root + "V0/Views";
  const std::string groups = root + "V0/ViewGroups";
  const std::string config = root + "V1/View/Default/Config ";
  const std::string view = WriteViewDocument(kSentView);
  const std::string group = WriteViewGroupDocument(kSentGroup);
  return {
      {"CmsViewList::GetCmsViewList", Scheme::List, Run(&CmsViewList::GetCmsViewList, 5),
       "GET " + views + R"(  asks {"ViewsRequest":{"ClientResourceVersion":5}} within 30000)"},
      {"CmsAddView::AddCmsView", Scheme::AddView, Run(&CmsAddView::AddCmsView, kSentView),
       "POST " + views + " " + view},
      {"CmsModifyView::ModifyCmsView", Scheme::Status, Run(&CmsModifyView::ModifyCmsView, kSentView),
       "PUT " + views + "/17 " + view, "", ""},
      {"CmsDeleteView::DeleteCmsView", Scheme::Status, Run(&CmsDeleteView::DeleteCmsView, 4294967295u),
       "DELETE " + views + "/4294967295 "},
      {"CmsOrderView::OrderCmsView", Scheme::Status, Run(&CmsOrderView::OrderCmsView, kMove),
       "PUT " + views + R"(/Move {"ViewMoveRequest":{"Type":1,"ViewGroupID":2,"UserID":8,"IDs":"3,7,12"}})"},
      {"CmsViewGroupList::GetCmsViewGroupList", Scheme::List, Run(&CmsViewGroupList::GetCmsViewGroupList, 5),
       "GET " + groups + R"(  asks {"ViewGroupsRequest":{"ClientResourceVersion":5}} within 30000)", "", "", ""},
      {"CmsAddViewGroup::AddCmsViewGroup", Scheme::AddGroup, Run(&CmsAddViewGroup::AddCmsViewGroup, kSentGroup),
       "POST " + groups + " " + group, "add plan group data: "},
      {"CmsModifyViewGroup::ModifyCmsViewGroup", Scheme::Status,
       Run(&CmsModifyViewGroup::ModifyCmsViewGroup, kSentGroup), "PUT " + groups + "/4 " + group,
       "update plan group data: "},
      {"CmsDeleteViewGroup::DeleteCmsViewGroup", Scheme::Status, Run(&CmsDeleteViewGroup::DeleteCmsViewGroup, 4u),
       "DELETE " + groups + "/4 ", "", " "},
      {"CmsOrderViewGroup::OrderCmsViewGroup", Scheme::Status, Run(&CmsOrderViewGroup::OrderCmsViewGroup, kMove),
       "PUT " + groups + R"(/Move {"ViewMoveRequest":{"Type":2,"ViewGroupID":2,"UserID":8,"IDs":","}})"},
      {"CmsViewConfig::GetDefualtViewConfig", Scheme::Config,
       [](ErrorCode& error) {
         uint32_t id = 0, type = 0;
         return CmsViewConfig().GetDefualtViewConfig(id, type, error);
       },
       "GET " + config},
      {"CmsViewConfig::SetDefualtViewConfig", Scheme::Config,
       [](ErrorCode& error) { return CmsViewConfig().SetDefualtViewConfig(17, 1, error); },
       "PUT " + config + R"({"ViewRequest":{"Type":1,"ID":17}})"},
  };
}

class SessionTest : public CoreTest, public testing::WithParamInterface<Session> {
 protected:
  // Runs the session with the server as it is now.
  void Expect(bool expectedResult, const std::string& expectedError, const std::string& expectedLine) {
    ErrorCode error(7, 8, 9, "before");
    EXPECT_EQ(GetParam().run(error), expectedResult);
    EXPECT_EQ(Text(error), expectedError);
    EXPECT_EQ(server.Take(), Texts{GetParam().sent});
    Texts lines{expectedLine};
    const std::string& announced = GetParam().announced;
    const std::string body = GetParam().sent.substr(GetParam().sent.rfind(' ') + 1);
    if (!announced.empty()) lines.insert(lines.begin(), InfoLine(Name() + announced + body));
    EXPECT_EQ(log->Take(), lines);
  }
  static std::string Name() { return "[QorviViewPlugin::" + GetParam().name + "]"; }
  std::string Succeeded() const { return InfoLine(Name() + GetParam().before + "success"); }
  std::string Failed(const std::string& before, int mainError, int subError) const {
    return ErrorLine(Name() + before + "failed, [MainError: " + std::to_string(mainError) +
                     "],[SubError: " + std::to_string(subError) + "]");
  }
  std::string EmptyReply() const { return ErrorLine(Name() + GetParam().before + "failed, strRawData empty"); }
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
  for (const char* body : {"{}", "not JSON", R"({"ResponseStatus":[]})"}) {
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
  std::string told;
  CmsViewList views;
  EXPECT_TRUE(views.GetCmsViewList(0));
  for (const auto& view : views.m_vcViews) told += Difference(ViewInfo(), view) + "\n";
  EXPECT_EQ(views.m_vcViews.at(0).vcPages.at(0).vcWindows.at(0).enum_resource_type_, 7000);
  CmsViewGroupList groups;
  EXPECT_TRUE(groups.GetCmsViewGroupList(0));
  for (const auto& group : groups.m_vcViewGroups) told += Difference(ViewGroupInfo(), group) + "\n";
  EXPECT_EQ(told,
            "idView=2 enumViewType=1 idUser=3 nAutoCycle=-1 nCycleTime=-1 vcPages=[-1 '' windows 1][-1 '' windows 0]\n"
            "idView=1 nAutoCycle=-1 nCycleTime=-1 nMethod=2\nidView=2 nAutoCycle=-1 nCycleTime=-1\n"
            "idViewGroup=5 idUser=3 enumViewType=1 nMethod=1\nidViewGroup=4\nidViewGroup=5 nMethod=2\n");
  server.Answer(R"({"ResponseStatus":{"ErrorCode":5,"Data":{"ViewList":{"View":[{}]},"ViewGroupList":{"ViewGroup":[)"
                R"({}]}}}})");
  EXPECT_FALSE(views.GetCmsViewList(0) || groups.GetCmsViewGroupList(0));
  EXPECT_EQ(views.m_vcViews.size() + groups.m_vcViewGroups.size(), 6u) << "a refused list is not read";
}

TEST_F(SessionDataTest, AListedModifiedViewIsCheckedForUnknownElements) {
  CacheView(View(9));
  Manager().GetViewByID(9)->SetResourceFlag(1002, true);
  server.Answer(ViewsDocument(R"({"ID":9,"Method":1,"PlanPages":[{"PlanViewItem":[{"ResourceType":1002}]}]})"));
  EXPECT_TRUE(CmsViewList().GetCmsViewList(0));
  PendingChecks pending;
  Manager().TakePendingChecks(pending);
  EXPECT_EQ(pending, (PendingChecks{{1002, {9}}}));
}

TEST_F(SessionDataTest, AMoveWithoutIdsIsSentForViewsAndThrowsForGroups) {
  server.Answer(Accepted());
  EXPECT_TRUE(CmsOrderView().OrderCmsView({kNoId, kNoId, {}}));
  EXPECT_TRUE(server.Take().at(0).ends_with(R"({"ViewMoveRequest":{"Type":1,"ViewGroupID":-1,"UserID":-1,"IDs":""}})"));
  EXPECT_THROW(CmsOrderViewGroup().OrderCmsViewGroup({kNoId, kNoId, {}}), std::out_of_range);
  EXPECT_EQ(server.Take(), Texts());
}

}  // namespace
}  // namespace core_test
