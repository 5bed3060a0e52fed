// SPDX-License-Identifier: Apache-2.0
// What a host is told of how far the download is.
#include <cerrno>

#include "DownloadFixture.h"

namespace {

using namespace testing_support;
using ResourceStore::DownloadState;
using ResourceStore::DownloadStatus;

class DownloadStatusTest : public DownloadTest {
 protected:
  DownloadStatusTest() {
    Manager().SetDownloadStatusCallback([this](const DownloadStatus& status) {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_told.push_back(status);
    });
  }
  ~DownloadStatusTest() override { Manager().SetDownloadStatusCallback({}); }

  std::vector<DownloadStatus> Told() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_told;
  }
  // The states that were told, each once however often it was told in a row.
  std::string States() const {
    std::string states;
    for (const DownloadStatus& status : Told()) {
      const char state = "NCDRF"[static_cast<int>(status.state)];
      if (states.empty() || states.back() != state) states += state;
    }
    return states;
  }
  bool Reaches(DownloadState state) {
    return Eventually([state] { return Manager().GetDownloadStatus().state == state; });
  }

  std::vector<DownloadStatus> m_told;
};

TEST_F(DownloadStatusTest, GoesFromConnectingToReadyAndBack) {
  EXPECT_EQ(Manager().GetDownloadStatus().state, DownloadState::NotStarted);
  m_site.AnswerOnce("V0/Areas", [&](const Request&, Connection& c) {
    EXPECT_EQ(Manager().GetDownloadStatus().state, DownloadState::Connecting);
    c.Reply(200, ListOf("Area", ""));
  });
  m_site.AnswerOnce("V0/Views", [&](const Request&, Connection& c) {
    EXPECT_EQ(Manager().GetDownloadStatus().state, DownloadState::Downloading);
    c.Reply(200, Views(""), "Resource-Sequence: 10\r\n");
  });
  const auto before = std::chrono::system_clock::now();
  Manager().Start();
  ASSERT_TRUE(Reaches(DownloadState::Ready));
  EXPECT_TRUE(Manager().IsViewDownloadSuccess()) << "what is ready can be loaded";
  const DownloadStatus ready = Manager().GetDownloadStatus();
  EXPECT_GE(ready.since, before);
  EXPECT_EQ(Numbers(ready.error), "0/0");
  Manager().Stop();
  EXPECT_EQ(Manager().GetDownloadStatus().state, DownloadState::NotStarted);
  EXPECT_EQ(States(), "CDRN");
  Manager().Stop();
  EXPECT_EQ(States(), "CDRN") << "nothing was stopped";
}

TEST_F(DownloadStatusTest, SaysWhyALastAttemptFailedAndThatTheNextDidNot) {
  const std::pair<Answer, std::string> cases[] = {
      {Replying(503), "4/503"},
      {Refusing(500, 100, 8), "100/8"},
      {[](const Request&, Connection& c) { c.Close(); }, "1/52"},
      {Replying(200, "<html>"), "-1/-1"},
  };
  for (const auto& [failure, error] : cases) {
    m_site.AnswerOnce("V0/Areas", failure);
    m_told.clear();
    Load();
    ASSERT_TRUE(Reaches(DownloadState::Ready));
    Manager().Stop();
    EXPECT_EQ(States(), "CFDRN") << error;
    ASSERT_GE(Told().size(), 3u);
    EXPECT_EQ(Numbers(Told()[1].error), error);
    EXPECT_EQ(Numbers(Told()[2].error), error) << "the last error stays known";
  }
}

TEST_F(DownloadStatusTest, TellsARefusedConnectionFromOtherFailures) {
  CNetCommManager::Instance().SetServer(ScriptedServer({}).Url());  // gone by then
  Manager().Start();
  ASSERT_TRUE(Reaches(DownloadState::Failing));
  const DownloadStatus first = Manager().GetDownloadStatus();
  EXPECT_EQ(Numbers(first.error), "1/7");
  EXPECT_EQ(first.systemError, ECONNREFUSED);
  ASSERT_TRUE(Eventually([&] { return Told().size() >= 4; })) << "each failure is told";
  EXPECT_EQ(Manager().GetDownloadStatus().since, first.since) << "it has been failing since the first";
}

TEST_F(DownloadStatusTest, ALostStreamIsAFailureUntilItsSuccessorOpens) {
  Load();
  ASSERT_TRUE(Eventually([&] { return m_site.Streams() == 1; })) << "the first stream would take the answer";
  m_site.AnswerOnce("V0/Changes", Replying(503));
  m_site.EndStream();  // in order: no failure by itself
  ASSERT_TRUE(Eventually([&] { return States() == "CDRFR"; })) << States() << ", though nothing came on the new stream";
  EXPECT_EQ(Numbers(Manager().GetDownloadStatus().error), "4/503");
  EXPECT_TRUE(Manager().IsViewDownloadSuccess());

  CNetCommManager::Instance().SetToken("renewed");
  m_site.Stream(Event(20, "Views", Views("")));
  ASSERT_TRUE(Eventually([&] { return m_site.StreamsOpened() == 3; }));
  EXPECT_EQ(States(), "CDRFR") << "a stream that we end ourselves is no failure";
}

TEST_F(DownloadStatusTest, TheCallbackMayAskAndIsNotCalledOnceItIsWithdrawn) {
  std::atomic<int> calls{0};
  Manager().SetDownloadStatusCallback([&](const DownloadStatus& status) {
    if (status.state != DownloadState::NotStarted) Manager().Stop();  // refused
    Manager().GetDownloadStatus();
    if (++calls == 2) Manager().SetDownloadStatusCallback({});
    throw 1;
  });
  Load();
  ASSERT_TRUE(Reaches(DownloadState::Ready));
  EXPECT_EQ(calls, 2);
}

}  // namespace
