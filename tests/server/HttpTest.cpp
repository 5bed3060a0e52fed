// SPDX-License-Identifier: Apache-2.0
// The HTTP side alone, with a handler of the test's: what clients may send, how slow they may be, what ends.
#include <atomic>
#include <deque>
#include <map>
#include <stdexcept>
#include <thread>

#include "TestClient.h"
#include "server/http/HttpServer.h"

namespace server::test {
namespace {

class Endless : public BodySource {
 public:
  uint64_t Length() const override { return uint64_t{1} << 40; }
  bool Next(std::string& chunk) override {
    chunk.assign(1 << 16, 'x');
    return true;
  }
};

class OneEvent : public EventSource {
 public:
  bool Take(std::vector<Text>& events) override {
    if (!m_given) events.push_back(std::make_shared<std::string>("data: first\n\n"));
    m_given = true;
    return true;
  }
  bool KeepAlive() override { return ++m_heartbeats < 3; }
  void OnReady(std::function<void()>) override {}

 private:
  bool m_given = false;
  int m_heartbeats = 0;
};

// Answers with what it was asked; some paths do something else.
class Echo : public HttpHandler {
 public:
  HttpReply Handle(const HttpRequest& request) override {
    HttpReply reply;
    reply.body = request.method + "|" + request.path + "|" + request.query + "|" + request.token + "|" +
                 (request.body.size() > 100 ? std::to_string(request.body.size()) : request.body);
    if (request.path == "/endless") reply.source = std::make_shared<Endless>();
    if (request.path == "/events") reply.events = std::make_shared<OneEvent>();
    if (request.path == "/slow") {
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
      ++slowAnswers;
    }
    if (request.path == "/late") reply.delay = std::chrono::milliseconds(200);
    return reply;
  }
  uint64_t BodyLimit(const HttpRequest& request) override { return request.token == "trusted" ? 1 << 20 : 0; }
  bool IsSlow(const HttpRequest& request) override { return request.path == "/slow"; }
  HttpReply Refused(const Refusal& refusal) override {
    static const std::map<int, std::string> texts{
        {400, "malformed"}, {413, "too large"}, {429, "too many"}, {503, "no memory"}};
    return {refusal.httpStatus, {}, texts.at(refusal.httpStatus), nullptr, nullptr, {}, {}};
  }
  int32_t UserOf(const HttpRequest& request) override {
    return request.token.rfind("user", 0) == 0 ? std::stoi(request.token.substr(4)) : kNobody;
  }

  std::atomic<int> slowAnswers{0};
};

class HttpTest : public ::testing::Test {
 protected:
  HttpTest() {
    HttpSettings settings;
    settings.host = "127.0.0.1";
    settings.readTimeout = settings.writeTimeout = std::chrono::seconds(1);
    settings.idleTimeout = std::chrono::seconds(20);
    settings.heartbeat = std::chrono::milliseconds(50);
    settings.maxConnections = 20;
    settings.maxConnectionsPerUser = 3;
    server = std::make_unique<HttpServer>(settings, echo);
  }

  // The one answer of a connection that ends with it, and so has to say that it ends.
  std::string Exchange(const std::string& bytes) const {
    const Answer answer = ParseAnswer(Wire(server->Port(), bytes).ReceiveAll());
    const auto end = answer.headers.find("connection");
    const bool isTold = end != answer.headers.end() && end->second == "close";
    return std::to_string(answer.status) + " " + answer.body + (isTold ? "" : " without a word of the end");
  }

