// SPDX-License-Identifier: Apache-2.0
// What becomes of each exported function when memory runs out at any single moment of it.
#include <cstdlib>

#include "../../FailingMemory.h"
#include "CallFixture.h"
#include "ResourceStore/OrlUserManager.h"
#include "ResourceStore/ViewGroupManager.h"

namespace call_test {
namespace {

// GLib's event loop, which Qt would take, ends a process that has no memory.
[[maybe_unused]] const int kWithoutGlib = setenv("QT_NO_GLIB", "1", 1);

using failing_memory::FailAt;
using failing_memory::Stop;
using failing_memory::Want;

constexpr char kGroups[] = R"({"ID":1,"Name":"one"},{"ID":2,"Name":"two","ParentViewGroupID":1})";
constexpr char kViews[] =
    R"({"ID":5,"Name":"five","ViewGroupID":1,"PlanPages":[{"PlanViewItem":[{"WindowNo":1,"ResourceType":1001,)"
    R"("ResourceID":9,"RelateResourceName":"a resource with a long name","Cycle":{"CycleName":"round the whole house",)"
    R"("ID":[{"SiteID":1,"ResourceID":2}]},"Emap":{"ExtendInfo":"of the second floor"},"RelatedZoomWindow":)"
    R"({"ZoomWindowList":{"ZoomWindow":[{"No":1}]}}}]}]},{"ID":6,"Name":"a name that no small string holds","ViewGroupID":2},{"ID":7,"Name":"seven"})";
constexpr char kPlan[] =
    R"("Name":"a plan with a name of some length","GroupID":"2","PlanPages":[{"windowDivision":4,"PlanItems":)"
    R"([{"Sequence":0,"ResourceType":1001,"ResourceID":"9"},{"Sequence":1,"ResourceType":1001,"ResourceID":"10"}]}]})";

// With numbers: of the list, of its elements, and of what changes them.
std::string Numbered(const std::string& elements, const std::string& number) {
  std::string text;
  for (size_t begin = 0, id; (id = elements.find("{\"ID\":", begin)) != std::string::npos; begin = id + 1) {
    text += elements.substr(begin, id + 1 - begin) + R"("ChangeNumber":")" + number + "\",";
  }
  return text + elements.substr(elements.rfind("{\"ID\":") + 1);
}
std::string NumberedList(const std::string& list, const std::string& number) {
  const std::string data = R"("Data":{)";
  return std::string(list).insert(list.find(data) + data.size(), R"("ChangeNumber":")" + number + "\",");
}

class WantOfMemoryTest : public CallTest {
 protected:
  static void Download(bool isNumbered) {
    if (isNumbered) {
      Downloads().SetDownloadedData(NumberedList(GroupsDocument(Numbered(kGroups, "3")), "10"),
                                    NumberedList(ViewsDocument(Numbered(kViews, "4")), "10"), true);
    } else {
      Downloads().SetDownloadedData(GroupsDocument(kGroups), ViewsDocument(kViews), true);
    }
  }
  void Load(bool isNumbered = false) {
    ClearViewData();
    Download(isNumbered);
    std::string response;
    ASSERT_TRUE(IsInitViewGroupFinish("", response));
    ASSERT_TRUE(IsInitViewFinish("", response));
  }
  // Has the library take a change document.
  static void Change(bool ofGroups, const std::string& document) {
    ofGroups ? Downloads().NotifyViewGroupsUpdate(document) : Downloads().NotifyViewsUpdate(document);
  }

