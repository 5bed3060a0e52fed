// SPDX-License-Identifier: Apache-2.0
// Edits of the user's own at a site that says numbers: which of them the platform calls back, and how often.
#include <algorithm>
#include <set>

#include "../Gate.h"
#include "BizShared/details/Canceller.h"
#include "DownloadFixture.h"
#include "ResourceStore/details/ChangeRelay.h"

namespace {

using namespace testing_support;

const std::string kGroup = R"({"ID":1,"Name":"g","ChangeNumber":"3"})";
std::string View(int id, const std::string& name, int number, const std::string& method = "") {
  return "{\"ID\":" + std::to_string(id) + R"(,"Name":")" + name + R"(","ChangeNumber":")" + std::to_string(number) +
         '"' + (method.empty() ? "" : ",\"Method\":" + method) + "}";
}
// An edit that is on its way from here on, on a thread of its own.
class SentEdit {
 public:
  // It is answered with that number once it is to end.
  SentEdit(ScriptedSite& site, const std::string& name, int number) {
    site.AnswerOnce(name, [this, number](const Request&, Connection& connection) {
      m_gate.Pass();
      connection.ReplyData(R"({"ChangeNumber":")" + std::to_string(number) + "\"}");
    });
    m_sender = std::async(std::launch::async, [=] { Send("PUT", kPlatformRoot + name); });
    EXPECT_TRUE(m_gate.WaitUntilReached());
  }
  void End() {
    m_gate.Open();
    m_sender.get();
  }

 private:
  Gate m_gate;
  std::future<void> m_sender;
};

class OwnEditsTest : public DownloadTest {
 protected:
  OwnEditsTest() {
    // The relay remembers from run to run which numbers it gave: those of earlier tests count no more.
    Manager().SetDownloadedData(Groups("", 1), Views("", 1), true);
    Manager().SetDownloadedAgain("", "");
    Manager().Stop();
    m_calls.clear();
    // Unlike the fixture's, these take no texts: that tells the platform what the receiver knows.
    Manager().SetViewsUpdateCallback([this](const std::string& data) { Hear("V ", data); });
    Manager().SetViewGroupsUpdateCallback([this](const std::string& data) { Hear("G ", data); });
    m_site.SetNumbered(kGroup, View(5, "v", 4), 50);
  }
  // The callbacks end with the members they use.
  ~OwnEditsTest() override { Manager().Stop(); }

  void Hear(const std::string& kind, const std::string& data) {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_threads.insert(std::this_thread::get_id());
    }
    Note(kind, data, {});
  }

  // Has the platform take all that was streamed before, and tell what ends of edits have left to be told.
  void StreamUpTo(int number) {
    const std::string marker = "marker " + std::to_string(number);
    m_site.Stream(Event(number, "ViewGroups", marker));
    EXPECT_TRUE(Eventually([&] { return Count("G " + marker) == 1; }));
  }
  size_t Count(const std::string& call) const { return static_cast<size_t>(std::ranges::count(Calls(), call)); }
  size_t Threads() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_threads.size();
  }

  std::set<std::thread::id> m_threads;  // that called back
};

TEST_F(OwnEditsTest, AreCalledBackSoonOnTheStreamsThreadWhenADownloadHasPassedThemOver) {
  Load();
  int number = 60;
  std::chrono::steady_clock::duration quickest = 1h;
  // Once is enough: the machine may be busy.
  for (int attempt = 0; attempt < 5 && quickest > 500ms; ++attempt, number += 20) {
    SentEdit edit(m_site, "V0/Views/5", number - 5);
    SentEdit beyond(m_site, "V0/Views/6", number + 5);
    m_site.SetNumbered(kGroup, View(5, "new", number - 5), number);
    m_site.LoseChanges();
    const size_t before = Calls().size();
    beyond.End();
    const auto answered = std::chrono::steady_clock::now();
    edit.End();
    ASSERT_TRUE(Eventually([&] { return Calls().size() > before; }));
    quickest = std::min(quickest, std::chrono::steady_clock::now() - answered);
    m_site.Stream(Event(number + 5, "OwnViews", Views(View(6, "six", number + 5, "0"))));
    StreamUpTo(number + 6);
    StreamUpTo(number + 7);
    const std::string told = "V " + Views(View(5, "new", number - 5, "1"));
    EXPECT_EQ(Count(told), 2u) << "in the difference, and once after the answer";
    EXPECT_TRUE(std::ranges::none_of(Calls(), [](const auto& call) { return call.find("six") != std::string::npos; }));
  }
  EXPECT_LT(quickest, 500ms) << "the silent stream's thread was not woken";
  EXPECT_EQ(Threads(), 1u);
}

