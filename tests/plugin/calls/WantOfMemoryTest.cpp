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

// Elements of a list of groups, and of one of views.
const auto kLists = testing_support::Cases(CALL_TEXTS, "WantOfMemoryTest");
const std::string kGroups = kLists.at(0).text, kViews = kLists.at(1).text;

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
  for (const bool isNumbered : {false, true}) {
    for (const auto& row : testing_support::Cases(CALL_TEXTS)) {
      const size_t blank = row.text.find(' ');
      const std::string name = row.text.substr(0, blank), request = row.text.substr(blank + 1);
      const std::string reply = row.expected.at(0);
      // Of the same edit, of a group or a view.
      const std::string event = row.expected.size() > 1 ? row.expected[1] : "";
      if (isNumbered && event.empty()) continue;
      SCOPED_TRACE(row.text + (isNumbered ? " with numbers" : ""));
      const Exchange exchange = kExchanges.at(name);
      const bool ofGroups = name.ends_with("Group");
      const auto hear = [&] { Change(ofGroups, Document(ofGroups, WithNumber(event, "20"))); };
      const std::string more = isNumbered ? std::string(reply == "{}" ? "" : ",") + R"("ChangeNumber":"20"})" : "}";
      server.Answer(Accepted(reply.empty() ? "{}" : reply.substr(0, reply.size() - 1) + more));
      Load(isNumbered);
      const std::string before = Cache();
      if (isNumbered) hear();
      const std::string told = Cache();
      Load(isNumbered);
      std::string response;
      ASSERT_TRUE(exchange(request, response));
      const std::string after = Cache();
      const auto call = [&] {
        response = "old";
        return exchange(request, response);
      };
      AtEachMoment(
          2, [&] { Load(isNumbered); }, call,
          [&](bool succeeded, Want) {
            NetLink::CRapidJsonProto document;
            EXPECT_TRUE(document.set_str(response)) << response;
            if (!succeeded && name.starts_with("Add")) {
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
  NotingObserver observer;
  for (const bool isNumbered : {false, true}) {
    for (const auto& c : testing_support::Cases(CALL_TEXTS)) {
      const bool ofGroups = c.expected.at(0) == "groups";
      const auto document = [&](const std::string& text, const char* number) {
        return Document(ofGroups, isNumbered ? WithNumber(text, number) : text);
      };
      // Views that overtook their group, and what waits for its object.
      const auto begin = [&] {
        Load(isNumbered);
        Observe(observer, kViewGroup, "2");
        Change(false, ViewsDocument(WithNumber(R"({"ID":8,"Name":"eight","ViewGroupID":77})", "11")));
      };
      const auto change = [ofGroups, told = document(c.text, "20")] { return Change(ofGroups, told); };
      // Without numbers it may be lost, but does no harm.
      const auto end = [&] {
        if (!isNumbered) Load(false);
        change();
        Change(ofGroups, document(R"({"ID":78,"Name":"late","ParentViewGroupID":1,"ViewGroupID":1})", "19"));
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