  // All that a host sees of the cache.
  static std::string Cache() {
    std::string text;
    for (const std::string id : {"root", "-1", "1", "2", "5", "6", "7", "8", "77", "78"}) {
      text += Call(GetPlanGroups, R"({"ParentID":")" + id + "\"}") + "\n";
      text += Call(GetPlansInGroup, R"({"GroupID":")" + id + "\"}") + "\n";
      text += Call(GetPlanDetail, R"({"ID":")" + id + "\"}") + "\n";
    }
    return text;
  }

  // Runs `call` once for each moment at which memory may run out. It answers whether it succeeded; `check` is told so.
  // Answers at how many moments memory did run out.
  template <class Call, class Check>
  static int AtEachMoment(Want want, Call call, Check check) {
    for (int moment = 0;; ++moment) {
      FailAt(moment, want);
      const bool succeeded = call();
      if (Stop() == 0) {
        EXPECT_TRUE(succeeded);
        return moment;
      }
      check(succeeded, moment);
    }
  }
};

TEST_F(WantOfMemoryTest, EveryExchangeFailsCleanlyAtEveryAllocation) {
  Vant::Base::CSingleton<ResourceStore::COrlUserManager>::Instance().SetDownload(
      {std::make_shared<ResourceStore::CUserInfo>(1, "a user whose name is long", true, 0)}, {});
  const struct {
    const char* name;
    Exchange exchange;
    std::string request;
    std::string reply;
    std::string event = "";  // of the same edit, of a group or a view
  } cases[] = {
      {"GetPlanGroups", GetPlanGroups, R"({"ParentID":"1"})", ""},
      {"GetPlanGroups of the root", GetPlanGroups, R"({"ParentID":"root"})", ""},
      {"GetPlansInGroup", GetPlansInGroup, R"({"GroupID":"2"})", ""},
      {"GetPlanDetail", GetPlanDetail, R"({"ID":"5"})", ""},
      {"GetPlanConfig", GetPlanConfig, "{}", ""},
      {"GetCurrentUser", GetCurrentUser, "{}", ""},
      {"GetAllUserInfo", GetAllUserInfo, "{}", ""},
      {"AddPlanGroup", AddPlanGroup, R"({"Name":"a group with a long name","ParentID":"1"})",
       R"({"ViewGroup":{"ID":77}})", R"({"ID":77,"Name":"a group with a long name","ParentViewGroupID":1})"},
      {"UpdatePlanGroup", UpdatePlanGroup, R"({"ID":"2","Name":"another name, as long"})", "{}",
       R"({"ID":2,"Name":"another name, as long","ParentViewGroupID":1,"Method":1})"},
      {"DeletePlanGroup", DeletePlanGroup, R"({"ID":"2"})", "{}", R"({"ID":2,"Method":2})"},
      {"AddPlan", AddPlan, std::string("{") + kPlan, R"({"View":{"ID":77}})",
       R"({"ID":77,"Name":"a plan with a name of some length","ViewGroupID":2})"},
      {"UpdatePlan", UpdatePlan, std::string(R"({"ID":"5",)") + kPlan, "{}",
       R"({"ID":5,"Name":"a plan with a name of some length","ViewGroupID":1,"Method":1})"},
      {"DeletePlan", DeletePlan, R"({"ID":"5"})", "{}", R"({"ID":5,"Method":2})"},
      {"ViewShareUsers", ViewShareUsers, R"({"share_users":"3","view_id":"5"})", "{}"},
      {"GetClientViewConfig", GetClientViewConfig, "{}", R"({"Config":{"ID":5,"Type":1}})"},
      {"SetClientViewConfig", SetClientViewConfig, R"({"view_type":1,"view_id":"5"})", "{}"},
  };
  for (const Want want : {Want::OneAllocation, Want::AllFromThere}) {
    for (const bool isNumbered : {false, true}) {
      for (const auto& c : cases) {
        if (isNumbered && c.event.empty()) continue;
        SCOPED_TRACE(std::string(c.name) + (isNumbered ? " with numbers" : ""));
        const bool ofGroups = std::string(c.name).ends_with("Group");
        const std::string event = Numbered(c.event, "20");
        const auto hear = [&] { Change(ofGroups, ofGroups ? GroupsDocument(event) : ViewsDocument(event)); };
        const std::string more = isNumbered ? std::string(c.reply == "{}" ? "" : ",") + R"("ChangeNumber":"20"})" : "}";
        server.Answer(Accepted(c.reply.empty() ? "{}" : c.reply.substr(0, c.reply.size() - 1) + more));
        Load(isNumbered);
        const std::string before = Cache();
        hear();
        const std::string told = Cache();
        Load(isNumbered);
        std::string response;
        ASSERT_TRUE(c.exchange(c.request, response));
        const std::string after = Cache();
        Load(isNumbered);
        const int moments = AtEachMoment(
            want,
            [&] {
              response = "old";
              return c.exchange(c.request, response);
            },
            [&](bool succeeded, int moment) {
              NetLink::CRapidJsonProto document;
              EXPECT_TRUE(document.set_str(response)) << moment << ": " << response;
              if (!succeeded && (c.exchange == AddPlan || c.exchange == AddPlanGroup)) {
                EXPECT_TRUE(response == "{}" || At(response, "/ID") == "-1") << moment << ": " << response;
              }
              // Memory may also run out when all is done and only the answer is left to be written.
              const std::string now = Cache();
              EXPECT_TRUE(now == after || (!succeeded && now == before)) << moment << ": " << now;
              // An edit that did not reach the cache must not keep its own event from it.
              if (isNumbered) {
                hear();
                EXPECT_EQ(Cache(), now == before ? told : after) << moment;
              }
              if (now != before || isNumbered) Load(isNumbered);
            });
        EXPECT_GT(moments, 2);
        log->Take();
        server.Take();
      }
    }
  }
}

