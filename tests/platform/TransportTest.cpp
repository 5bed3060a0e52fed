// SPDX-License-Identifier: Apache-2.0
#include <regex>

#include "../Cases.h"
#include "BizShared/UserCommonManager.h"
#include "BizShared/details/EditWatch.h"
#include "ForkedChild.h"
#include "PlatformCalls.h"

namespace {

using BizShared::CUserCommonManager;
using namespace testing_support;
using namespace std::string_literals;

class TransportTest : public ServingTest {
 protected:
  ~TransportTest() override {
    User().Logout();
    Net().SetTransport({});
  }

  static CUserCommonManager& User() { return CUserCommonManager::Instance(); }
  bool LogIn(const std::string& password) { return User().Login("anna", password, "tests", m_error); }

  Vant::Base::Error::ErrorCode m_error;  // of the last log-in
};

void AnswerOk(const Request&, Connection& connection) {
  connection.Reply(200, "ok");
}

TEST_F(TransportTest, SendsWhatTheRequestSays) {
  Serve(AnswerOk);
  Net().SetToken("t0k");
  for (const char* method : {"GET", "POST", "PUT", "DELETE"}) {
    for (const std::string& body : {""s, "{\"a\":\0}"s}) {
      EXPECT_EQ(Send(method, "/a/./%2e%2e//b\xc3\xa9", body), "0/0 ok");
      Request request = m_server->Requests().back();
      EXPECT_EQ(request.method, method);
      EXPECT_EQ(request.target, "/a/./%2e%2e//b\xc3\xa9");
      EXPECT_EQ(request.body, body);
      EXPECT_EQ(request.headers["authorization"], "Bearer t0k");
      const bool hasBody = !body.empty() || *method == 'P';  // of POST and PUT servers await one
      EXPECT_EQ(request.headers["content-type"], hasBody ? "application/json" : "") << method;
      EXPECT_EQ(request.headers["content-length"], hasBody ? std::to_string(body.size()) : "") << method;
    }
  }
  EXPECT_EQ(Send("GET", "/list?a=b", {}, 0, "request data"), "0/0 ok");
  EXPECT_EQ(m_server->Requests().back().body, "request data");
  EXPECT_EQ(m_server->Requests().back().target, "/list?a=b");
  // Of a token, what would break out of the header; and a connection keeps none.
  for (const char* token : {"a b~", "a\x1F", "a\r\nX: y", "a\x7F", ""}) {
    Net().SetToken(token);
    EXPECT_EQ(Send("GET", "/x"), "0/0 ok");
    EXPECT_EQ(m_server->Requests().back().headers.contains("authorization"), token == std::string("a b~")) << token;
  }
  EXPECT_EQ(m_server->Accepted(), 1) << "one thread reuses one connection, whatever the method";
  Net().SetServer(m_server->Url() + "//");
  EXPECT_EQ(Net().GetServer(), m_server->Url());
  EXPECT_EQ(Send("GET", "/x"), "0/0 ok");
  EXPECT_EQ(m_server->Accepted(), 2) << "of a server that was set before none is kept";
}

TEST_F(TransportTest, RefusesUrlsThatWouldChangeTheirMeaningOnTheWay) {
  Serve(AnswerOk);
  for (const char* url :
       {"/a b", "/a\tb", "/a\r\nX: y", "/a\x7f", "/a#b", "/a\\b", "/..", "/a/../b", "/a/..?x=1", "", "@127.0.0.1/"}) {
    EXPECT_EQ(Send("GET", url), "failed 1/3 ") << url;
  }
  EXPECT_EQ(Send("GET", "/a\0b"s) + Send("POST", "/a?x=1") + Send("DELETE", "/a?") + Send("PATCH", "/a"),
            "failed 1/3 failed 1/3 failed 1/3 failed 1/3 ");
  auto recv = std::make_shared<NetLink::CClientRecvInfo>();
  EXPECT_FALSE(Net().ClientSynSend(recv, nullptr, 0));
  recv = nullptr;
  EXPECT_FALSE(Net().ClientSynSend(recv, std::make_shared<NetLink::CClientSendInfo>(), 0));
  EXPECT_EQ(m_server->Requests().size(), 0u);
  EXPECT_EQ(Send("GET", "/a?x=/../y") + Send("GET", "/a..b/...") + Send("POST", "/%00%20"), "0/0 ok0/0 ok0/0 ok");
}

TEST_F(TransportTest, TellsRepliesFromFailures) {
  Serve([](const Request& request, Connection& connection) {
    const std::string& what = request.target;
    if (what == "/empty" || what == "/full") {  // the request says status and type
      return connection.Reply(std::stoi(request.body), what == "/full" ? "body" : "",
                              "Location: /full\r\ncontent-TYPE:" + request.body.substr(3) + "\r\n");
    }
    connection.Close();
    connection.Send(request.body);
    if (what == "/silent") connection.Stall();
  });
  for (const auto& [asked, expected] : Cases(TRANSPORT_REPLIES)) {
    const std::string url = asked.substr(0, asked.find(' '));
    const std::string said = asked.substr(std::min(url.size() + 1, asked.size()));
    const std::string body = std::regex_replace(said, std::regex("~"), "\r\n");
    std::string became = Send("PUT", url, body, url == "/silent" ? 300 : 0);
    if (became.ends_with(' ')) became.pop_back();
    EXPECT_EQ(became, expected.at(0)) << asked;
  }
  EXPECT_EQ(Send("PUT", "/echo", "HTTP/1.1 200 OK\n\nbare"), "0/0 bare");
  m_server.reset();
  EXPECT_EQ(Send("GET", "/"), "failed 1/7 ");
  Net().SetServer("ftp://127.0.0.1");
  EXPECT_EQ(Send("GET", "/"), "failed 1/1 ");
  Net().SetServer({});
  EXPECT_EQ(Send("GET", "/"), "failed 1/7 ");
}

TEST_F(TransportTest, UnpacksWhatTheServerHasCompressed) {
  const std::string gzip =
      "\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\x03\xab\x56\x4a\x54\xb2\x52\x2a\xcb\x4c\x2d\x57\x18\x74\x84"
      "\x52\x2d\x00\x36\x00\x7a\x59\x9e\x00\x00\x00"s;
  const std::string zstd =
      "\x28\xb5\x2f\xfd\x04\x68\xa5\x00\x00\x68\x7b\x22\x61\x22\x3a\x22\x76\x69\x65\x77\x20\x22\x7d\x01"
      "\x00\x0e\x50\xc5\x0b\xb1\x2c\xab\xa8"s;
  std::string text = R"({"a":")";
  for (int n = 0; n < 30; ++n) text += "view ";
  text += R"("})";
  Serve([&](const Request& request, Connection& connection) {  // the body says the coding
    const std::string& what = request.target;
    const std::string head = "Content-Encoding: " + request.body + "\r\n";
    if (what == "/text") return connection.Reply(200, text, head);
    const std::string& whole = request.body == "gzip" ? gzip : zstd;
    if (what == "/whole") return connection.Reply(200, whole, head);
    if (what == "/damaged") {
      std::string damaged = whole;
      damaged[damaged.size() / 2] ^= 0x10;
      return connection.Reply(200, damaged, head);
    }
    connection.Close();
    connection.Send("HTTP/1.1 200 OK\r\n" + head + "Transfer-Encoding: chunked\r\n\r\n9\r\n" + whole.substr(0, 9) +
                    "\r\n");
  });
  Send("PUT", "/whole", "gzip");
  const std::string asked = m_server->Requests().at(0).headers["accept-encoding"];
  for (const char* coding : {"gzip", "zstd"}) {
    EXPECT_EQ(Send("PUT", "/whole", coding), "0/0 " + text) << coding;
    EXPECT_EQ(Send("PUT", "/damaged", coding), "failed 1/61 ") << coding;
    EXPECT_EQ(Send("PUT", "/text", coding), "failed 1/61 ") << coding;
    EXPECT_EQ(Send("PUT", "/cut", coding), "failed 1/18 ") << coding;
    EXPECT_NE(asked.find(coding), std::string::npos) << asked;
  }
  EXPECT_EQ(Send("PUT", "/text", "rot13"), "failed 1/61 ");
}

