// SPDX-License-Identifier: Apache-2.0
// Own edits and a colleague's changes of one object, in every order in which the server's events, the answers, the
// change callbacks, a load, a clearing and a download after lost changes can come: whatever the order, the cache ends
// as the server is. The library and the platform's texts are the real ones; the network between them and the thread of
// the change stream are played step by step.
//
// What is played is every interleaving of up to INTERLEAVED_EDITS edits (4 unless said); of the long families a part,
// or one of INTERLEAVING_STRIDE orders (1: all).
#include <array>
#include <cstdlib>
#include <deque>
#include <functional>
#include <iostream>

#include "BizShared/details/EditWatch.h"
#include "EditStories.h"
#include "QorviViewPlugin/FirstLoad.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

enum class What {
  Event,     // the stream brings the next event to the platform
  Callback,  // the library takes the next change document
  Platform,  // the platform gets the answer to edit n
  Library,   // the library gets it
  Answer,    // both, one after the other
  Handout,   // a load gets the texts
  Fill,      // and fills the cache
  Clear,     //
  Again,     // the lists are downloaded again as they are after n commits
  Renew,     // the session is renewed: own events come as foreign ones from here on
};
struct Step {
  What what;
  size_t n = 0;
};
using Order = std::vector<Step>;

std::string Text(const Order& order) {
  static const char* const kNames[] = {"event",   "callback", "platform", "library", "answer",
                                       "handout", "fill",     "clear",    "again",   "renew"};
  std::string text;
  for (const Step& step : order)
    text += std::string(kNames[static_cast<size_t>(step.what)]) + std::to_string(step.n) + " ";
  return text;
}

struct Family {
  bool isGroup = false;
  size_t split = 0;  // with so many edits, or fewer, platform and library get an answer in two steps
  bool loadsLate = false;
  bool clears = false;
  bool downloadsAgain = false;
  bool renews = false;
  bool losesAnswers = false;  // those to the first own edit, for platform and library
};

class InterleavingTest : public CoreTest {
 protected:
  static BizShared::CNetCommManager& Network() { return The<BizShared::CNetCommManager>(); }

  // One story in one order from a fresh start.
  class Run {
   public:
    Run(InterleavingTest& test, const Family& family, const Story& story, bool exists)
        : m_test(test), m_family(family), m_server(story, exists, family.isGroup), m_watch(Network().GetEditWatch()) {
      ClearViewData();
      // Of the runs before.
      m_test.log->Take();
      m_test.server.Take();
      Downloads().SetDownloadedData(m_server.List(true, 0), m_server.List(false, 0), true);
      for (size_t n = 0; n < story.size(); ++n) {
        m_tickets.push_back(story[n].isOwn ? m_watch->OnEditBegins() : 0);
      }
      if (!family.loadsLate) Load();
      TakeCallbacks();
    }

    // Plays the order, then all that is left of it, and answers how the cache differs from the server.
    std::string Play(const Order& order) {
      m_order = &order;
      for (m_at = 0; m_at < order.size();) Do(order[m_at++]);
      DeliverAll();
      if (!IsViewLoadDone() || !IsViewGroupLoadDone()) Load();
      DeliverAll();
      return Difference();
    }

   private:
    void TakeCallbacks() {
      Downloads().SetViewsUpdateCallback([this](const std::string& data) { m_queue.emplace_back(false, data); });
      Downloads().SetViewGroupsUpdateCallback([this](const std::string& data) { m_queue.emplace_back(true, data); });
    }
    void Load() {
      LoadWhatIsDownloaded();
      TakeCallbacks();
    }
    void DeliverAll() {
      Downloads().TellDueChanges();
      while (!m_queue.empty()) Deliver();
    }
    void Deliver() {
      if (m_queue.empty()) return;
      const auto [isGroups, data] = m_queue.front();
      m_queue.pop_front();
      isGroups ? ViewGroupDataResourceUpdate(data) : ViewDataResourceUpdate(data);
    }

    void Do(const Step& step) {
      switch (step.what) {
        case What::Event: {
          const Commit& event = m_server.commits[m_heard++];
          const bool isOwn = event.op.isOwn && !m_isRenewed;
          const std::string kind = std::string(isOwn ? "Own" : "") + (m_family.isGroup ? "ViewGroups" : "Views");
          return Downloads().TakeChange(event.number, kind, m_server.Event(event));
        }
        case What::Callback:
          Downloads().TellDueChanges();
          return Deliver();
        case What::Platform:
        case What::Library:
        case What::Answer:
          if (step.what != What::Library) EndOnPlatform(m_server.commits[step.n], m_tickets[step.n]);
          if (step.what != What::Platform) EndInLibrary(m_server.commits[step.n]);
          return;
        case What::Handout:
          m_test.log->onFill = [this] {
            TakeCallbacks();
            while (m_at < m_order->size() && (*m_order)[m_at].what != What::Fill) Do((*m_order)[m_at++]);
          };
          Load();
          m_test.log->onFill = nullptr;
          return;
        case What::Fill:
          return;
        case What::Clear:
          return ClearViewData();
        case What::Again:
          m_heard = std::max(m_heard, step.n);
          return Downloads().SetDownloadedAgain(m_server.List(true, step.n), m_server.List(false, step.n));
        case What::Renew:
          m_isRenewed = true;
      }
    }

