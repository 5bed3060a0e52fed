// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <cstdlib>
#include <future>
#include <vector>

#include "../Gate.h"
#include "DownloadFixture.h"
#include "ResourceStore/Element.h"
#include "ResourceStore/OrlUserManager.h"
#include "ResourceStore/UpdateCallbackSlot.h"
#include "VantBase/Log.h"

namespace {

using namespace testing_support;

using ViewDownloadTest = DownloadTest;

const std::string kView6 = R"({"ID":6,"Name":"six","Method":0})";

TEST_F(ViewDownloadTest, DownloadsTheListsThenFollowsAfterTheGroupsNumber) {
  EXPECT_FALSE(Manager().IsViewDownloadSuccess());
  Load();
  Manager().Start();  // harmless
  EXPECT_EQ(TextOfGroups(), Groups(R"({"ID":1,"Name":"g"})"));
  EXPECT_EQ(TextOfViews(), Views(R"({"ID":5,"Name":"v"})"));
  EXPECT_EQ(ResourceStore::CElementManager::Instance().GetAreaNameByID(3), "Yard");

  const std::string old = Views(R"({"ID":5,"Name":"old","Method":1})");
  m_site.Stream(Event(11, "Views", old) + Event(12, "OwnViews", old) +
                Event(12, "ViewGroups", Groups(R"({"ID":1,"Name":"late duplicate","Method":1})")) +
                Event(13, "Views", Views(kView6)) + Event(13, "Views", Views(R"({"ID":6,"Method":2})")) +
                ": comment\n\n<html>\n\ndata: no number\n\nid: x\ndata: y\n\n" + Event(14, "Weather", "{}") +
                Event(15, "Views", "no JSON") + Event(16, "ViewGroups", Groups(R"({"ID":1,"Name":"h","Method":1})")));
  ExpectCalls(3, {"V " + Views(kView6), "V no JSON", "G " + Groups(R"({"ID":1,"Name":"h","Method":1})")});
  EXPECT_EQ(TextAtLastCall(), Groups(R"({"ID":1,"Name":"h"})")) << "texts are updated before the call";
  EXPECT_EQ(TextOfViews(), Views(R"({"ID":5,"Name":"v"},{"ID":6,"Name":"six"})"));
  EXPECT_EQ(m_site.Targets("V0/Changes").front(), "/NXAPI/Vantorel/Platform/V0/Changes?After=10");
  EXPECT_EQ(m_site.Server().Requests()[1].target, "/NXAPI/Vantorel/Platform/V0/ViewGroups") << "areas, groups, views";
  for (const auto& request : m_site.Server().Requests()) {
    const bool isStream = request.target.find("V0/Changes") != std::string::npos;
    EXPECT_EQ(request.headers.at("accept-encoding") == "gzip", isStream) << request.target;
  }

  Manager().Stop();
  EXPECT_FALSE(Manager().IsViewDownloadSuccess());
  EXPECT_EQ(TextOfViews() + TextOfGroups(), "");
  EXPECT_EQ(ResourceStore::CElementManager::Instance().GetAreaNameByID(3), "") << "the next user may not see it";
  Manager().Stop();
  Load();  // a new run starts afresh
  EXPECT_EQ(TextOfViews(), Views(R"({"ID":5,"Name":"v"})"));
}

// What is logged of the views.
struct NotingSink : Vant::Base::ILogSink {
  bool Wants(int) const override { return true; }
  void Write(int level, const char* module, const std::string& text) override {
    if (text.starts_with("V0/Views")) told += std::to_string(level) + " " + module + " " + text + "\n";
  }
  std::string told;
};

TEST_F(ViewDownloadTest, FetchesAListAgainUntilItIsWhole) {
  const std::string sequence = "Resource-Sequence: 1\r\n";
  const std::vector<Answer> failures = {
      Replying(500),
      Refusing(500, 100, 8),
      Replying(200, "<html>rubbish", sequence),
      Replying(200, "", sequence),
      [](const Request&, Connection& c) { c.Close(); },
      [&](const Request&, Connection& c) {
        c.Close();
        c.Send("HTTP/1.1 200 OK\r\nContent-Length: 999\r\n" + sequence + "\r\n{\"ResponseStatus\"");
      },
      ReplyingData("{}"),  // no number: V0/Areas may do without
      Replying(200, Envelope("{}"), "Resource-Sequence: many\r\n"),
  };
  for (const char* list : {"V0/ViewGroups", "V0/Views"}) {
    for (const auto& failure : failures) m_site.AnswerOnce(list, failure);
  }
  for (size_t i = 0; i < 6; ++i) m_site.AnswerOnce("V0/Areas", failures[i]);
  const auto log = std::make_shared<NotingSink>();
  Vant::Base::SetLogSink(log);
  Load();
  Vant::Base::SetLogSink(nullptr);
  EXPECT_EQ(TextOfViews(), Views(R"({"ID":5,"Name":"v"})"));
  EXPECT_EQ(m_site.Count("V0/Areas"), 7);
  EXPECT_EQ(m_site.Count("V0/ViewGroups"), 10);
  EXPECT_EQ(m_site.Count("V0/Views"), 9);
  // Where a kept connection was closed, the transport asks once more by itself.
  std::string told;
  for (const char* how :
       {"(4-500), again in 10 ms", "(100-8), again in 20 ms", "(-1--1), again in 40 ms", "(-1--1), again in 40 ms",
        "(1-18), again in 40 ms", "(-1--1), again in 40 ms", "(-1--1), again in 40 ms"}) {
    told += "4 Platform V0/Views could not be downloaded " + std::string(how) + "\n";
  }
  EXPECT_EQ(log->told, told);
}

// Of group 2 and view 6 in it, made between the two lists, both must be there at once: a group takes in no view later.
TEST_F(ViewDownloadTest, AGroupMadeBetweenTheListsIsThereBeforeItsViews) {
  const std::string group = R"({"ID":2,"Name":"new"})", view = R"({"ID":6,"ViewGroupID":2})";
  const auto makeBoth = [&](const Request&, Connection& c) {
    m_site.SetGroups(R"({"ID":1,"Name":"g"},)" + group, 23);
    m_site.SetViews(view, 22);
    c.Reply(200, Views(view), "Resource-Sequence: 22\r\n");
  };
  const auto expectNoneTwice = [&](size_t calls) {
    m_site.Stream(Event(22, "Views", "in the list") + Event(23, "ViewGroups", "in the list") +
                  Event(23, "OwnViewGroups", "in the list") + Event(24, "ViewGroups", "after it"));
    ExpectCalls(calls, {"G after it"});
    EXPECT_TRUE(m_site.Targets("V0/Changes").back().ends_with("?After=22"));
  };
  m_site.AnswerOnce("V0/Views", makeBoth);
  Load();
  EXPECT_EQ(TextOfGroups(), Groups(R"({"ID":1,"Name":"g"},)" + group));
  expectNoneTwice(1);

  m_site.SetGroups("", 20);
  m_site.SetViews("", 20);
  Manager().Stop();
  const int opened = m_site.StreamsOpened();
  Load();
  ASSERT_TRUE(Eventually([&] { return m_site.StreamsOpened() > opened; }));
  m_site.AnswerOnce("V0/Views", makeBoth);
  m_site.LoseChanges();
  ExpectCalls(3, {"G " + Groups(R"({"ID":1,"Name":"g","Method":0},{"ID":2,"Name":"new","Method":0})"),
                  "V " + Views(R"({"ID":6,"ViewGroupID":2,"Method":0})")});
  EXPECT_EQ(TextAtLastCall(), Views(view));
  expectNoneTwice(4);
}

TEST_F(ViewDownloadTest, AnIdAloneMovesTheStreamOn) {
  Load();
  m_site.Stream("id: 30\n\nid: 31\n\n: still here\n\n");
  m_site.EndStream();
  ASSERT_TRUE(Eventually([&] { return m_site.Count("V0/Changes") >= 2; }));
  EXPECT_TRUE(m_site.Targets("V0/Changes").back().ends_with("?After=31")) << m_site.Targets("V0/Changes").back();
  EXPECT_TRUE(Calls().empty());
}

TEST_F(ViewDownloadTest, ASilentStreamCountsAsLost) {
  SetTimings({10ms, 40ms, 150ms, 20s});
  Load();
  EXPECT_TRUE(Eventually([&] { return m_site.Count("V0/Changes") >= 3; }));
  m_site.AnswerOnce("V0/Changes", Stalling());  // not even a header
  int before = m_site.Count("V0/Changes");
  EXPECT_TRUE(Eventually([&] { return m_site.Count("V0/Changes") >= before + 3; }));
  EXPECT_TRUE(Manager().IsViewDownloadSuccess());
}

TEST_F(ViewDownloadTest, SilenceCountsFromTheRequestAndFromEachPieceThatWasTaken) {
  SetTimings({700ms, 700ms, 500ms, 20s});
  Load();
  m_site.EndStream();  // after the pause the last byte on this connection is older than silence may last
  m_site.AnswerOnce("V0/Changes", [&](const Request&, Connection& c) {
    std::this_thread::sleep_for(150ms);
    c.Close();
    c.Send("HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n\r\n" + Event(19, "Views", "slow"));
    for (int i = 0; i < 5; ++i) {
      std::this_thread::sleep_for(150ms);
      c.Send(": still here\n\n");
    }
    c.Send(Event(20, "Views", "after all"));
  });
  Manager().SetViewsUpdateCallback([this](const std::string& data) {
    if (data == "slow") std::this_thread::sleep_for(600ms);
    Note("V ", data, {});
  });
  ExpectCalls(2, {"V slow", "V after all"});
  EXPECT_EQ(m_site.StreamsOpened(), 1) << "none was given up in between";
}

TEST_F(ViewDownloadTest, TheStreamFollowsAtOnceOnAnotherDownload) {
  SetTimings({1000ms, 1000ms, 30s, 20s});
  Load();
  ASSERT_TRUE(Eventually([&] { return m_site.Streams() == 1; })) << "the first stream would take the answer";
  m_site.AnswerOnce("V0/Changes", Refusing(410, 100, 6));
  m_site.EndStream();
  const int opened = m_site.StreamsOpened();
  ASSERT_TRUE(Eventually([&] { return m_site.Count("V0/Views") >= 2; }));
  const auto downloaded = std::chrono::steady_clock::now();
  ASSERT_TRUE(Eventually([&] { return m_site.StreamsOpened() > opened; }));
  EXPECT_LT(std::chrono::steady_clock::now() - downloaded, 700ms) << "changes of a busy site would be missed again";
}

TEST_F(ViewDownloadTest, AnEventThatIsTooLongIsMadeUpForByAnotherDownload) {
  Load();
  m_site.SetViews(R"({"ID":5,"Name":"w"})", 40);
  m_site.Stream(Event(30, "Views", std::string(size_t{64} << 20, 'x')));
  ExpectCalls(1, {"V " + Views(R"({"ID":5,"Name":"w","Method":1})")});
}

TEST_F(ViewDownloadTest, ARenewedSessionGetsAStreamOfItsOwn) {
  CNetCommManager::Instance().SetToken("first");
  Load();
  m_site.Stream(Event(20, "Views", Views(kView6)));
  ExpectCalls(1, {});
  CNetCommManager::Instance().SetToken("second");
  m_site.Stream(Event(21, "Views", "the new session's own edit, seen by the old one"));
  ASSERT_TRUE(Eventually([&] { return m_site.StreamsOpened() == 2; }));
  m_site.Stream(Event(21, "OwnViews", Views(R"({"ID":5,"Method":2})")));
  EXPECT_TRUE(Eventually([] { return TextOfViews() == Views(R"({"ID":6,"Name":"six"})"); }));
  EXPECT_EQ(Calls().size(), 1u);
  EXPECT_TRUE(m_site.Targets("V0/Changes")[1].ends_with("?After=20"));
}

TEST_F(ViewDownloadTest, StopsAtOnceWhateverItIsDoing) {
  SetTimings({60s, 60s, 60s, 60s});
  auto expectPromptStop = [](const char* what) {
    auto began = std::chrono::steady_clock::now();
    Manager().Stop();
    EXPECT_LT(std::chrono::steady_clock::now() - began, 5s) << what;
  };
  for (const char* list : {"V0/Areas", "V0/ViewGroups", "V0/Views", "V0/Changes"}) {
    for (const Answer& answer : {Stalling(), Replying(500)}) {
      int before = m_site.Count(list);
      m_site.AnswerOnce(list, answer);
      Manager().Start();
      EXPECT_TRUE(Eventually([&] { return m_site.Count(list) > before; })) << list;
      expectPromptStop(list);
    }
  }
  Load();
  EXPECT_TRUE(Eventually([&] { return m_site.Streams() > 0; }));
  expectPromptStop("open stream");
  Manager().Start();
  expectPromptStop("just started");
  CNetCommManager::Instance().SetServer("http://127.0.0.1:1");
  Manager().Start();
  expectPromptStop("no server");
}

// The process of a host that never stops anything: a stream is open, a download of users hangs, and main returns.
[[noreturn]] void RunForgetfulHost() {
  static ScriptedSite site;  // outlives what the platform makes later
  site.AnswerOnce("V0/Users", Stalling());
  CNetCommManager::Instance().SetServer(site.Url());
  Manager().SetViewsUpdateCallback([](const std::string&) {});
  Manager().Start();
  ResourceStore::COrlUserManager::Instance().StartDownLoadOrlUser();
  bool running = Eventually([] { return site.Streams() == 1 && site.Count("V0/Users") == 1; });
  std::exit(running ? 0 : 1);
}

TEST(ProcessExitDeathTest, IsCleanAndPromptWithoutAStop) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto began = std::chrono::steady_clock::now();
  EXPECT_EXIT(RunForgetfulHost(), testing::ExitedWithCode(0), "");
  EXPECT_LT(std::chrono::steady_clock::now() - began, 30s);
}

