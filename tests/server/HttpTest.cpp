// SPDX-License-Identifier: Apache-2.0
// The HTTP side alone, with a handler of the test's: what clients may send, how slow they may be, what ends.
#include <deque>
#include <fstream>
#include <regex>
#include <stdexcept>
#include <thread>

#include "../Cases.h"
#include "EchoHandler.h"
#include "TestClient.h"
#include "server/http/AccessLog.h"
#include "server/http/HttpServer.h"

namespace server::test {
namespace {

class HttpTest : public HttpSideTest<Echo> {
 protected:
  HttpTest() {
    settings.heartbeat = std::chrono::milliseconds(50);
    Serve();
  }
  // For what is slow by purpose. Elsewhere a busy machine may take its time.
  void DropSlowOnes() {
    settings.readTimeout = settings.writeTimeout = std::chrono::seconds(1);
    Serve();
  }

  // The one answer of a connection that ends with it, and so has to say that it ends.
  std::string Exchange(const std::string& bytes) const {
    const Answer answer = ParseAnswer(Wire(server->Port(), bytes).ReceiveAll());
    const auto end = answer.headers.find("connection");
    const bool isTold = end != answer.headers.end() && end->second == "close";
    return std::to_string(answer.status) + " " + answer.body + (isTold ? "" : " without a word of the end");
  }
};

TEST_F(HttpTest, RequestsOfManyFormsAreReadAndOthersRefused) {
  const std::string put = "PUT /a HTTP/1.1\r\nHost: t\r\nConnection: close\r\n";
  const std::string token = Bearer("trusted");
  const std::string big(70000, 'b');
  std::vector<testing_support::Case> cases = testing_support::Cases(TABLES "Requests.txt");
  for (const auto& [sent, expected] : {
           std::pair(put + token + "Content-Length: 70000\r\n\r\n" + big, "200 PUT|/a||trusted|70000"),
           {put + "Content-Length: 70000\r\n\r\n" + big, "200 PUT|/a|||"},  // the handler says what is wrong
           {put + token + "Content-Length: 1048576\r\n\r\n" + std::string(1 << 20, 'b'), "200 PUT|/a||trusted|1048576"},
           {put + token + "Content-Length: 1048577\r\n\r\n" + std::string((1 << 20) + 1, 'b'), "413 too large"},
           {put + "Transfer-Encoding: chunked\r\n\r\n11170\r\n" + big + "\r\n0\r\n\r\n", "413 too large"},
           {Head("GET /a", "X: " + big + "\r\n"), "413 too large"},
           {Head("GET /" + big), "413 too large"},
           {Head("HEAD /a", kClose), "200 "},
           {Head("HEAD /events", kClose), "200 "},
           {std::string(2000, '\xff') + "\r\n\r\n", "400 malformed"},
       }) {
    cases.push_back({sent, {expected}});
  }
  for (const auto& [sent, expected] : cases)
    EXPECT_EQ(Exchange(WithLineEnds(sent)), expected.at(0)) << sent.substr(0, 99);
}

TEST_F(HttpTest, OneConnectionCarriesManyRequestsAlsoAheadOfTheirAnswers) {
  const auto began = std::chrono::steady_clock::now();
  Wire wire(server->Port(), Head("GET /1") + Head("GET /slow") + Head("GET /late"));
  wire.Send(Head("PUT /4", kClose + "Expect: 100-continue\r\nContent-Length: 2\r\n"));
  std::string received;
  while (received.find("100 Continue\r\n\r\n") == std::string::npos && wire.Receive(received)) {
  }
  wire.Send("hi");
  received += wire.ReceiveAll();
  size_t place = 0;
  for (const char* answer : {"|/1|", "|/slow|", "|/late|", "|/4|||hi"}) {
    place = received.find(answer, place);
    EXPECT_NE(place, std::string::npos) << answer << " of " << received;
  }
  EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(400)) << "two take their time";
}

TEST_F(HttpTest, AConnectionOfHttp10IsKeptWhereTheClientAsksForItAndToldSo) {
  Wire wire(server->Port(), "HEAD /1 HTTP/1.0\r\nConnection: keep-alive\r\n\r\n");
  std::string received;
  wire.Receive(received);
  EXPECT_NE(received.find("Content-Length: 9\r\nConnection: keep-alive\r\n\r\n"), std::string::npos) << received;
  wire.Send("GET /2 HTTP/1.0\r\n\r\n");
  received = wire.ReceiveAll();
  EXPECT_EQ(received.rfind("HTTP/1.1 200", 0), 0u) << "no body of HEAD before it: " << received;
  EXPECT_NE(received.find("Connection: close\r\n\r\nGET|/2|||"), std::string::npos) << received;
}

TEST_F(HttpTest, ClientsThatStallAreDropped) {
  DropSlowOnes();
  for (const std::string& stall :
       {std::string(), std::string("GET /a HT"), Head("PUT /a", "Content-Length: 5\r\n") + "hi"}) {
    EXPECT_EQ(Wire(server->Port(), stall).ReceiveAll(), "") << stall;
  }
  Wire slowReader(server->Port(), Head("GET /endless"));
  Wire rests(server->Port(), Head("GET /before"));
  std::this_thread::sleep_for(std::chrono::seconds(3));
  rests.Send(Head("GET /after", kClose));
  EXPECT_NE(rests.ReceiveAll().find("|/after|"), std::string::npos) << "between requests there is more time";
  size_t read = 0;
  for (std::string received; read < (100 << 20) && slowReader.Receive(received); received.clear()) {
    read += received.size();
  }
  EXPECT_LT(read, size_t{100} << 20) << "no more than was underway when it was dropped";
}

TEST_F(HttpTest, AByteNowAndThenKeepsNoConnection) {
  DropSlowOnes();
  const std::string put = "PUT /a HTTP/1.1\r\nHost: t\r\nAuthorization: Bearer trusted\r\n";
  const std::pair<std::string, std::string> drips[] = {{"GET /a HTTP/1.1\r\nHost: t\r\nX: ", "x"},
                                                       {put + "Content-Length: 60000\r\n\r\n", "x"},
                                                       {put + "Transfer-Encoding: chunked\r\n\r\n", "1\r\nx\r\n"}};
  for (const auto& [head, piece] : drips) {
    Wire wire(server->Port(), head);
    const auto dropsIt = [&wire, &sent = piece] {
      wire.Send(sent);
      std::string received;
      bool isDropped = false;  // as long as nothing comes
      FailureOf([&] { isDropped = !wire.Receive(received, std::chrono::milliseconds(100)); });
      return isDropped;
    };
    EXPECT_TRUE(Eventually(dropsIt)) << head;
  }
}

TEST_F(HttpTest, AUserHoldsSoManyConnectionsAndNoMore) {
  std::deque<Wire> wires;
  for (int i = 0; i < 7; ++i) wires.emplace_back(server->Port());
  const auto ask = [&wires](size_t wire, int user) {
    wires[wire].Send(Head("GET /a", As(user)));
    return wires[wire].NextStatus();
  };
  for (size_t wire : {0, 1, 2}) EXPECT_EQ(ask(wire, 1), 200);
  EXPECT_EQ(ask(3, 1), 429);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(ask(4, 2), 200) << "a connection counts once";
  EXPECT_EQ(ask(0, 2), 200) << "and for the user it is used by";
  EXPECT_EQ(ask(1, 1), 200);
  EXPECT_EQ(ask(5, 1), 200) << "one became free";
  EXPECT_EQ(ask(2, 2), 200);
  EXPECT_EQ(ask(6, 2), 429);
}

TEST_F(HttpTest, AnEventStreamGivesSignsOfLifeUntilItsSourceEnds) {
  const std::string received = Wire(server->Port(), Head("GET /events")).ReceiveAll();
  EXPECT_NE(received.find("Content-Type: text/event-stream\r\n"), std::string::npos);
  EXPECT_NE(received.find("X-Accel-Buffering: no\r\n"), std::string::npos)
      << "a proxy is to pass each event on at once";
  EXPECT_NE(received.find("\r\n\r\ndata: first\n\n: still here\n\n: still here\n\n"), std::string::npos) << received;
}

TEST_F(HttpTest, ConnectionsBeyondTheLimitAreTurnedAwayUntilOthersEnd) {
  std::deque<Wire> wires;
  for (int i = 0; i < 20; ++i) {
    ASSERT_NE(wires.emplace_back(server->Port(), Head("GET /a", As(i / 3))).NextStatus(), 0);
  }
  EXPECT_EQ(Wire(server->Port()).ReceiveAll(), "");
  wires.clear();
  EXPECT_TRUE(Eventually([this] { return Exchange(Head("GET /a", kClose)) == "200 GET|/a|||"; }));
}

TEST_F(HttpTest, EndingTheServerEndsWhatIsUnderway) {
  Wire events(server->Port(), Head("GET /events"));
  std::deque<Wire> slow;
  for (int i = 0; i < 15; ++i) slow.emplace_back(server->Port(), Head("GET /slow"));
  Wire late(server->Port(), Head("GET /late"));
  events.NextStatus();
  const uint16_t port = server->Port();
  server.reset();
  events.ReceiveAll();
  for (Wire& wire : slow) wire.ReceiveAll();
  late.ReceiveAll();
  EXPECT_LT(handler.slowAnswers, 15) << "what has not begun is left";
  EXPECT_THROW(Wire again(port), std::runtime_error);
}

TEST(AccessLine, TellsTheDayAsInEnglishWhateverTheMonth) {
  std::string months;
  for (unsigned month = 1; month <= 12; ++month) {
    AccessEntry entry;
    entry.time =
        std::chrono::sys_days(std::chrono::year(2024) / month / 9) + std::chrono::seconds(3 * 3600 + 4 * 60 + 5);
    const std::string line = LineOf(entry);
    months += line.substr(line.find('[') + 4, 4);
    EXPECT_NE(line.find("[09/"), std::string::npos) << line;
    EXPECT_NE(line.find("/2024:03:04:05 +0000]"), std::string::npos) << line;
  }
  EXPECT_EQ(months, "Jan/Feb/Mar/Apr/May/Jun/Jul/Aug/Sep/Oct/Nov/Dec/");
}

TEST_F(HttpTest, TheAccessLogHasEachRequestInTheCombinedFormAndNoSecrets) {
  const TestFolder folder;
  settings.accessLog = folder.Path("access.log");
  Serve();
  const std::string fields = As(7) + "User-Agent: \"x\xff\ty\r\nReferer: http://u:secret@t/p?q=secret\r\n";
  const std::pair<std::string, std::string> cases[] = {
      {Head("GET http://u:secret@t/a?b=secret&secret&c=", kClose + fields),
       R"(7 \[T\] "GET /a\?b=\*&\*&c=\* HTTP/1.1" 200 32 "http://t/p" "\\x22x\\xff\\x09y")"},
      {Head("HEAD /a", kClose + Bearer("secret")), R"(- \[T\] "HEAD /a HTTP/1.1" 200 - "-" "-")"},
      {Head("GET /events", kClose), R"(- \[T\] "GET /events HTTP/1.1" 200 41 "-" "-")"},
      {"hello\r\n\r\n", R"(- \[T\] "-" 400 9 "-" "-")"}};
  for (const auto& [request, _] : cases) Wire(server->Port(), request, "127.0.0.5").ReceiveAll();
  server.reset();
  std::ifstream log(settings.accessLog);
  std::string line;
  for (auto [request, pattern] : cases) {
    std::getline(log, line);
    pattern.replace(pattern.find('T'), 1, R"(\d\d/[A-Z][a-z][a-z]/\d{4}:\d\d:\d\d:\d\d \+0000)");
    EXPECT_TRUE(std::regex_match(line, std::regex(R"(127\.0\.0\.5 - )" + pattern))) << line;
  }
  EXPECT_FALSE(std::getline(log, line)) << line;
  settings.accessLog = "/nowhere/at/all";
  EXPECT_THROW(Serve(), std::runtime_error);
}

TEST_F(HttpTest, AnAddressInUseIsRefusedWithOneLine) {
  settings.port = server->Port();
  EXPECT_THROW(Serve(), std::runtime_error);
  settings.port = 0;
  settings.certFile = settings.keyFile = "nowhere.pem";
  EXPECT_THROW(Serve(), std::runtime_error);
}

}  // namespace
}  // namespace server::test
