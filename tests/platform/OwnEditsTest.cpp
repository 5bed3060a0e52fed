// SPDX-License-Identifier: Apache-2.0
// Edits of the user's own at a site that says numbers: which of them the platform calls back, and how often.
#include <algorithm>
#include <set>

#include "../Gate.h"
#include "BizShared/details/Canceller.h"
#include "DownloadFixture.h"
#include "PlatformCalls.h"
#include "ResourceStore/details/ChangeRelay.h"

namespace {

using namespace testing_support;

const std::string kGroup = R"({"ID":1,"Name":"g","ChangeNumber":"3"})";
std::string View(int id, const std::string& name, int number, const std::string& method = "") {
  return "{\"ID\":" + std::to_string(id) + R"(,"Name":")" + name + R"(","ChangeNumber":")" + std::to_string(number) +
         '"' + (method.empty() ? "" : ",\"Method\":" + method) + "}";
}
std::string Gone(int id, int number) {
  return "{\"ID\":" + std::to_string(id) + R"(,"ChangeNumber":")" + std::to_string(number) + R"(","Method":2})";
}
// The event of a change of view 5, and the same as it is called back.
std::string Change(int number, const std::string& type = "OwnViews") {
  return Event(number, type, Views(View(5, "new", number, "1")));
}
std::string Called(int number) {
  return "V " + Views(View(5, "new", number, "1"));
}

// An edit that is on its way from here on, on a thread of its own.
class SentEdit {
 public:
  // `answer` answers it once it is to end.
  SentEdit(ScriptedSite& site, const std::string& name, ScriptedSite::Override answer,
           const std::string& method = "PUT") {
    site.AnswerOnce(name, [this, answer = std::move(answer)](const Request& request, Connection& connection) {
      m_gate.Pass();
      answer(request, connection);
    });
    m_sender = std::async(std::launch::async, [=] { Send(method, kPlatformRoot + name); });
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

  static ScriptedSite::Override Accept(int number) {
    return [number](const Request& request, Connection& c) {
      const std::string added = request.method == "POST" ? R"("View":{"ID":6},)" : "";
      c.ReplyData("{" + added + R"("ChangeNumber":")" + std::to_string(number) + "\"}");
    };
  }
  void Edit(int number, const std::string& name = "V0/Views/5", const std::string& method = "PUT") {
    m_site.AnswerOnce(name, Accept(number));
    EXPECT_TRUE(Send(method, kPlatformRoot + name).starts_with("0/0"));
  }
  static bool TextSays(const std::string& what) { return TextOfViews().find(what) != std::string::npos; }
  bool HasTaken(int number) const {
    // Looks at the texts of groups alone: no edit of this test is one of theirs.
    return TextOfGroups().find("\"m" + std::to_string(number) + '"') != std::string::npos;
  }
  // Has the platform take all that was streamed before.
  void StreamUpTo(int number) {
    const std::string marker = R"({"ID":90,"Name":"m)" + std::to_string(number) + R"(","ChangeNumber":")" +
                               std::to_string(number) + R"(","Method":1})";
    m_site.Stream(Event(number, "ViewGroups", Groups(marker)));
    EXPECT_TRUE(Eventually([&] { return HasTaken(number); }));
  }
  // Ends the stream, of which the server then has forgotten too much, and waits for the next.
  void LoseChanges() {
    const int opened = m_site.StreamsOpened();
    m_site.AnswerOnce("V0/Changes", [](const Request&, Connection& c) { c.ReplyError(410, 100, 6); });
    m_site.EndStream();
    ASSERT_TRUE(Eventually([&] { return m_site.StreamsOpened() > opened; }));
  }
  // All that is called back until two further changes have been, without those: what ends of edits have left to be told
  // comes between the two at the latest.
  std::vector<std::string> AllCalls(int nextNumber) {
    StreamUpTo(nextNumber);
    StreamUpTo(nextNumber + 1);
    std::vector<std::string> calls = Calls();
    std::erase_if(calls, [](const std::string& call) { return call.find(R"("ID":90)") != std::string::npos; });
    return calls;
  }
  size_t Threads() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_threads.size();
  }

  std::set<std::thread::id> m_threads;  // that called back
};

using Texts = std::vector<std::string>;