    bool IsLost(const Commit& commit) const {
      if (!m_family.losesAnswers) return false;
      const auto isOwn = [](const Commit& other) { return other.op.isOwn; };
      return &commit == &*std::find_if(m_server.commits.begin(), m_server.commits.end(), isOwn);
    }
    void EndOnPlatform(const Commit& commit, uint64_t ticket) {
      static const std::string kRoot = "/NXAPI/Vantorel/Platform/V0/";
      NetLink::CClientSendInfo send;
      send.SetVal_URL(kRoot + (m_family.isGroup ? "ViewGroups" : "Views") + (commit.op.kind == Kind::Add ? "" : "/9"));
      m_watch->OnEditEnds(ticket, send, IsLost(commit) ? "" : m_server.Answer(commit));
    }
    void EndInLibrary(const Commit& commit) {
      if (IsLost(commit)) return;  // the call has failed
      Network().SetEditWatch({});
      m_test.server.Answer(m_server.Answer(commit));
      EXPECT_TRUE(Edit(commit));
      Network().SetEditWatch(m_watch);
    }
    bool Edit(const Commit& commit) const {
      ErrorCode error;
      unsigned int id = 0;
      const bool isAdd = commit.op.kind == Kind::Add;
      if (commit.op.kind == Kind::Delete) {
        // A group was cached when that was asked for: what remains of DeleteViewGroup once the server has answered.
        return m_family.isGroup ? Manager().RemoveViewGroupFromCache(kId, true, commit.number)
                                : Manager().DeleteView(kId, error);
      }
      const auto& [name, folder, number] = *commit.after;
      if (m_family.isGroup) {
        // The folder of a renaming counts for nothing.
        return isAdd ? Manager().AddViewGroup(Group(kId, folder, name), id, error)
                     : Manager().ModifyViewGroup(Group(kId, 77, name), error);
      }
      const ViewInfo info = View(kId, folder, name);
      return isAdd ? Manager().AddView(info, id, error) : Manager().ModifyView(info, error);
    }

    std::string Difference() const {
      const std::optional<Object>& server = m_server.Last();
      const std::string expected = server ? server->name + " in " + std::to_string(server->folder) : "(none)";
      std::string cached = "(none)";
      if (m_family.isGroup) {
        if (const auto group = Manager().GetViewGroupByID(kId)) {
          cached = group->Info()->strName + " in " + std::to_string(group->GetParentID());
        }
      } else if (const auto view = Manager().GetViewByID(kId)) {
        cached = view->GetName() + " in " + std::to_string(view->GetViewGroupID());
        const auto folder = Manager().GetViewGroupByID(view->GetViewGroupID());
        if (!folder || !folder->FindMemberView(kId)) cached += ", where it is no member";
      }
      return cached == expected ? "" : "cached " + cached + ", on the server " + expected;
    }

    InterleavingTest& m_test;
    const Family m_family;
    const Server m_server;
    const std::shared_ptr<BizShared::details::IEditWatch> m_watch;
    std::vector<uint64_t> m_tickets;
    std::deque<std::pair<bool, std::string>> m_queue;  // whether of groups; the document
    size_t m_heard = 0;                                // commits whose events have come
    bool m_isRenewed = false;
    const Order* m_order = nullptr;
    size_t m_at = 0;
  };

