// SPDX-License-Identifier: Apache-2.0
// What becomes of the server when memory runs out at any single moment of a request.
#include "../FailingMemory.h"
#include "TestClient.h"

namespace server::test {
namespace {

using failing_memory::FailAt;
using failing_memory::Stop;
using failing_memory::Threads;
using failing_memory::Want;

class MemoryTest : public ServerTest {
 protected:
  MemoryTest() {
    m_threads = failing_memory::NewThreads();
    Restart(Options());  // a server whose threads those are
    ann.AddView("the first", -1, kPublic);
  }

  // A list that is asked for in a coding comes in it.
  Answer Ask(const std::string& method, const std::string& path, const std::string& body, const std::string& coding) {
    std::string request = ann.Written(method, path, body);
    if (!coding.empty()) request.insert(request.find("\r\n") + 2, "Accept-Encoding: " + coding + "\r\n");
    return ParseAnswer(Wire(m_server->Port(), request).ReceiveAll());
  }

  Threads m_threads{0, 0};
};

TEST_F(MemoryTest, CostsARequestOrItsConnectionAndNothingElse) {
  ann.AddView("a view whose name is no short one", -1, kPublic);
  ann.AddView("another view", -1, kPublic);
  const std::string path = "V0/Views/2";
  struct Case {
    std::string method, path, body, coding;
  };
  for (int n = 0; n < 5; ++n) ann.AddView("one more", -1, kPublic);
  for (const char* coding : {"zstd", "gzip"}) {
    ASSERT_EQ(Ask("GET", "V0/Views", "", coding).headers["content-encoding"], coding) << "the list is too short";
  }
  int names = 0;
  for (const Want want : {Want::OneAllocation, Want::TwentyFromThere}) {
    for (const Case& c : {Case{"GET", "V0/Views", "", ""}, Case{"GET", "V0/Views", "", "zstd"},
                          Case{"GET", "V0/Views", "", "gzip"}, Case{"PUT", path, "", ""},
                          Case{"POST", "V0/Sessions", R"({"Session":{"UserName":"ann","Password":"a"}})", ""},
                          Case{"PUT", path, std::string(70000, ' '), ""}}) {
      if (!c.coding.empty() && want != Want::OneAllocation) continue;  // the same moments, and half a minute
      SCOPED_TRACE(c.method + " " + c.path + " " + c.coding);
      const bool edits = c.method == "PUT";
      const auto listen = [&](int64_t after) { return edits ? bob.ListenPacked(after) : bob.Listen(after); };
      int64_t heard = ann.Sequence();
      EventStream stream = listen(heard);
      int answered = 0, failedAnswers = 0;
      long moment = 0;
      for (long failed = 1; failed != 0; ++moment) {
        const std::string name = "a name of some length, number " + std::to_string(++names);
        const std::string body = (edits ? ViewBody(name, -1, kPublic) : "") + c.body;
        FailAt(moment, want, m_threads);
        Answer answer;
        ASSERT_NO_THROW(answer = Ask(c.method, c.path, body, c.coding)) << moment;
        failed = Stop();
        answered += answer.status != 0;
        const bool failsByItsAnswer = answer.status == 500 || answer.status == 503;
        if (failsByItsAnswer) {
          ++failedAnswers;
          ASSERT_EQ(answer.Error(), "100/8") << moment << ": " << answer.body;
        } else if (answer.status != 0) {
          ASSERT_EQ(answer.status, 200) << moment << ": " << answer.body;
        }
        // The listener hears of every change, with the next one at the latest, over another connection where need be.
        ASSERT_EQ(ann.Put("V0/Views/3", ViewBody(name, -1, kPublic)).status, 200) << moment;
        for (const int64_t last = ann.Sequence(); heard < last;) {
          Event event;
          ASSERT_NO_THROW(event = stream.Next()) << moment << " after " << heard;
          if (event.number == 0) {
            stream = listen(heard);
          } else {
            ASSERT_EQ(event.number, heard + 1) << moment;
            heard = event.number;
          }
        }
        const bool isMade = ann.Show("View", 2, {"Name"}) == name;
        if (edits) {
          ASSERT_TRUE(isMade || answer.status != 200) << moment;
          ASSERT_FALSE(isMade && failsByItsAnswer) << moment << ": made, and answered " << answer.status;
        }
      }
      EXPECT_GT(moment, 10);
      if (want == Want::OneAllocation) {
        EXPECT_GT(failedAnswers, 0);
      }
      EXPECT_GT(answered, failedAnswers);
    }
  }
  const std::string listed = ann.Get("V0/Views").body;
  Restart(Options());
  EXPECT_EQ(ann.Get("V0/Views").body, listed) << "the store has what was shown";
}

}  // namespace
}  // namespace server::test