TEST_F(OwnEditsTest, AreNotCalledBackWhereTheirAnswersTellThem) {
  Load();
  Edit(51);
  m_site.Stream(Change(51));
  // The event before its answer; so also where others are on their way, and a text is handed out meanwhile.
  SentEdit first(m_site, "V0/Views/5", Accept(52));
  SentEdit other(m_site, "V0/Views/7", Accept(53));
  m_site.Stream(Change(52));
  StreamUpTo(54);
  EXPECT_TRUE(TextSays("52"));
  other.End();
  first.End();
  // A text of the other kind handed out before the event.
  Edit(55, "V0/Views", "POST");
  TextOfGroups();
  m_site.Stream(Event(55, "OwnViews", Views(View(6, "six", 55, "0"))));
  EXPECT_EQ(AllCalls(56), Texts());
  EXPECT_EQ(TextOfViews(), Views(View(5, "new", 52) + "," + View(6, "six", 55), 55));
}

TEST_F(OwnEditsTest, AreCalledBackWhereALoadMayHaveReplacedWhatTheAnswerSaid) {
  Load();
  Edit(51);
  TextOfViews();
  m_site.Stream(Change(51));
  EXPECT_EQ(AllCalls(52), Texts{Called(51)});
}

TEST_F(OwnEditsTest, AreCalledBackOnTheStreamsThreadWhenTheirAnswersAreLost) {
  const ScriptedSite::Override lose = [](const Request&, Connection& c) { c.Close(); };
  const ScriptedSite::Override refuse = [](const Request&, Connection& c) { c.ReplyError(500, 100, 8); };
  Load();
  int number = 51;
  Texts expected;
  for (const auto& failure : {lose, refuse}) {
    // Lost after its event came: soon, though an edit that was sent later is still on its way.
    SentEdit first(m_site, "V0/Views/5", failure);
    m_site.Stream(Change(number));
    StreamUpTo(number + 1);
    SentEdit later(m_site, "V0/Views/7", Accept(number + 3));
    EXPECT_TRUE(std::ranges::none_of(Calls(), [&](const auto& call) { return call == Called(number); }));
    first.End();
    expected.push_back(Called(number));
    EXPECT_TRUE(Eventually([&] { return std::ranges::count(Calls(), Called(number)) == 1; }));
    // An added one is told as added.
    SentEdit added(m_site, "V0/Views", failure, "POST");
    const std::string six = View(6, "six", number + 2, "0");
    m_site.Stream(Event(number + 2, "OwnViews", Views(six)));
    StreamUpTo(number + 4);
    later.End();
    added.End();
    expected.push_back("V " + Views(six));
    // Lost before its event comes.
    SentEdit last(m_site, "V0/Views/5", failure);
    last.End();
    m_site.Stream(Change(number + 5));
    expected.push_back(Called(number + 5));
    EXPECT_EQ(AllCalls(number + 6), expected);
    number += 8;
  }
  EXPECT_EQ(Threads(), 1u);
}

TEST_F(OwnEditsTest, AreCalledBackWithTheirNumbersWhenADownloadPassedTheirEventsOver) {
  m_site.SetNumbered(kGroup, View(5, "v", 4) + "," + View(7, "goes", 6) + "," + View(8, "same", 5), 50);
  Load();
  Edit(51);
  Edit(52, "V0/Views/7", "DELETE");
  Edit(53, "V0/ViewGroups/1");
  Edit(70, "V0/Views/8");
  m_site.SetNumbered(R"({"ID":1,"Name":"h","ChangeNumber":"53"})", View(5, "new", 51) + "," + View(8, "same", 5), 60);
  LoseChanges();
  // First the difference, then each of them once more; what the list does not hold yet comes on the stream.
  m_site.Stream(Event(70, "OwnViews", Views(View(8, "same", 70, "1"))));
  const std::string renamed = "G " + Groups(R"({"ID":1,"Name":"h","ChangeNumber":"53","Method":1})");
  const std::string gone = "V " + Views(Gone(7, 60));
  EXPECT_EQ(AllCalls(71), (Texts{renamed, gone, Called(51), renamed, Called(51), gone}));
}

TEST_F(OwnEditsTest, AreCalledBackSoonWhenTheyAreAnsweredAfterADownloadThatPassedThemOver) {
  Load();
  int number = 60;
  std::chrono::steady_clock::duration quickest = 1h;
  // Once is enough: the machine may be busy.
  for (int attempt = 0; attempt < 5 && quickest > 500ms; ++attempt, number += 20) {
    SentEdit edit(m_site, "V0/Views/5", Accept(number - 5));
    SentEdit beyond(m_site, "V0/Views/6", Accept(number + 5));
    m_site.SetNumbered(kGroup, View(5, "new", number - 5), number);
    LoseChanges();
    const size_t before = Calls().size();
    beyond.End();
    const auto answered = std::chrono::steady_clock::now();
    edit.End();
    ASSERT_TRUE(Eventually([&] { return Calls().size() > before; }));
    quickest = std::min(quickest, std::chrono::steady_clock::now() - answered);
    m_site.Stream(Event(number + 5, "OwnViews", Views(View(6, "six", number + 5, "0"))));
    StreamUpTo(number + 6);
    StreamUpTo(number + 7);
    EXPECT_EQ(std::ranges::count(Calls(), Called(number - 5)), 2) << "in the difference, and once after the answer";
    EXPECT_TRUE(std::ranges::none_of(Calls(), [](const auto& call) { return call.find("six") != std::string::npos; }));
  }
  EXPECT_LT(quickest, 500ms) << "the silent stream's thread was not woken";
  EXPECT_EQ(Threads(), 1u);
}

