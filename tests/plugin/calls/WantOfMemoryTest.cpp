// SPDX-License-Identifier: Apache-2.0
// What becomes of each exported function when memory runs out at any single moment of it.
#include <cstdlib>

#include "../../FailingMemory.h"
#include "CallFixture.h"

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
    R"({"ZoomWindowList":{"ZoomWindow":[{"No":1}]}}}]}]},{"ID":6,"Name":"a name that no small string holds","ViewGroupID":2,)"
    R"("PlanPages":[{"PlanViewItem":[{"RelateResourceName":"a long name \u0026 an escape in it","Cycle":{"CycleName":)"
    R"("round the whole house","ID":[{"SiteID":1,"ResourceID":2}]},"RelatedZoomWindow":{"ViewItemWindowNo":"17"}}]}]},{"ID":7,"Name":"seven"})";
constexpr char kPlan[] =
    R"("Name":"a plan with a name of some length","GroupID":"2","PlanPages":[{"windowDivision":4,"PlanItems":)"
    R"([{"Sequence":0,"ResourceType":1001,"ResourceID":"9"},{"Sequence":1,"ResourceType":1001,"ResourceID":"10"}]}]})";

// These elements, with the number of their change.
std::string WithNumber(const std::string& elements, const std::string& number) {
  std::string text;
  for (size_t begin = 0, id; (id = elements.find("{\"ID\":", begin)) != std::string::npos; begin = id + 1) {
    text += elements.substr(begin, id + 1 - begin) + R"("ChangeNumber":")" + number + "\",";
  }
  return text + elements.substr(elements.rfind("{\"ID\":") + 1);
}