TEST_F(TransportTest, AReplyThatUnpacksToMoreThanAGibibyteIsRefused) {
  std::string packed("\x28\xb5\x2f\xfd\x00\x38", 6);
  for (int n = 0; n < 8193; ++n) packed += std::string("\x02\x00\x10 ", 4);  // a blank 131,072 times
  Serve([&](const Request& request, Connection& connection) {
    if (request.target == "/") return connection.Reply(200, "{}");
    connection.Reply(200, packed, "Content-Encoding: zstd\r\n");
  });
  EXPECT_EQ(Send("GET", "/blanks"), "failed 1/63 ");
  EXPECT_EQ(Send("GET", "/"), "0/0 {}");
}

TEST_F(TransportTest, AnEditWhoseAnswerIsLostIsNotMadeTwice) {
  Serve([](const Request& request, Connection& connection) {
    if (request.target == "/warm-up") return connection.Reply(200, "ok");
    connection.Close();  // the request was read and may have had its effect
  });
  for (const char* method : {"GET", "POST", "PUT", "DELETE"}) {
    ASSERT_EQ(Send("GET", "/warm-up"), "0/0 ok");
    size_t before = m_server->Requests().size();
    EXPECT_EQ(Send(method, "/edit", "{}"), "failed 1/52 ") << method;
    EXPECT_EQ(m_server->Requests().size() - before, method == std::string("GET") ? 2u : 1u) << method;
  }
}

