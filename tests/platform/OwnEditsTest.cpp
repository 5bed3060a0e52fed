// SPDX-License-Identifier: Apache-2.0
// Edits of the user's own at a site that says numbers: which of them the platform calls back, and how often.
#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

#include "../Cases.h"
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
  void Start() {
    relay = std::make_unique<ChangeRelay>();
    groups = kGroup;
    views = View(5, "v", 4);
    unnumbered.clear();
    told.clear();
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
  // The rows of the running test, each with a relay of its own.
  void ExpectRows() {
    for (const auto& [row, expected] : Cases(RELAY_STEPS)) {
      Start();
      std::istringstream steps(row.substr(row.find(':') + 1));
      for (std::string step; std::getline(steps, step, ',');) Do(step);
      EXPECT_EQ(told, expected) << row;
    }
  }

  // A step of a row.
  void Do(const std::string& step) {
    std::istringstream stream(step);
    const Texts words{std::istream_iterator<std::string>(stream), {}};
    if (const size_t times = step.find(" times "); times != std::string::npos) {
      for (int i = std::stoi(words.at(0)); i > 0; --i) Do(step.substr(times + 7));
      return;
    }
    const auto word = [&](size_t at, const std::string& otherwise) {
      return at < words.size() ? words[at] : otherwise;
    };
    // 0 where the word is none, of which the step makes something else.
    const auto number = [&](size_t at, int otherwise) {
      return at < words.size() ? std::atoi(words[at].c_str()) : otherwise;
    };
    const int first = number(1, 0), second = number(2, first);
    const std::map<std::string, std::function<void()>> steps = {
        {"groups", [&] { groups = Elements(words); }},
        {"views", [&] { views = Elements(words); }},
        {"unnumbered", [&] { unnumbered = word(1, "both"); }},
        {"load", [&] { relay->Downloaded(List("ViewGroup", groups, first), List("View", views, second)); }},
        {"again", [&] { relay->DownloadedAgain(List("ViewGroup", groups, first), List("View", views, second)); }},
        {"clear", [&] { relay->Clear(); }},
        {"text", [&] { relay->Text(word(1, "") == "groups" ? ListKind::Groups : ListKind::Views); }},
        {"hear",
         [&] {
           const std::string view = View(number(3, 5), "v", number(5, first), word(4, "1"));
           relay->TakeEvent(static_cast<uint64_t>(first), word(2, "OwnViews"), Views(view));
         }},
        {"send", [&] { relay->OnEditBegins(); }},
        {"end", [&] { End(static_cast<uint64_t>(first), second, word(3, "V0/Views/5"), number(4, 0)); }},
        {"edits",
         [&] {
           for (int i = 0; i < first; ++i) End(relay->OnEditBegins(), second + i, "V0/Views/5", 0);
         }},
    };
    steps.at(words.at(0))();
  }

  // Of elements as rows have them: "v5#4" is named v, has the ID 5, and was last changed by number 4.
  static std::string Elements(const Texts& words) {
    std::string elements;
    for (size_t at = 1; at < words.size(); ++at) {
      const std::string& word = words[at];
      elements += (at > 1 ? "," : "") +
                  View(std::stoi(word.substr(1)), word.substr(0, 1), std::stoi(word.substr(word.find('#') + 1)));
    }
    return elements;
  }
  ResourceStore::details::DownloadedList List(const char* kind, const std::string& elements, int number) const {
    const bool isNumbered = unnumbered != "both" && unnumbered != kind;
    return {ListOf(kind, elements, isNumbered ? number : 0), static_cast<uint64_t>(number), isNumbered};
  }
  // What is added has the ID 6.
  void End(uint64_t ticket, int number, const std::string& name, int error) {
    NetLink::CClientSendInfo send;
    send.SetVal_URL(name.starts_with('/') ? name : kPlatformRoot + name);
    const std::string data = R"({"View":{"ID":6},"ChangeNumber":")" + std::to_string(number) + "\"}";
    relay->OnEditEnds(ticket, send, number == 0 ? "" : Envelope(data, error));
    relay->TellDue();
  }

  std::unique_ptr<ChangeRelay> relay;
  std::string groups, views;  // that the lists to come hold
  std::string unnumbered;     // which of them does not say its number, or "both"
  Texts told;
};

TEST_F(RelayTest, TellsEachOwnEditOnceOrNotAtAll) {
  ExpectRows();
}

TEST_F(RelayTest, TellsTheDifferenceThenWhatADownloadPassedOver) {
  ExpectRows();
}

TEST_F(RelayTest, NumbersBeginAnewAndOwnEditsAreToldOnlyWhereSomeWereGiven) {
  ExpectRows();
}

TEST_F(RelayTest, TellsNothingOnceTheRunHasBeenCancelled) {
  Start();
  BizShared::details::CCanceller canceller;
  relay->SetSleeper(&canceller);
  Do("load 50");
  Do("hear 51 Views");
  canceller.Cancel();
  Do("hear 52 Views");
  EXPECT_EQ(told, Texts{"V 5#51/1"});
}

}  // namespace