  // How far an order has come.
  struct Progress {
    size_t heard = 0;                 // events
    size_t queued = 0;                // callbacks
    std::array<int, 8> answers = {};  // to each edit: 0 none, 1 the platform has it, 2 the library too
    bool isCleared, isDownloaded, isRenewed;
    int load;  // 0: to come, 1: handed out, 2: done
  };
  // Every order of the family's steps, handed to `play`. Callbacks are drawn as many as colleagues' changes there are;
  // others that a run has queued are delivered at its end.
  static void ForEachOrder(const Family& family, const Story& story, const std::function<void(const Order&)>& play) {
    const bool isSplit = story.size() <= family.split;
    Order order;
    const std::function<void(const Progress&)> extend = [&](const Progress& at) {
      bool isEnd = true;
      const auto next = [&](const Step& step, const auto& change) {
        isEnd = false;
        Progress after = at;
        change(after);
        order.push_back(step);
        extend(after);
        order.pop_back();
      };
      if (at.heard < story.size()) {
        next({What::Event}, [&](Progress& then) { then.queued += story[then.heard++].isOwn ? 0 : 1; });
      }
      if (at.queued > 0 && at.load != 1) next({What::Callback}, [](Progress& then) { --then.queued; });
      for (size_t n = 0; n < story.size(); ++n) {
        if (!story[n].isOwn || at.answers[n] == 2) continue;
        const What what = !isSplit ? What::Answer : at.answers[n] == 0 ? What::Platform : What::Library;
        next({what, n}, [&](Progress& then) { then.answers[n] = what == What::Platform ? 1 : 2; });
      }
      if (!at.isCleared && at.load != 1) next({What::Clear}, [](Progress& then) { then.isCleared = true; });
      if (at.load == 0 && at.isCleared) next({What::Handout}, [](Progress& then) { then.load = 1; });
      if (at.load == 1) next({What::Fill}, [](Progress& then) { then.load = 2; });
      for (size_t after = at.heard; !at.isDownloaded && after <= story.size(); ++after) {
        next({What::Again, after}, [&](Progress& then) {
          then.isDownloaded = true;
          then.heard = after;
        });
      }
      if (!at.isRenewed) next({What::Renew}, [](Progress& then) { then.isRenewed = true; });
      if (isEnd) play(order);
    };
    extend({.isCleared = !family.clears,
            .isDownloaded = !family.downloadsAgain,
            .isRenewed = !family.renews,
            .load = family.loadsLate || family.clears ? 0 : 2});
  }

  static size_t Setting(const char* variable, size_t otherwise) {
    const char* const text = std::getenv(variable);
    return text ? std::strtoul(text, nullptr, 10) : otherwise;
  }

  // Plays every order of every story of one edit, two and so on, of a view and of a group; of the orders one of as many
  // as `strides` says for that number of edits.
  void ExpectAllConverge(Family family, const std::vector<size_t>& strides) {
    for (size_t edits = 1; edits <= strides.size(); ++edits) {
      const size_t stride = strides[edits - 1] == 1 ? 1 : Setting("INTERLEAVING_STRIDE", strides[edits - 1]);
      for (const bool isGroup : {false, true}) {
        family.isGroup = isGroup;
        ExpectAllConverge(family, edits, stride);
      }
    }
  }
  void ExpectAllConverge(const Family& family, size_t edits, size_t stride) {
    size_t orders = 0, played = 0;
    for (const bool exists : {true, false}) {
      for (const Story& story : Stories(exists, edits, family.isGroup)) {
        if (family.losesAnswers && std::none_of(story.begin(), story.end(), [](const Op& op) { return op.isOwn; }))
          continue;
        ForEachOrder(family, story, [&](const Order& order) {
          if (HasFailure() || ++orders % stride != 0) return;
          ++played;
          const std::string difference = Run(*this, family, story, exists).Play(order);
          EXPECT_EQ(difference, "") << Text(story) << "in the order " << Text(order);
        });
      }
    }
    EXPECT_GT(played, 0u);
    std::cout << edits << (family.isGroup ? " edits of a group" : " edits of a view") << ": " << played << " of "
              << orders << " orders played" << std::endl;
  }
};

TEST_F(InterleavingTest, EventsAnswersAndCallbacks) {
  std::vector<size_t> strides = {1, 1, 5};
  strides.resize(Setting("INTERLEAVED_EDITS", 4), 101);
  ExpectAllConverge({}, strides);
}

TEST_F(InterleavingTest, AnAnswerThatThePlatformHasAndTheLibraryNotYet) {
  ExpectAllConverge({.split = 3}, {1, 1, 61});
}

TEST_F(InterleavingTest, ALoadInBetween) {
  ExpectAllConverge({.split = 2, .loadsLate = true}, {1, 61, 307});
  ExpectAllConverge({.split = 2, .clears = true}, {1, 61, 307});
}

TEST_F(InterleavingTest, ADownloadAfterLostChangesInBetween) {
  ExpectAllConverge({.split = 2, .downloadsAgain = true}, {7, 7, 61});
  // Of three edits there are millions of orders, which take their time even where few are played.
  const bool isLong = std::getenv("INTERLEAVING_STRIDE");
  ExpectAllConverge({.clears = true, .downloadsAgain = true},
                    isLong ? std::vector<size_t>(3, 41) : std::vector<size_t>(2, 41));
}

TEST_F(InterleavingTest, ARenewedSessionInBetween) {
  ExpectAllConverge({.split = 2, .renews = true}, {3, 3, 29});
}

TEST_F(InterleavingTest, AnAnswerThatIsLost) {
  ExpectAllConverge({.losesAnswers = true}, {1, 1, 5});
  ExpectAllConverge({.downloadsAgain = true, .losesAnswers = true}, {3, 3, 61});
}

}  // namespace
}  // namespace core_test