TEST_F(OwnEditsTest, NumbersThatBeginAnewInAnotherRunAreToldByEmptyDocuments) {
  Load();
  Manager().Stop();
  m_site.SetNumbered(kGroup, View(5, "v", 4), 20);
  const int asked = m_site.Count("V0/ViewGroups");
  Load();
  ExpectCalls(2, {"G " + Groups(""), "V " + Views("")});
  EXPECT_EQ(m_site.Count("V0/ViewGroups"), asked + 1) << "they are as new as the views";
}

TEST_F(OwnEditsTest, TheStreamsNumbersGoWithTheirHistory) {
  m_site.SetHistory("first");
  // The server was ended between the two lists.
  m_site.AnswerOnce("V0/Views", Replying(200, Views(""), "Resource-Sequence: 50\r\nResource-History: other\r\n"));
  Load();
  EXPECT_EQ(m_site.Count("V0/Views"), 2);
  const auto expectNext = [&](const char* query) {
    const int opened = m_site.Count("V0/Changes");
    m_site.EndStream();
    ASSERT_TRUE(Eventually([&] { return m_site.Count("V0/Changes") > opened; }));
    EXPECT_TRUE(m_site.Targets("V0/Changes").back().ends_with(query)) << m_site.Targets("V0/Changes").back();
    ASSERT_TRUE(Eventually([&] { return m_site.Streams() == 1; }));
  };
  ASSERT_TRUE(Eventually([&] { return m_site.Streams() == 1; }));
  EXPECT_TRUE(m_site.Targets("V0/Changes").back().ends_with("?After=50&History=first"));
  m_site.SetHistory("second");  // a restart
  expectNext("?After=50&History=first");
  expectNext("?After=50&History=second");

  // Another history's numbers count for nothing, though they are higher.
  m_site.SetHistory("third");
  m_site.SetNumbered(kGroup, View(5, "w", 3), 60);
  m_site.AnswerOnce("V0/Changes", Replying(410, "", "Resource-History: third\r\n"));
  m_site.EndStream();
  ExpectCalls(2, {"G " + Groups(""), "V " + Views(R"({"ID":5,"Name":"w","Method":1})")});
  ASSERT_TRUE(Eventually([&] { return m_site.Targets("V0/Changes").back().ends_with("?After=60&History=third"); }));
}

// --- The relay by itself, where a site would have to be met at one moment of its work

using ResourceStore::details::ChangeRelay;
using ResourceStore::details::ListKind;
using Texts = std::vector<std::string>;

// Whatever is told is noted as its kind and its ids with their numbers and methods.
class RelayTest : public testing::Test {
 protected:
  using Step = std::function<void(RelayTest&)>;
  struct Row {
    const char* what;
    std::vector<Step> steps;
    Texts told;
  };

  void Start() {
    relay = std::make_unique<ChangeRelay>();
    for (const ListKind kind : {ListKind::Groups, ListKind::Views}) {
      relay->Slot(kind).Set([this, kind](const std::string& text) {
        const bool ofViews = kind == ListKind::Views;
        ResourceStore::details::ListDocument document;
        ReadListDocument(text, ofViews ? ResourceStore::details::kViewNames : ResourceStore::details::kViewGroupNames,
                         true, document);
        std::string heard = ofViews ? "V" : "G";
        for (const auto& element : document.elements) {
          heard += " " + std::to_string(*element.id) + "#" + std::to_string(element.number) + "/" +
                   std::to_string(element.method);
        }
        told.push_back(heard);
      });
    }
  }
  void Expect(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
      Start();
      for (const Step& step : row.steps) step(*this);
      EXPECT_EQ(std::exchange(told, {}), row.told) << row.what;
    }
  }

  // Both lists, each up to its number.
  struct Lists {
    int groupsNumber, viewsNumber;
    std::string groups = kGroup, views = View(5, "v", 4);
    bool areNumbered = true;

    ResourceStore::details::DownloadedList List(const char* kind, const std::string& elements, int number) const {
      return {ListOf(kind, elements, areNumbered ? number : 0), static_cast<uint64_t>(number), areNumbered};
    }
    ResourceStore::details::DownloadedList Groups() const { return List("ViewGroup", groups, groupsNumber); }
    ResourceStore::details::DownloadedList Views() const { return List("View", views, viewsNumber); }
  };
  static Step Load(const Lists& lists) {
    return [=](RelayTest& t) { t.relay->Downloaded(lists.Groups(), lists.Views()); };
  }
  static Step Again(const Lists& lists) {
    return [=](RelayTest& t) { t.relay->DownloadedAgain(lists.Groups(), lists.Views()); };
  }
  static Step Clear() {
    return [](RelayTest& t) { t.relay->Clear(); };
  }
  static Step HandOut(ListKind kind) {
    return [=](RelayTest& t) { t.relay->Text(kind); };
  }
  static Step Hear(int number, const char* type = "OwnViews", int id = 5, const char* method = "1") {
    return [=](RelayTest& t) { t.relay->TakeEvent(number, type, Views(View(id, "v", number, method))); };
  }
  static Step HearUnnumbered(int number) {
    return [=](RelayTest& t) { t.relay->TakeEvent(number, "OwnViews", Views(View(5, "v", 0, "1"))); };
  }
  // Edits by their tickets, which count from 1. Number 0: the answer is lost; -1: it says none. What is added has the
  // ID 6.
  static Step Send() {
    return [](RelayTest& t) { t.relay->OnEditBegins(); };
  }
  static Step End(uint64_t ticket, int number, const std::string& name = "V0/Views/5", int error = 0) {
    return [=](RelayTest& t) {
      NetLink::CClientSendInfo send;
      send.SetVal_URL(kPlatformRoot + name);
      const std::string data = R"({"View":{"ID":6},"ChangeNumber":")" + std::to_string(number) + "\"}";
      const std::string answer = Envelope(data, error);
      t.relay->OnEditEnds(ticket, send, number == 0 ? "" : answer);
      t.relay->TellDue();
    };
  }

  // So many edits, each sent and answered with the next number from there on.
  static Step Edits(int count, int number) {
    return [=](RelayTest& t) {
      for (int i = 0; i < count; ++i) End(t.relay->OnEditBegins(), number + i)(t);
    };
  }
  // So many downloads, each up to the next number from there on, or all up to that one.
  static Step AgainAndAgain(int count, int number, int step = 1) {
    return [=](RelayTest& t) {
      for (int i = 0; i < count; ++i) Again({number + i * step, number + i * step})(t);
    };
  }

  std::unique_ptr<ChangeRelay> relay;
  Texts told;
};