TEST_F(TransportTest, ServesManyThreadsAtOnceAndKeepsEightConnections) {
  std::atomic<int> asked{0}, together{0}, right{0};
  Serve([&](const Request& request, Connection& connection) {
    ++asked;
    Eventually([&] { return asked >= together; });
    connection.Reply(200, request.body);
  });
  for (const int accepted : {10, 12}) {
    together += 10;
    std::vector<std::jthread> threads;
    for (const std::string body : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"}) {
      threads.emplace_back([&right, body] { right += Send("POST", "/echo", body) == "0/0 " + body; });
    }
    threads.clear();
    EXPECT_EQ(m_server->Accepted(), accepted);
  }
  EXPECT_EQ(right, 20);
}

TEST_F(TransportTest, AChildByForkSendsNothingWhateverTheOtherThreadsWereAbout) {
  Serve([](const Request& request, Connection& connection) { connection.Reply(200, request.body); });
  ASSERT_EQ(Send("POST", "/x", "kept"), "0/0 kept");
  std::atomic<bool> over{false};
  std::thread busy([&] {  // the child may find the lock taken
    while (!over) Net().SetToken("t0k");
  });
  const size_t before = m_server->Requests().size();
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(Send("POST", "/x", "still kept"), "0/0 still kept");
    EXPECT_EQ(SaidByForkedChild([this] {
                Net().SetServer("http://127.0.0.1:1");
                User().Logout();
                const bool loggedIn = LogIn("right");
                return Send("GET", "/child") + Send("PUT", "/child", "{}") + (loggedIn ? "in" : Numbers(m_error));
              }),
              "failed 1/1000 failed 1/1000 1/1000");
  }
  over = true;
  busy.join();
  EXPECT_EQ(m_server->Requests().size(), before + 20);
  EXPECT_EQ(m_server->Accepted(), 1);
}

// --- The edit watch