TEST_F(WantOfMemoryTest, AFirstLoadThatFailsIsMadeWholeByTheNextPoll) {
  for (const bool isNumbered : {false, true}) {
    Load(isNumbered);
    // A load finds these cached, newer or older than what it holds.
    const auto begin = [&] {
      ClearViewData();
      if (!isNumbered) return;
      Change(true, GroupsDocument(Numbered(R"({"ID":2,"Name":"renamed","ParentViewGroupID":1})", "12") + "," +
                                  Numbered(R"({"ID":77,"Name":"gone"})", "9")));
      Change(false,
             ViewsDocument(Numbered(R"({"ID":5,"Name":"older","ViewGroupID":2})", "2") + "," +
                           Numbered(R"({"ID":6,"Name":"newer","ViewGroupID":1},{"ID":8,"ViewGroupID":2})", "12") + "," +
                           Numbered(R"({"ID":77,"ViewGroupID":2})", "9")));
    };
    const auto load = [] {
      std::string groups;
      std::string views;
      return IsInitViewGroupFinish("", groups) && IsInitViewFinish("", views);
    };
    begin();
    ASSERT_TRUE(load());
    const std::string whole = Cache();
    for (const Want want : {Want::OneAllocation, Want::AllFromThere}) {
      begin();
      const int moments = AtEachMoment(want, load, [&](bool, int moment) {
        std::string response;
        ASSERT_TRUE(IsInitViewGroupFinish("", response));
        ASSERT_TRUE(IsInitViewFinish("", response));
        ASSERT_EQ(Cache(), whole) << moment;
        begin();
      });
      EXPECT_GT(moments, 20);
    }
  }
}

TEST_F(WantOfMemoryTest, TheErrorTextOfALoadIsAnsweredByTheNextPollAtTheLatest) {
  const auto begin = [] {
    ClearViewData();
    Downloads().SetDownloadedData(Refused(100, 4, "the groups' text, a long one"),
                                  Refused(100, 4, "the views' text, a long one"), true);
  };
  for (const Want want : {Want::OneAllocation, Want::AllFromThere}) {
    for (const Exchange poll : {IsInitViewGroupFinish, IsInitViewFinish}) {
      const std::string text =
          poll == IsInitViewFinish ? "the views' text, a long one" : "the groups' text, a long one";
      std::string response;
      const auto load = [&] { return poll("", response); };
      begin();
      EXPECT_GT(AtEachMoment(want, load,
                             [&](bool succeeded, int moment) {
                               ASSERT_TRUE(succeeded || load()) << moment;
                               ASSERT_EQ(At(response, "/error_info"), text) << moment;
                               begin();
                             }),
                5);
      EXPECT_EQ(At(response, "/error_info"), text);
    }
  }
}