class WantOfMemoryTest : public CallTest {
 protected:
  static void Download(bool isNumbered) {
    if (isNumbered) {
      Downloads().SetDownloadedData(Numbered(10, GroupsDocument(WithNumber(kGroups, "3"))),
                                    Numbered(10, ViewsDocument(WithNumber(kViews, "4"))), true);
    } else {
      Downloads().SetDownloadedData(GroupsDocument(kGroups), ViewsDocument(kViews), true);
    }
  }
  static void Load(bool isNumbered) {
    ClearViewData();
    Download(isNumbered);
    ASSERT_TRUE(LoadWhatIsDownloaded());
  }
  static std::string Document(bool ofGroups, const std::string& elements) {
    return ofGroups ? GroupsDocument(elements) : ViewsDocument(elements);
  }
  // Has the library take a change document; allocates nothing of its own.
  static bool Change(bool ofGroups, const std::string& document) {
    ofGroups ? Downloads().NotifyViewGroupsUpdate(document) : Downloads().NotifyViewsUpdate(document);
    return true;
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

  // Runs `begin` and `call` once for each moment of the call at which memory may run out, of which there are more than
  // `least`. The call answers whether it succeeded; `check` is told so.
  template <class Begin, class Call, class Check>
  static void AtEachMoment(int least, Begin begin, Call call, Check check) {
    for (const Want want : {Want::OneAllocation, Want::AllFromThere}) {
      bool ranOut = true;
      int moment = -1;
      while (ranOut) {
        SCOPED_TRACE(++moment);
        begin();
        FailAt(moment, want);
        const bool succeeded = call();
        ranOut = Stop() != 0;
        EXPECT_TRUE(succeeded || ranOut);
        if (ranOut) check(succeeded, want);
      }
      EXPECT_GT(moment, least);
    }
  }
};

TEST_F(WantOfMemoryTest, EveryExchangeFailsCleanlyAtEveryAllocation) {
  Users().SetDownload({std::make_shared<ResourceStore::CUserInfo>(1, "a user whose name is long", true, 0)}, {});
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
  for (const bool isNumbered : {false, true}) {
    for (const auto& c : cases) {
      if (isNumbered && c.event.empty()) continue;
      SCOPED_TRACE(std::string(c.name) + (isNumbered ? " with numbers" : ""));
      const bool ofGroups = std::string(c.name).ends_with("Group");
      const auto hear = [&] { Change(ofGroups, Document(ofGroups, WithNumber(c.event, "20"))); };
      const std::string more = isNumbered ? std::string(c.reply == "{}" ? "" : ",") + R"("ChangeNumber":"20"})" : "}";
      server.Answer(Accepted(c.reply.empty() ? "{}" : c.reply.substr(0, c.reply.size() - 1) + more));
      Load(isNumbered);
      const std::string before = Cache();
      if (isNumbered) hear();
      const std::string told = Cache();
      Load(isNumbered);
      std::string response;
      ASSERT_TRUE(c.exchange(c.request, response));
      const std::string after = Cache();
      const auto call = [&] {
        response = "old";
        return c.exchange(c.request, response);
      };
      AtEachMoment(
          2, [&] { Load(isNumbered); }, call,
          [&](bool succeeded, Want) {
            NetLink::CRapidJsonProto document;
            EXPECT_TRUE(document.set_str(response)) << response;
            if (!succeeded && (c.exchange == AddPlan || c.exchange == AddPlanGroup)) {
              EXPECT_TRUE(response == "{}" || At(response, "/ID") == "-1") << response;
            }
            // Memory may also run out when all is done and only the answer is left to be written.
            const std::string now = Cache();
            EXPECT_TRUE(now == after || (!succeeded && now == before)) << now;
            if (!isNumbered) return;
            // An edit that did not reach the cache must not keep its own event from it.
            hear();
            EXPECT_EQ(Cache(), now == before ? told : after);
          });
      log->Take();
      server.Take();
    }
  }
}

TEST_F(WantOfMemoryTest, AFirstLoadThatFailsIsMadeWholeByTheNextPoll) {
  for (const bool isNumbered : {false, true}) {
    Download(isNumbered);
    // A load finds these cached, newer or older than what it holds.
    const auto begin = [&] {
      ClearViewData();
      if (!isNumbered) return;
      Change(true, GroupsDocument(WithNumber(R"({"ID":2,"Name":"renamed","ParentViewGroupID":1})", "12") + "," +
                                  WithNumber(R"({"ID":77,"Name":"gone"})", "9")));
      Change(false,
             ViewsDocument(WithNumber(R"({"ID":5,"Name":"older","ViewGroupID":2})", "2") + "," +
                           WithNumber(R"({"ID":6,"Name":"newer","ViewGroupID":1},{"ID":8,"ViewGroupID":2})", "12") +
                           "," + WithNumber(R"({"ID":77,"ViewGroupID":2})", "9")));
    };
    begin();
    ASSERT_TRUE(LoadWhatIsDownloaded());
    const std::string whole = Cache();
    AtEachMoment(20, begin, LoadWhatIsDownloaded, [&](bool, Want) {
      ASSERT_TRUE(LoadWhatIsDownloaded());
      ASSERT_EQ(Cache(), whole);
    });
  }
}

TEST_F(WantOfMemoryTest, TheErrorTextOfALoadIsAnsweredByTheNextPollAtTheLatest) {
  const std::pair<Exchange, std::string> polls[] = {{IsInitViewGroupFinish, "the groups' text, a long one"},
                                                    {IsInitViewFinish, "the views' text, a long one"}};
  const auto begin = [&] {
    ClearViewData();
    Downloads().SetDownloadedData(Refused(100, 4, polls[0].second), Refused(100, 4, polls[1].second), true);
  };
  for (const auto& poll : polls) {
    std::string response;
    const auto load = [&] { return poll.first("", response); };
    AtEachMoment(5, begin, load, [&](bool succeeded, Want) {
      ASSERT_TRUE(succeeded || load());
      ASSERT_EQ(At(response, "/error_info"), poll.second);
    });
    EXPECT_EQ(At(response, "/error_info"), poll.second);
  }
}

TEST_F(WantOfMemoryTest, AChangeWithANumberThatWasLostIsMadeWholeWhenItIsToldAgain) {
  const struct {
    bool ofGroups;
    const char* elements;
  } changes[] = {
      {true, R"({"ID":77,"Name":"an added group of long name","ParentViewGroupID":1},{"ID":1,"Name":"ONE","Method":0},)"
             R"({"ID":2,"Name":"a changed group of long name","Method":1},{"ID":78,"Name":"unknown","Method":1})"},
      {true, R"({"ID":2,"Method":2},{"ID":78,"Method":2})"},
      {false,
       R"({"ID":77,"Name":"an added view of long name","ViewGroupID":2},{"ID":7,"Name":"again","ViewGroupID":1},)"
       R"({"ID":6,"Name":"a changed view of long name","ViewGroupID":2,"Method":1},)"
       R"({"ID":78,"ViewGroupID":2,"Method":1},{"ID":5,"ViewGroupID":1,"Method":2})"},
  };
  NotingObserver observer;
  for (const bool isNumbered : {false, true}) {
    for (const auto& c : changes) {
      const auto document = [&](const std::string& text, const char* number) {
        return Document(c.ofGroups, isNumbered ? WithNumber(text, number) : text);
      };
      // Views that overtook their group, and what waits for its object.
      const auto begin = [&] {
        Load(isNumbered);
        Observe(observer, kViewGroup, "2");
        Change(false, ViewsDocument(WithNumber(R"({"ID":8,"Name":"eight","ViewGroupID":77})", "11")));
      };
      const auto change = [&c, told = document(c.elements, "20")] { return Change(c.ofGroups, told); };
      // Without numbers it may be lost, but does no harm.
      const auto end = [&] {
        if (!isNumbered) Load(false);
        change();
        Change(c.ofGroups, document(R"({"ID":78,"Name":"late","ParentViewGroupID":1,"ViewGroupID":1})", "19"));
        return Cache();
      };
      begin();
      const std::string whole = end();
      AtEachMoment(isNumbered ? 20 : 5, begin, change, [&](bool, Want) { ASSERT_EQ(end(), whole); });
    }
  }
}

// With numbers the library knows what it has missed, and takes it from the platform's text.
class MissedChangeTest : public WantOfMemoryTest {
 protected:
  MissedChangeTest() {
    Load(true);
    Change(false, changes);
    whole = Plans();
  }
  // The platform's texts when it has taken that in.
  static void DownloadPresent() {
    Downloads().SetDownloadedData(
        Numbered(30, GroupsDocument(WithNumber(kGroups, "3"))),
        Numbered(30,
                 ViewsDocument(
                     R"({"ID":6,"ViewGroupID":2,"ChangeNumber":"22","Name":"another one that no small string holds"},)"
                     R"({"ID":77,"ViewGroupID":2,"ChangeNumber":"21","Name":"an added view of long name"})")),
        true);
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
  const std::string next = ViewsDocument(R"({"ID":8,"ChangeNumber":"31","Method":2})");
  std::string whole;  // the plans where nothing is missed
};

TEST_F(MissedChangeTest, IsMadeUpForAtOnceOrWithTheNextChange) {
  const auto begin = [] {
    Load(true);
    DownloadPresent();
  };
  AtEachMoment(
      20, begin, [&] { return Change(false, changes); },
      [&](bool, Want want) {
        if (want == Want::AllFromThere) Change(false, next);
        ASSERT_EQ(Plans(), whole);
      });
  EXPECT_EQ(Plans(), whole);
}

TEST_F(MissedChangeTest, IsMadeUpForAfterTheLoadWhereItCouldNotWait) {
  ClearViewData();
  Download(true);
  const auto fails = [](int moment, const std::string& document) {
    FailAt(moment, Want::OneAllocation);
    Change(false, document);
    return Stop() != 0;
  };
  int moments = 0;
  log->onFill = [&] {
    DownloadPresent();
    // At so many moments does a change fail to wait; the one with which it succeeds is of no interest.
    while (fails(moments, next)) ++moments;
    for (int moment = 0; moment < moments; ++moment) EXPECT_TRUE(fails(moment, changes));
  };
  ASSERT_TRUE(LoadWhatIsDownloaded());
  log->onFill = nullptr;
  EXPECT_GT(moments, 0);
  EXPECT_EQ(Plans(), whole);
}

}  // namespace
}  // namespace call_test