// Notes what it hears; tickets count from 1.
class NotingWatch : public BizShared::details::IEditWatch {
 public:
  uint64_t OnEditBegins() override {
    heard += "begins, ";
    return ++m_ticket;
  }
  void OnEditEnds(uint64_t ticket, const NetLink::CClientSendInfo& send, const std::string& answer) noexcept override {
    heard += std::to_string(ticket) + " ends: " + send.GetVal_Method() + " " + send.GetVal_URL() + " '" + answer + "'";
  }
  std::string heard;

 private:
  uint64_t m_ticket = 0;
};

TEST_F(TransportTest, TheEditWatchHearsOfEveryEditAndItsEnd) {
  auto watch = std::make_shared<NotingWatch>();
  Net().SetEditWatch(watch);
  int ticket = 0;
  for (const std::string outcome : {"answered", "failed", "thrown"}) {
    Net().SetTransport([&](NetLink::CClientRecvInfo& recv, const NetLink::CClientSendInfo&) {
      watch->heard += "sent, ";
      recv.SetVal_Receive_Data("data");
      if (outcome == "thrown") throw std::runtime_error("own");
      return outcome == "answered";
    });
    for (const std::string method : {"GET", "POST", "PUT", "DELETE"}) {
      try {
        Send(method, "/x/1");
      } catch (const std::runtime_error&) {
      }
      ticket += method != "GET";
      const std::string answer = outcome == "answered" ? "'data'" : "''";
      EXPECT_EQ(std::exchange(watch->heard, ""),
                method == "GET" ? "sent, "
                                : "begins, sent, " + std::to_string(ticket) + " ends: " + method + " /x/1 " + answer);
    }
  }
  EXPECT_EQ(Send("PUT", "/x?"), "failed 1/3 ");
  EXPECT_EQ(std::exchange(watch->heard, ""), "begins, 10 ends: PUT /x? ''");
  Net().SetTransport({});
  Serve([](const Request&, Connection& connection) { connection.Reply(404, "gone"); });
  Send("PUT", "/x/1");
  EXPECT_EQ(watch->heard, "begins, 11 ends: PUT /x/1 'gone'");
  watch.reset();
  EXPECT_EQ(Send("PUT", "/x/1"), "0/0 gone") << "nobody keeps it any more";
}

// A server with one user, password "right", whose sessions can be ended at will.
class SessionTest : public TransportTest {
 protected:
  SessionTest() {
    Serve([this](const Request& request, Connection& connection) {
      if (request.method == "POST" && request.target == "/NXAPI/Vantorel/Platform/V0/Sessions") {
        m_duringLogIn.load()();
        EXPECT_FALSE(request.headers.contains("authorization")) << "no log-in is sent as somebody";
        if (request.body !=
            R"({"Session":{"UserName":"anna","Password":")" + std::string(m_password) + R"(","ClientName":"tests"}})") {
          return connection.ReplyError(401, 101, 1);
        }
        return connection.ReplyData(R"({"Session":{"Token":"token)" + std::to_string(++m_session) +
                                    R"(","UserID":7,"UserName":"Anna"}})");
      }
      auto token = request.headers.find("authorization");
      if (token == request.headers.end() || token->second != "Bearer token" + std::to_string(m_session)) {
        m_onRefusal.load()();
        return connection.ReplyError(401, 101, 2);
      }
      connection.Reply(200, "for " + token->second);
    });
  }

  int LoginsSeen() const {
    int count = 0;
    for (const Request& request : m_server->Requests()) count += request.target.ends_with("/V0/Sessions");
    return count;
  }
  // The server's refusal of the session, as it stands.
  static bool IsRefused(const std::string& answer) {
    return answer.starts_with("0/0 {") && answer.find(R"("ErrorModule":101,"ErrorCode":2)") != std::string::npos;
  }

  std::atomic<const char*> m_password{"right"};
  std::atomic<int> m_session{0};
  std::atomic<void (*)()> m_duringLogIn{+[] {}}, m_onRefusal{+[] {}};  // on the server's threads
};