TEST_F(WantOfMemoryTest, AChangeMayBeLostButDoesNoHarm) {
  const std::string document =
      ViewsDocument(R"({"ID":77,"Name":"an added view of long name","ViewGroupID":2,"Method":0},)"
                    R"({"ID":6,"Name":"a changed view of long name","ViewGroupID":2,"Method":1},{"ID":5,"Method":2})");
  NotingObserver observer;
  Load();
  const std::string whole = Cache();
  for (const Want want : {Want::OneAllocation, Want::AllFromThere}) {
    const auto change = [&] {
      Change(false, document);
      return true;
    };
    const int moments = AtEachMoment(want, change, [&](bool, int moment) {
      Cache();
      Load();
      ASSERT_EQ(Cache(), whole) << moment;
      Observe(observer, kViewGroup, "2");
    });
    EXPECT_GT(moments, 20);
    Load();
  }
}

TEST_F(WantOfMemoryTest, AChangeWithANumberThatWasLostIsMadeWholeWhenItIsToldAgain) {
  // Views that overtook their group, and what waits for its object.
  const std::string early = ViewsDocument(Numbered(R"({"ID":8,"Name":"eight","ViewGroupID":77})", "11"));
  const std::pair<bool, std::string> documents[] = {
      {true, R"({"ID":77,"Name":"an added group of long name","ParentViewGroupID":1},{"ID":1,"Name":"ONE","Method":0},)"
             R"({"ID":2,"Name":"a changed group of long name","Method":1},{"ID":78,"Name":"unknown","Method":1})"},
      {true, R"({"ID":2,"Method":2},{"ID":78,"Method":2})"},
      {false,
       R"({"ID":77,"Name":"an added view of long name","ViewGroupID":2},{"ID":7,"Name":"again","ViewGroupID":1},)"
       R"({"ID":6,"Name":"a changed view of long name","ViewGroupID":2,"Method":1},)"
       R"({"ID":78,"ViewGroupID":2,"Method":1},{"ID":5,"ViewGroupID":1,"Method":2})"},
  };
  for (const auto& [ofGroups, elements] : documents) {
    const std::string numbered = Numbered(elements, "20");
    const std::string document = ofGroups ? GroupsDocument(numbered) : ViewsDocument(numbered);
    const std::string late = ofGroups
                                 ? GroupsDocument(Numbered(R"({"ID":78,"Name":"late","ParentViewGroupID":1})", "19"))
                                 : ViewsDocument(Numbered(R"({"ID":78,"Name":"late","ViewGroupID":1})", "19"));
    const auto begin = [&] {
      Load(true);
      Change(false, early);
    };
    const auto end = [&] {
      Change(ofGroups, document);
      Change(ofGroups, late);
      return Cache();
    };
    begin();
    const std::string whole = end();
    for (const Want want : {Want::OneAllocation, Want::AllFromThere}) {
      begin();
      const auto change = [&] {
        Change(ofGroups, document);
        return true;
      };
      const int moments = AtEachMoment(want, change, [&](bool, int moment) {
        ASSERT_EQ(end(), whole) << moment;
        begin();
      });
      EXPECT_GT(moments, 20);
    }
  }
}