TEST_F(OwnEditsTest, AnsweredAfterTheirEventsAndADownloadBothCameAreNotCalledBackOnceMore) {
  Load();
  SentEdit edit(m_site, "V0/Views/5", Accept(51));
  m_site.Stream(Change(51));
  StreamUpTo(52);
  m_site.SetNumbered(kGroup + R"(,{"ID":90,"Name":"m52","ChangeNumber":"52"})", View(5, "new", 51), 60);
  LoseChanges();
  edit.End();
  EXPECT_EQ(AllCalls(61), Texts());
}

TEST_F(OwnEditsTest, OfASessionThatWasRenewedAreTakenForAColleagues) {
  CNetCommManager::Instance().SetToken("first");
  Load();
  Edit(51);
  const int opened = m_site.StreamsOpened();
  CNetCommManager::Instance().SetToken("second");
  m_site.Stream(Change(51));  // seen by the old session
  ASSERT_TRUE(Eventually([&] { return m_site.StreamsOpened() > opened; }));
  m_site.Stream(Change(51, "Views"));
  EXPECT_EQ(AllCalls(52), Texts{Called(51)});
}

TEST_F(OwnEditsTest, NumbersThatBeginAnewInAnotherRunAreToldByEmptyDocuments) {
  const Texts anew = {"G " + Groups(""), "V " + Views("")};
  const struct {
    int number, event;
    bool beginsAnew;
  } runs[] = {{50, 0, false}, {50, 0, false}, {60, 75, false}, {74, 0, true},
              {74, 0, false}, {20, 0, true},  {30, 0, false}};
  for (const auto& run : runs) {
    Manager().Stop();
    const size_t before = Calls().size();
    const int opened = m_site.StreamsOpened();
    m_site.SetNumbered(kGroup, View(5, "v", 4), run.number);
    Load();
    ASSERT_TRUE(Eventually([&] { return m_site.StreamsOpened() > opened; }));
    if (run.event != 0) {
      m_site.Stream(Change(run.event));
      EXPECT_TRUE(Eventually([&] { return Calls().size() > before; }));
      EXPECT_TRUE(TextSays(std::to_string(run.event)));
    }
    const Texts calls = Calls();
    const Texts told(calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end());
    EXPECT_EQ(told, run.event != 0 ? Texts{Called(run.event)} : run.beginsAnew ? anew : Texts()) << run.number;
  }
}

TEST_F(OwnEditsTest, NumbersThatBeginAnewInADownloadAreToldByADifferenceWithoutNumbers) {
  Load();
  Edit(70);  // of the server as it was
  m_site.SetNumbered(kGroup, View(5, "restored", 2) + "," + View(6, "restored", 3), 20);
  LoseChanges();
  // The edit of that number now is another; its answer was lost with the server.
  m_site.Stream(Event(70, "OwnViews", Views(View(5, "v", 70, "1"))));
  StreamUpTo(71);
  const std::string difference =
      "V " + Views(R"({"ID":5,"Name":"restored","Method":1},{"ID":6,"Name":"restored","Method":0})");
  EXPECT_EQ(AllCalls(72), (Texts{"G " + Groups(""), difference, "V " + Views(View(5, "v", 70, "1"))}));
}

// --- The relay by itself, where a site would have to be met at one moment of its work

using ResourceStore::details::ChangeRelay;
using ResourceStore::details::ListKind;