TEST_F(ViewDownloadTest, ACallMayStartAndSetACallbackThatThrows) {
  Load();
  std::atomic<int> calls{0};
  Manager().SetViewsUpdateCallback([&](const std::string&) {
    ++calls;
    Manager().Start();
    EXPECT_TRUE(Manager().IsViewDownloadSuccess());
    Manager().SetViewsUpdateCallback([&](const std::string&) {
      calls += 10;
      throw std::runtime_error("must not end the stream");
    });
  });
  m_site.Stream(Event(21, "Views", Views("")) + Event(22, "Views", Views("")) + Event(23, "Views", Views("")));
  EXPECT_TRUE(Eventually([&] { return calls == 21; })) << calls;
}

TEST_F(ViewDownloadTest, SettersGettersStartsAndStopsMayOverlap) {
  const auto startAndStop = [] {
    Manager().Start();
    Manager().Stop();
  };
  std::vector<std::jthread> threads;
  for (const std::function<void()>& job : std::initializer_list<std::function<void()>>{
           [] { TextOfViews() + TextOfGroups(); },
           [this] { Manager().SetViewsUpdateCallback([this](const std::string& data) { Note("V ", data, {}); }); },
           startAndStop, startAndStop}) {
    threads.emplace_back([job](const std::stop_token& end) {
      while (!end.stop_requested()) job();
    });
  }
  for (int i = 0; i < 50; ++i) {
    Manager().NotifyViewsUpdate("x");
    std::this_thread::sleep_for(5ms);
  }
  threads.clear();
  Load();
  // Streams of earlier runs may still take a text that is sent too soon.
  EXPECT_TRUE(Eventually([&] {
    m_site.Stream(Event(20, "Views", Views(kView6)));
    return TextOfViews().find("six") != std::string::npos;
  }));
}

TEST(UpdateCallbackSlotTest, ASetterWaitsForTheOldCallbackAlone) {
  ResourceStore::UpdateCallbackSlot slot;
  Gate oldEnds, newEnds;
  std::atomic<int> oldCalls{0}, newCalls{0};
  const auto call = [&slot] { return std::async(std::launch::async, [&slot] { slot.Call(""); }); };
  slot.Set([&](const std::string&) {
    if (oldCalls++ == 0) oldEnds.Pass();
  });
  std::vector<std::future<void>> calls;
  calls.push_back(call());
  ASSERT_TRUE(oldEnds.WaitUntilReached());
  const auto setter = std::async(std::launch::async, [&] {
    slot.Set([&](const std::string&) {
      if (newCalls++ == 0) newEnds.Pass();
    });
  });
  EXPECT_TRUE(Eventually([&] {
    calls.push_back(call());
    return newCalls > 0;
  }));
  EXPECT_EQ(setter.wait_for(20ms), std::future_status::timeout) << "the old one is running";
  oldEnds.Open();
  EXPECT_EQ(setter.wait_for(10s), std::future_status::ready) << "the new one is running, and may";
  newEnds.Open();
}

}  // namespace