TEST_F(RelayTest, TellsEachOwnEditOnceOrNotAtAll) {
  const Step load = Load({50, 50}), again = Again({60, 60}), send = Send();
  const std::string group = "V0/ViewGroups/1";
  const Step handOutGroups = HandOut(ListKind::Groups), handOutViews = HandOut(ListKind::Views);
  Expect({
      {"answered during the download that just holds it", {send, End(1, 50), load, again}, {}},
      {"answered during the download before it", {send, End(1, 55), load, Hear(55), again}, {}},
      {"answered, and heard of", {load, send, End(1, 51), Hear(51), again}, {}},
      {"answered, and heard of as a colleague's", {load, send, End(1, 51), Hear(51, "Views")}, {"V 5#51/1"}},
      {"a colleague's that the list holds", {load, Hear(50, "Views"), Hear(51, "Views")}, {"V 5#51/1"}},
      {"heard of before the answer",
       {load, send, send, Hear(51), handOutViews, End(2, 53, "V0/Views/7"), End(1, 51)},
       {}},
      {"handed out in between", {load, send, End(1, 51), handOutViews, Hear(51)}, {"V 5#51/1"}},
      {"the others handed out in between", {load, send, End(1, 51, "V0/Views"), handOutGroups, Hear(51)}, {}},
      {"the last that the first list held, answered late", {load, send, End(1, 50), again}, {}},
      {"the same after the download", {load, send, again, End(1, 50)}, {}},
      {"the first passed over", {load, send, again, End(1, 51)}, {"V 5#4/1"}},
      {"the last passed over", {load, send, again, End(1, 60)}, {"V 5#4/1"}},
      {"the last passed over, answered before", {load, send, End(1, 60), again}, {"V 5#4/1"}},
      {"added, and passed over", {load, send, End(1, 60, "V0/Views"), again}, {"V 6#60/2"}},
      {"heard of, and answered after a download", {load, send, Hear(51), again, End(1, 51)}, {}},
      {"of a group whose list held it", {Load({60, 50}), send, again, End(1, 55, group)}, {}},
      {"of a group, passed over", {load, send, again, End(1, 55, group)}, {"G 1#3/1"}},
      {"of a group, passed over by its list alone", {load, Again({70, 60}), send, End(1, 65, group)}, {"G 1#3/1"}},
      {"answered for an ID that no ID can be", {load, send, End(1, 51, "V0/Views/4294967301"), Hear(51)}, {"V 5#51/1"}},
      {"refused with a number", {load, send, Hear(51), End(1, 51, "V0/Views/5", 4)}, {"V 5#51/1"}},
      {"lost before its event", {load, send, End(1, 0), Hear(51)}, {"V 5#51/1"}},
      {"added, and lost", {load, send, Hear(51, "OwnViews", 6, "0"), End(1, 0)}, {"V 6#51/0"}},
      {"two on their way, the first of them lost", {load, send, send, Hear(51), End(1, 0), End(2, 51)}, {}},
      {"two on their way, both lost", {load, send, send, Hear(51), End(2, 0), End(1, 0)}, {"V 5#51/1"}},
      {"lost while a later one is on its way", {load, send, Hear(51), send, End(1, 0)}, {"V 5#51/1"}},
      {"answered after two later were lost", {load, send, Hear(51), send, send, End(2, 0), End(1, 51), End(3, 0)}, {}},
      {"of a run before, answered there", {load, send, End(1, 51), Clear(), load, Hear(51)}, {"V 5#51/1"}},
      {"passed over eight downloads ago", {load, send, again, AgainAndAgain(7, 61), End(1, 60)}, {"V 5#4/1"}},
      {"passed over too long ago", {load, send, again, AgainAndAgain(8, 61), End(1, 60)}, {}},
      {"passed over before downloads of nothing new",
       {load, send, again, AgainAndAgain(16, 60, 0), End(1, 60)},
       {"V 5#4/1"}},
      {"answered before many others", {load, Edits(65536, 51), Hear(51)}, {}},
      {"answered before too many others", {load, Edits(65537, 51), Hear(51)}, {"V 5#51/1"}},
  });
}