TEST_F(SessionTest, LogsInAndOut) {
  int id = -5;
  std::string name = "untouched";
  EXPECT_FALSE(LogIn("wrong"));
  EXPECT_EQ(Numbers(m_error), "101/1");
  EXPECT_EQ(m_error.GetSubSystemErrorCode(), 1);
  EXPECT_EQ(m_error.GetCasadingErrorInfo(), "from below");
  EXPECT_FALSE(User().GetUserInfo(id, name) || User().GetUserID(id));
  EXPECT_EQ(std::pair(id, name), std::pair(-5, std::string("untouched")));

  ASSERT_TRUE(LogIn("right"));
  EXPECT_EQ(m_error.GetSubError(), 0);
  EXPECT_TRUE(User().GetUserInfo(id, name));
  EXPECT_EQ(std::pair(id, name), std::pair(7, std::string("Anna")));
  EXPECT_EQ(Send("GET", "/x"), "0/0 for Bearer token1");

  User().Logout();
  Request last = m_server->Requests().back();
  EXPECT_EQ(last.method + last.target, "DELETE/NXAPI/Vantorel/Platform/V0/Sessions/Current");
  EXPECT_EQ(last.headers["authorization"], "Bearer token1");
  EXPECT_FALSE(User().GetUserInfo(id, name));
  EXPECT_EQ(Net().GetToken(), "");
  EXPECT_TRUE(IsRefused(Send("GET", "/x"))) << "nobody is there to log in again";

  ASSERT_TRUE(LogIn("right"));
  m_server.reset();
  EXPECT_FALSE(LogIn("right"));
  EXPECT_EQ(Numbers(m_error), "1/7");
  EXPECT_FALSE(User().GetUserID(id)) << "a failed login leaves nobody logged in";
}

TEST_F(SessionTest, RenewsAnEndedSessionOnceForAllThreadsAndRepeatsTheRequests) {
  ASSERT_TRUE(LogIn("right"));
  ++m_session;  // the server forgets the token
  std::atomic<int> right{0};
  std::vector<std::jthread> threads;
  for (const char* method : {"GET", "POST", "PUT", "DELETE"}) {
    threads.emplace_back([&right, method] { right += Send(method, "/x", "{}") == "0/0 for Bearer token3"; });
  }
  threads.clear();
  EXPECT_EQ(right, 4);
  EXPECT_EQ(LoginsSeen(), 2);
  // Who is the user now has no password here, and is not to become the last one again.
  User().SetUser(8, "other");
  ++m_session;
  EXPECT_TRUE(IsRefused(Send("GET", "/x")));
  EXPECT_EQ(LoginsSeen(), 2);
  // A password that was refused is not tried again.
  ASSERT_TRUE(LogIn("right"));
  m_password = "changed";
  ++m_session;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(IsRefused(Send("PUT", "/x", "{}")));
  EXPECT_EQ(LoginsSeen(), 4);
}

TEST_F(SessionTest, ALogInThatIsOvertakenOrThrowsChangesNothing) {
  int id = 0;
  const auto overtake = [] { User().SetUser(8, "other"); };
  m_duringLogIn = overtake;
  EXPECT_FALSE(LogIn("right"));
  EXPECT_EQ(Numbers(m_error) + Net().GetToken(), "-1/-1");
  EXPECT_TRUE(User().GetUserID(id) && id == 8);

  m_duringLogIn = [] {};
  ASSERT_TRUE(LogIn("right"));
  const auto expectRefused = [&](const char* why) {
    ++m_session;
    EXPECT_TRUE(IsRefused(Send("PUT", "/x", "{}"))) << why;
    EXPECT_EQ(Net().GetToken(), "token2") << why;
    Net().SetTransport({});
  };
  m_onRefusal = [] { Net().SetTransport([](auto&, const auto&) -> bool { throw std::runtime_error("own"); }); };
  expectRefused("thrown");
  m_onRefusal = [] {};
  m_duringLogIn = overtake;
  expectRefused("overtaken");
}

}  // namespace