// With numbers the library knows what it has missed, and takes it from the platform's text.
class MissedChangeTest : public WantOfMemoryTest {
 protected:
  // The lists as they are up to that change, 20 or 30; ClearViewData is the caller's.
  static void Download(int upTo) {
    const std::string number = R"("ChangeNumber":")" + std::to_string(upTo) + R"(",)";
    const auto numbered = [&](std::string list) { return list.insert(list.find(R"("View)"), number); };
    const std::string six = R"({"ID":6,"ViewGroupID":2,"ChangeNumber":"7","Name":"a name that no small string holds"})";
    const std::string later =
        R"({"ID":6,"ViewGroupID":2,"ChangeNumber":"22","Name":"another one that no small string holds"},)"
        R"({"ID":77,"ViewGroupID":2,"ChangeNumber":"21","Name":"an added view of long name"})";
    Downloads().SetDownloadedData(
        numbered(
            GroupsDocument(R"({"ID":1,"Name":"one","ChangeNumber":"1"},{"ID":2,"Name":"two","ChangeNumber":"2"})")),
        numbered(
            ViewsDocument(upTo == 20 ? six + R"(,{"ID":5,"Name":"five","ViewGroupID":1,"ChangeNumber":"3"})" : later)),
        true);
  }
  static void LoadAfresh() {
    ClearViewData();
    Download(20);
    std::string response;
    ASSERT_TRUE(IsInitViewGroupFinish("", response));
    ASSERT_TRUE(IsInitViewFinish("", response));
  }
  // The plans and what they are called, without repetitions: which of the documented ones there are depends on the
  // moment.
  static std::string Plans() {
    std::string text;
    for (const std::string id : {"5", "6", "77"}) text += Call(GetPlanDetail, R"({"ID":")" + id + "\"}") + "\n";
    return text;
  }

  const std::string changes =
      ViewsDocument(R"({"ID":77,"ViewGroupID":2,"ChangeNumber":"21","Name":"an added view of long name","Method":0},)"
                    R"({"ID":6,"ViewGroupID":2,"ChangeNumber":"22","Name":"another one that no small string holds",)"
                    R"("Method":1},{"ID":5,"ChangeNumber":"23","Method":2})");
};

TEST_F(MissedChangeTest, IsMadeUpForAtOnceOrWithTheNextChange) {
  LoadAfresh();
  Downloads().NotifyViewsUpdate(changes);
  const std::string whole = Plans();
  for (const Want want : {Want::OneAllocation, Want::AllFromThere}) {
    const auto change = [&] {
      Downloads().NotifyViewsUpdate(changes);
      return true;
    };
    LoadAfresh();
    Download(30);
    const int moments = AtEachMoment(want, change, [&](bool, int moment) {
      if (want == Want::AllFromThere) {
        Downloads().NotifyViewsUpdate(ViewsDocument(R"({"ID":8,"ChangeNumber":"31","Method":2})"));
      }
      ASSERT_EQ(Plans(), whole) << moment;
      LoadAfresh();
      Download(30);
    });
    EXPECT_GT(moments, 20);
    EXPECT_EQ(Plans(), whole);
  }
}

TEST_F(MissedChangeTest, IsMadeUpForAfterTheLoadWhereItCouldNotWait) {
  LoadAfresh();
  Downloads().NotifyViewsUpdate(changes);
  const std::string whole = Plans();
  ClearViewData();
  Download(20);
  int missed = 0;
  const auto notify = [&missed](const std::string& document, Want want, int moment) {
    FailAt(moment, want);
    Downloads().NotifyViewsUpdate(document);
    const bool hasFailed = Stop() != 0;
    missed += hasFailed;
    return !hasFailed;
  };
  log->onLine = [&](const std::string& text) {
    if (text.find("init view_messgae data") == std::string::npos) return;
    Download(30);
    // At so many moments does a change fail to wait; the one with which it succeeds is of no interest.
    const std::string other = ViewsDocument(R"({"ID":8,"ChangeNumber":"31","Method":2})");
    int moments = 0;
    while (!notify(other, Want::OneAllocation, moments)) ++moments;
    missed = 0;
    for (int moment = 0; moment < moments; ++moment) EXPECT_FALSE(notify(changes, Want::OneAllocation, moment));
    EXPECT_GT(missed, 0);
  };
  std::string response;
  ASSERT_TRUE(IsInitViewGroupFinish("", response));
  ASSERT_TRUE(IsInitViewFinish("", response));
  log->onLine = nullptr;
  EXPECT_EQ(Plans(), whole);
}

}  // namespace
}  // namespace call_test