  Echo echo;
  std::unique_ptr<HttpServer> server;
};

TEST_F(HttpTest, RequestsOfManyFormsAreReadAndOthersRefused) {
  const std::string close = "Connection: close\r\n";
  const std::string big(70000, 'b');
  const std::string tooBig(1100000, 'b');
  const std::pair<std::string, std::string> cases[] = {
      {"GET /a?b=c HTTP/1.1\r\n" + close + "Authorization: bearer T\r\n\r\n", "200 GET|/a|b=c|T|"},
      {"GET /a HTTP/1.1\r\n" + close + "Authorization: Basic T\r\n\r\n", "200 GET|/a|||"},
      {"GET /a HTTP/1.0\r\n\r\n", "200 GET|/a|||"},
      {"GET /a HTTP/1.1\r\n" + close + "Content-Length: 2\r\n\r\nhi", "200 GET|/a|||hi"},
      {"PUT /a HTTP/1.1\r\n" + close + "Transfer-Encoding: chunked\r\n\r\n2\r\nhi\r\n3\r\n yo\r\n0\r\n\r\n",
       "200 PUT|/a|||hi yo"},
      {"PUT /a HTTP/1.1\r\n" + close + "Authorization: Bearer trusted\r\nContent-Length: 70000\r\n\r\n" + big,
       "200 PUT|/a||trusted|70000"},
      {"PUT /a HTTP/1.1\r\nAuthorization: Bearer trusted\r\nContent-Length: 1100000\r\n\r\n" + tooBig, "413 too large"},
      {"PUT /a HTTP/1.1\r\nAuthorization: Bearer trusted\r\nContent-Length: 99999999999999\r\n\r\n", "413 too large"},
      {"PUT /a HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n11170\r\n" + big + "\r\n0\r\n\r\n", "413 too large"},
      {"PUT /a HTTP/1.1\r\nContent-Length: 70000\r\n\r\n" + big, "200 PUT|/a|||"},  // the handler says what is wrong
      {"GET /a HTTP/1.1\r\nX: " + big + "\r\n\r\n", "413 too large"},
      {"GET /" + big + " HTTP/1.1\r\n\r\n", "413 too large"},
      {"hello\r\n\r\n", "400 malformed"},
      {"GET /a HTTP/1.1\r\nContent-Length: x\r\n\r\n", "400 malformed"},
      {std::string(2000, '\xff') + "\r\n\r\n", "400 malformed"},
  };
  for (const auto& [sent, expected] : cases) EXPECT_EQ(Exchange(sent), expected) << sent.substr(0, 80);
}

TEST_F(HttpTest, OneConnectionCarriesManyRequestsAlsoAheadOfTheirAnswers) {
  Wire wire(server->Port(), "GET /1 HTTP/1.1\r\n\r\nGET /slow HTTP/1.1\r\n\r\nGET /late HTTP/1.1\r\n\r\n");
  wire.Send("PUT /4 HTTP/1.1\r\nConnection: close\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n");
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
}

TEST_F(HttpTest, ClientsThatStallAreDropped) {
  const std::string stalls[] = {"", "GET /a HT", "PUT /a HTTP/1.1\r\nContent-Length: 5\r\n\r\nhi"};
  for (const std::string& stall : stalls) {
    EXPECT_EQ(Wire(server->Port(), stall).ReceiveAll(), "") << stall;
  }
  Wire slowReader(server->Port(), "GET /endless HTTP/1.1\r\n\r\n");
  Wire rests(server->Port(), "GET /before HTTP/1.1\r\n\r\n");
  std::this_thread::sleep_for(std::chrono::seconds(3));
  rests.Send("GET /after HTTP/1.1\r\nConnection: close\r\n\r\n");
  EXPECT_NE(rests.ReceiveAll().find("|/after|"), std::string::npos) << "between requests there is more time";
  size_t read = 0;
  for (std::string received; read < (100 << 20) && slowReader.Receive(received); received.clear()) {
    read += received.size();
  }
  EXPECT_LT(read, size_t{100} << 20) << "no more than was underway when it was dropped";
}

TEST_F(HttpTest, AByteNowAndThenKeepsNoConnection) {
  for (const char* head : {"GET /a HTTP/1.1\r\nX: ", "PUT /a HTTP/1.1\r\nContent-Length: 60000\r\n\r\n"}) {
    Wire wire(server->Port(), head);
    const auto began = std::chrono::steady_clock::now();
    bool isOpen = true;
    for (int i = 0; isOpen && i < 40; ++i) {
      wire.Send("x");
      std::string received;
      try {
        isOpen = wire.Receive(received, std::chrono::milliseconds(100));
      } catch (const std::runtime_error&) {  // nothing came yet
      }
    }
    EXPECT_FALSE(isOpen) << head;
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(3)) << head;
  }
}

TEST_F(HttpTest, AUserHoldsSoManyConnectionsAndNoMore) {
  std::deque<Wire> wires;
  for (int i = 0; i < 7; ++i) wires.emplace_back(server->Port());
  const auto ask = [&wires](size_t wire, const std::string& user) {
    wires[wire].Send("GET /a HTTP/1.1\r\nAuthorization: Bearer user" + user + "\r\n\r\n");
    std::string received;
    wires[wire].Receive(received);
    return ParseAnswer(received).status;
  };
  for (size_t wire : {0, 1, 2}) EXPECT_EQ(ask(wire, "1"), 200);
  EXPECT_EQ(ask(3, "1"), 429);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(ask(4, "2"), 200) << "a connection counts once";
  EXPECT_EQ(ask(0, "2"), 200) << "and for the user it is used by";
  EXPECT_EQ(ask(1, "1"), 200);
  EXPECT_EQ(ask(5, "1"), 200) << "one became free";
  EXPECT_EQ(ask(2, "2"), 200);
  EXPECT_EQ(ask(6, "2"), 429);
}

TEST_F(HttpTest, AnEventStreamGivesSignsOfLifeUntilItsSourceEnds) {
  const std::string received = Wire(server->Port(), "GET /events HTTP/1.1\r\n\r\n").ReceiveAll();
  EXPECT_NE(received.find("Content-Type: text/event-stream\r\n"), std::string::npos);
  EXPECT_NE(received.find("\r\n\r\ndata: first\n\n: still here\n\n: still here\n\n"), std::string::npos) << received;
}

TEST_F(HttpTest, ConnectionsBeyondTheLimitAreTurnedAwayUntilOthersEnd) {
  std::deque<Wire> wires;
  for (int i = 0; i < 20; ++i) {
    std::string received;
    ASSERT_TRUE(wires.emplace_back(server->Port(), "GET /a HTTP/1.1\r\n\r\n").Receive(received));
  }
  EXPECT_EQ(Wire(server->Port()).ReceiveAll(), "");
  wires.clear();
  const auto end = std::chrono::steady_clock::now() + kPatience;
  std::string answer;
  while (answer.rfind("200", 0) != 0 && std::chrono::steady_clock::now() < end) {
    answer = Exchange("GET /a HTTP/1.1\r\nConnection: close\r\n\r\n");
  }
  EXPECT_EQ(answer, "200 GET|/a|||");
}

TEST_F(HttpTest, EndingTheServerEndsWhatIsUnderway) {
  Wire events(server->Port(), "GET /events HTTP/1.1\r\n\r\n");
  std::deque<Wire> slow;
  for (int i = 0; i < 15; ++i) slow.emplace_back(server->Port(), "GET /slow HTTP/1.1\r\n\r\n");
  Wire late(server->Port(), "GET /late HTTP/1.1\r\n\r\n");
  std::string received;
  events.Receive(received);
  const uint16_t port = server->Port();
  server.reset();
  events.ReceiveAll();
  for (Wire& wire : slow) wire.ReceiveAll();
  late.ReceiveAll();
  EXPECT_LT(echo.slowAnswers, 15) << "what has not begun is left";
  EXPECT_THROW(Wire again(port), std::runtime_error);
}

TEST_F(HttpTest, AnAddressInUseIsRefusedWithOneLine) {
  HttpSettings settings;
  settings.host = "127.0.0.1";
  settings.port = server->Port();
  EXPECT_THROW(HttpServer(settings, echo), std::runtime_error);
  settings.port = 0;
  settings.certFile = settings.keyFile = "nowhere.pem";
  EXPECT_THROW(HttpServer(settings, echo), std::runtime_error);
}

}  // namespace
}  // namespace server::test