TEST_F(RelayTest, TellsTheDifferenceThenWhatADownloadPassedOver) {
  const Lists before{50, 50, kGroup + "," + View(2, "goes", 7), View(5, "v", 4) + "," + View(7, "goes", 6)};
  const Lists after{60, 60, View(1, "h", 54), View(5, "new", 52) + "," + View(8, "v", 51)};
  const Step edits[] = {End(1, 52), End(2, 53, "V0/Views/7"), End(3, 54, "V0/ViewGroups/1"), End(4, 70, "V0/Views/8")};
  Start();
  Load(before)(*this);
  Hear(51, "Views", 8)(*this);
  for (const Step& end : edits) {
    Send()(*this);
    end(*this);
  }
  Again(after)(*this);
  Hear(70, "OwnViews", 8)(*this);
  EXPECT_EQ(told, (Texts{"V 8#51/1", "G 1#54/1", "V 7#60/2", "V 5#52/1", "G 2#60/2",  // the difference up to here
                         "G 1#54/1", "V 5#52/1", "V 7#60/2"}));
}

TEST_F(RelayTest, NumbersBeginAnewAndOwnEditsAreToldOnlyWhereSomeWereGiven) {
  const auto run = [](int number) {
    return [=](RelayTest& t) {
      Clear()(t);
      Load({number, number})(t);
    };
  };
  const Step unnumbered = Load({50, 50, kGroup, View(5, "v", 4), false});
  const auto bare = [](int number) { return Lists{number, number, kGroup, View(5, "v", 0), false}; };
  const Step handOut = HandOut(ListKind::Views);
  Expect({
      {"by lists", {run(50), run(50), run(49), run(49), run(20), run(30)}, {"G", "V", "G", "V"}},
      {"by events", {unnumbered, Hear(51, "Views"), Clear(), unnumbered, Clear(), unnumbered}, {"V 5#51/1", "G", "V"}},
      {"by both", {run(60), Hear(75), run(74), run(74)}, {"V 5#75/1", "G", "V"}},
      {"by none", {unnumbered, Clear(), Load({49, 49, kGroup, "", false})}, {}},
      {"after lost changes, the groups' alone", {run(50), Again({20, 60})}, {"G", "V"}},
      {"after lost changes, by one", {run(50), Again({49, 50})}, {"G", "V"}},
      {"after lost changes, the views' alone", {run(50), Again({60, 20})}, {"G", "V"}},
      {"after lost changes, whereby an answer is another server's",
       {run(50), Send(), End(1, 70), Again({20, 20, kGroup, View(5, "w", 2) + "," + View(6, "w", 3)}), Hear(70)},
       {"G", "V 5#0/1 6#0/0", "V 5#70/1"}},
      {"by none, whatever comes first, answers and events, and whether downloads and runs go on or back",
       {Load(bare(50)), Send(), End(1, -1), handOut, HearUnnumbered(51), Send(), HearUnnumbered(52), handOut, End(2, 0),
        HearUnnumbered(53), Send(), End(3, -1), Again(bare(60)), Send(), End(4, -1), Again(bare(40)), Clear(),
        Load(bare(30)), HearUnnumbered(31)},
       {}},
  });
}

TEST_F(RelayTest, TellsNothingOnceTheRunHasBeenCancelled) {
  Start();
  BizShared::details::CCanceller canceller;
  relay->SetSleeper(&canceller);
  Load({50, 50})(*this);
  Hear(51, "Views")(*this);
  canceller.Cancel();
  Hear(52, "Views")(*this);
  EXPECT_EQ(told, Texts{"V 5#51/1"});
}

}  // namespace