// Whatever is told is noted as its kind and its ids with their numbers and methods; "-" stands for nothing.
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

  // Both lists, each up to its number; they hold view 5 and group 1, always the same.
  static ResourceStore::details::DownloadedList GroupsUpTo(int number, bool says = true) {
    return {Groups(kGroup, says ? number : 0), static_cast<uint64_t>(number), says};
  }
  static ResourceStore::details::DownloadedList ViewsUpTo(int number, bool says = true) {
    return {Views(View(5, "v", 4), says ? number : 0), static_cast<uint64_t>(number), says};
  }
  static Step Load(int groups, int views, bool says = true) {
    return [=](RelayTest& t) { t.relay->Downloaded(GroupsUpTo(groups, says), ViewsUpTo(views, says)); };
  }
  static Step Again(int groups, int views) {
    return [=](RelayTest& t) { t.relay->DownloadedAgain(GroupsUpTo(groups), ViewsUpTo(views)); };
  }
  static Step Clear() {
    return [](RelayTest& t) { t.relay->Clear(); };
  }
  static Step Hear(int number, const char* type = "OwnViews") {
    return [=](RelayTest& t) { t.relay->TakeEvent(number, type, Views(View(5, "v", number, "1"))); };
  }
  // Edits by their tickets, which count from 1. Number 0: the answer is lost.
  static Step Send() {
    return [](RelayTest& t) { t.relay->OnEditBegins(); };
  }
  static Step End(uint64_t ticket, int number, const std::string& name = "V0/Views/5", int error = 0) {
    return [=](RelayTest& t) {
      NetLink::CClientSendInfo send;
      send.SetVal_URL(kPlatformRoot + name);
      const std::string answer = R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":)" + std::to_string(error) +
                                 R"(,"Data":{"ChangeNumber":")" + std::to_string(number) + "\"}}}";
      t.relay->OnEditEnds(ticket, send, number == 0 ? "" : answer);
      t.relay->TellDue();
    };
  }

  std::unique_ptr<ChangeRelay> relay;
  Texts told;
};

TEST_F(RelayTest, TellsEachOwnEditOnceOrNotAtAll) {
  const Step load = Load(50, 50), again = Again(60, 60), send = Send();
  const Row rows[] = {
      {"answered during the download that holds it", {send, End(1, 45), load, again}, {}},
      {"answered during the download before it", {send, End(1, 55), load, Hear(55), again}, {}},
      {"answered, and heard of", {load, send, End(1, 51), Hear(51), again}, {}},
      {"the last that the first list held, answered late", {load, send, End(1, 50), again}, {}},
      {"the same after the download", {load, send, again, End(1, 50)}, {}},
      {"the first passed over", {load, send, again, End(1, 51)}, {"V 5#4/1"}},
      {"the last passed over", {load, send, again, End(1, 60)}, {"V 5#4/1"}},
      {"the last passed over, answered before", {load, send, End(1, 60), again}, {"V 5#4/1"}},
      {"of a group whose list held it before the gap", {Load(60, 50), send, again, End(1, 55, "V0/ViewGroups/1")}, {}},
      {"of a group, passed over", {load, send, again, End(1, 55, "V0/ViewGroups/1")}, {"G 1#3/1"}},
      {"refused with a number", {load, send, Hear(51), End(1, 51, "V0/Views/5", 4)}, {"V 5#51/1"}},
      {"two on their way, the first of them lost", {load, send, send, Hear(51), End(1, 0), End(2, 51)}, {}},
      {"two on their way, both lost", {load, send, send, Hear(51), End(2, 0), End(1, 0)}, {"V 5#51/1"}},
      {"lost while a later one is on its way", {load, send, Hear(51), send, End(1, 0)}, {"V 5#51/1"}},
      {"of a run before, answered there", {load, send, End(1, 51), Clear(), load, Hear(51)}, {"V 5#51/1"}},
  };
  for (const Row& row : rows) {
    Start();
    for (const Step& step : row.steps) step(*this);
    EXPECT_EQ(std::exchange(told, {}), row.told) << row.what;
  }
}

TEST_F(RelayTest, NumbersBeginAnewOnlyWhereSomeWereGiven) {
  const Row rows[] = {
      {"by lists", {Load(50, 50), Clear(), Load(49, 49)}, {"G", "V"}},
      {"by events", {Load(50, 50, false), Hear(51, "Views"), Clear(), Load(50, 50, false)}, {"V 5#51/1", "G", "V"}},
      {"by none", {Load(50, 50, false), Clear(), Load(49, 49, false)}, {}},
  };
  for (const Row& row : rows) {
    Start();
    for (const Step& step : row.steps) step(*this);
    EXPECT_EQ(std::exchange(told, {}), row.told) << row.what;
  }
}

TEST_F(RelayTest, TellsNothingOnceTheRunHasBeenCancelled) {
  Start();
  BizShared::details::CCanceller canceller;
  relay->SetSleeper(&canceller);
  Load(50, 50)(*this);
  Hear(51, "Views")(*this);
  canceller.Cancel();
  Hear(52, "Views")(*this);
  EXPECT_EQ(told, Texts{"V 5#51/1"});
}

}  // namespace
