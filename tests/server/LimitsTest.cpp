// SPDX-License-Identifier: Apache-2.0
// What clients may hold of the server, and that those who hold much keep nobody else waiting or out.
#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <stdexcept>
#include <thread>

#include "EchoHandler.h"
#include "TestClient.h"
#include "server/http/Addresses.h"
#include "server/http/BodyBudget.h"
#include "server/http/HttpServer.h"

namespace server::test {
namespace {

constexpr const char* kOne = "127.0.0.2";
constexpr const char* kOther = "127.0.0.3";

std::string Head(const std::string& line, const std::string& more = "") {
  return line + " HTTP/1.1\r\nHost: t\r\n" + more + "\r\n";
}

std::string As(int user) {
  return "Authorization: Bearer user" + std::to_string(user) + "\r\n";
}

class LimitsTest : public ::testing::Test {
 protected:
  LimitsTest() {
    settings.host = "127.0.0.1";
    settings.loginThreads = 1;
    settings.maxConnections = 20;
    settings.maxConnectionsPerUser = 3;
    settings.maxStrangersPerAddress = 4;
    settings.maxWaitingLogins = 4;
    settings.maxWaitingLoginsPerAddress = 2;
    settings.maxBodyBytes = 2 << 20;
    settings.trustedProxies = {"127.0.0.9"};
    server = std::make_unique<HttpServer>(settings, echo);
  }

  Wire& Open(std::deque<Wire>& wires, const std::string& sent, const char* from = nullptr) const {
    return wires.emplace_back(server->Port(), sent, from);
  }
  // With one thread a connection lies idle, after its answer, before a later request is looked at.
  void AnswerOneAfterTheOther() {
    settings.threads = 1;
    server = std::make_unique<HttpServer>(settings, echo);
  }
  // The status of the next answer, 0 at the end of the connection.
  static int Status(Wire& wire) {
    std::string received;
    return wire.Receive(received) ? ParseAnswer(received + "\r\n\r\n").status : 0;
  }
  static bool IsOpen(Wire& wire) {
    wire.Send(Head("GET /a"));
    return Status(wire) == 200;
  }
  // Waits until so many of them have been answered 503.
  static void AwaitRefusals(std::deque<Wire>& wires, int count) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (count > 0 && std::chrono::steady_clock::now() < end) {
      for (Wire& wire : wires) {
        std::string received;
        try {
          wire.Receive(received, std::chrono::milliseconds(1));
        } catch (const std::runtime_error&) {  // it waits
        }
        if (received.rfind("HTTP/1.1 503", 0) == 0) --count;
      }
    }
    EXPECT_EQ(count, 0);
  }

  HttpSettings settings;
  Echo echo;
  std::unique_ptr<HttpServer> server;
};

TEST_F(LimitsTest, LogInsWaitForTheirTurnByAddressAndLargeBodiesForNoneOfThem) {
  settings.maxStrangersPerAddress = 20;
  server = std::make_unique<HttpServer>(settings, echo);
  std::deque<Wire> first, ofOne, ofOther;
  Open(first, Head("POST /login?hold"), kOne);
  ASSERT_TRUE(echo.Held().WaitUntilReached());
  for (int i = 0; i < 6; ++i) Open(ofOne, Head("POST /login"), kOne);
  AwaitRefusals(ofOne, 4);
  for (int i = 0; i < 3; ++i) Open(ofOther, Head("POST /login"), kOther);
  AwaitRefusals(ofOther, 1);
  Wire beyond(server->Port(), Head("POST /login"), "127.0.0.4");
  EXPECT_EQ(Status(beyond), 503) << "the lane is full";
  Wire large(server->Port(), Head("POST /large"), kOne);
  EXPECT_EQ(Status(large), 200) << "while log-ins wait";
  echo.Held().Open();
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (echo.Logins().size() < 5 && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  EXPECT_EQ(echo.Logins(), (std::vector<std::string>{kOne, kOne, kOther, kOne, kOther}));
}

TEST_F(LimitsTest, WhoComesAnewTakesThePlaceOfTheStrangerThatWasIdleForTheLongestTime) {
  AnswerOneAfterTheOther();
  std::deque<Wire> ofOne, users, others;
  EXPECT_EQ(Status(Open(users, Head("GET /a", As(1)), kOne)), 200);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(Status(Open(ofOne, Head("GET /a"), kOne)), 200);
  EXPECT_TRUE(IsOpen(ofOne[0])) << "now the second is the longest idle";
  EXPECT_EQ(Status(Open(ofOne, Head("GET /a"), kOne)), 200) << "a fifth";
  EXPECT_EQ(Status(ofOne[1]), 0);
  EXPECT_TRUE(IsOpen(ofOne[0]));

  Wire busy(server->Port(), Head("POST /login?hold"), "127.0.0.4");
  ASSERT_TRUE(echo.Held().WaitUntilReached());
  for (int i = 0; i < 40; ++i) {  // strangers may have 15 places
    EXPECT_EQ(Status(Open(others, Head("GET /a"), ("127.0.1." + std::to_string(1 + i)).c_str())), 200);
  }
  EXPECT_EQ(Status(ofOne[0]), 0);
  EXPECT_EQ(Status(others[20]), 0);
  EXPECT_TRUE(IsOpen(others[39]));
  EXPECT_TRUE(IsOpen(users[0])) << "a user keeps the connection";
  EXPECT_EQ(Status(Open(users, Head("GET /a", As(2)), kOne)), 200) << "and comes in";
  echo.Held().Open();
  EXPECT_EQ(Status(busy), 200) << "a stranger that is being answered stays";
}

TEST_F(LimitsTest, AConnectionThatLosesItsUserCountsAsAStranger) {
  AnswerOneAfterTheOther();
  std::deque<Wire> wires;
  const auto use = [](Wire& wire) {
    wire.Send(Head("GET /a", As(1)));
    EXPECT_EQ(Status(wire), 200);
    wire.Send(Head("GET /a", "Authorization: Bearer nobody\r\n"));
    EXPECT_EQ(Status(wire), 200);
  };
  for (int i = 0; i < 5; ++i) use(Open(wires, "", kOne));
  EXPECT_EQ(Status(wires[0]), 0);
  EXPECT_TRUE(IsOpen(wires[1]));
}

// "100 Continue" tells that a body is wanted.
TEST_F(LimitsTest, BodiesShareTheMemoryAndNobodyHoldsMoreThanTheyLeave) {
  const auto announce = [](const std::string& who, const std::string& length) {
    return Head("PUT /a", who + "Expect: 100-continue\r\n" + length + "\r\n");
  };
  const auto bytes = [](int kib) { return "Content-Length: " + std::to_string(kib << 10); };
  std::deque<Wire> wires;
  EXPECT_EQ(Status(Open(wires, announce(As(1), bytes(1024)))), 100) << "half of it";
  EXPECT_EQ(Status(Open(wires, announce(As(1), bytes(65)))), 503);
  EXPECT_EQ(Status(Open(wires, announce(As(2), bytes(300)))), 100);
  EXPECT_EQ(Status(Open(wires, announce(As(2), bytes(300)))), 503);
  EXPECT_EQ(Status(Open(wires, announce("", bytes(1)))), 100) << "there is always room for what is small";
  Wire& chunked = Open(wires, announce(As(3), "Transfer-Encoding: chunked"));
  EXPECT_EQ(Status(chunked), 100);
  chunked.Send("80000\r\n" + std::string(0x80000, 'x'));
  EXPECT_EQ(Status(chunked), 503) << "it has outgrown its share";
  wires.clear();
  const auto end = std::chrono::steady_clock::now() + kPatience;
  int status = 0;
  while (status != 100 && std::chrono::steady_clock::now() < end) {
    status = Status(Open(wires, announce(As(4), bytes(1024))));
  }
  EXPECT_EQ(status, 100) << "what has ended holds nothing";
}

TEST(BodyBudget, TakesNineOfEightMebibytesFromAUserAndStillOneOfAnother) {
  BodyBudget budget(HttpSettings().maxBodyBytes);
  for (int i = 1; i <= 10; ++i) EXPECT_EQ(budget.Take("user 1", 8 << 20), i <= 9) << i;
  EXPECT_TRUE(budget.Take("user 2", 8 << 20));
  budget.Give("user 1", 8 << 20);
  budget.Give("user 2", 8 << 20);
  EXPECT_TRUE(budget.Take("user 1", 8 << 20)) << "what has ended makes room";
}

TEST_F(LimitsTest, ATrustedProxyTellsWhoAsksAndNobodyElseDoes) {
  struct Case {
    const char* peer;
    const char* forwarded;
    const char* expected;
  };
  const Case cases[] = {{"127.0.0.9", "10.0.0.1", "10.0.0.1"},
                        {"127.0.0.9", "6.6.6.6, 10.0.0.1 ,127.0.0.9", "10.0.0.1"},
                        {"127.0.0.9", "10.0.0.1\r\nX-Forwarded-For: 10.0.0.2:80", "10.0.0.2"},
                        {"127.0.0.9", "[2001:db8::7]:443", "2001:db8::7"},
                        {"127.0.0.9", "2001:db8::7", "2001:db8::7"},
                        {"127.0.0.9", "::ffff:10.0.0.3", "10.0.0.3"},
                        {"127.0.0.9", "10.0.0.1,", "127.0.0.9"},
                        {"127.0.0.9", "10.0.0.1, unknown", "127.0.0.9"},
                        {"127.0.0.9", "", "127.0.0.9"},
                        {"127.0.0.8", "10.0.0.1", "127.0.0.8"}};
  for (const Case& c : cases) {
    const std::string fields = std::string("Connection: close\r\nX-Forwarded-For: ") + c.forwarded + "\r\n";
    EXPECT_EQ(ParseAnswer(Wire(server->Port(), Head("GET /peer", fields), c.peer).ReceiveAll()).body, c.expected)
        << c.forwarded;
  }
  EXPECT_EQ(NetworkOf(boost::asio::ip::make_address("2001:db8:1:2:3333::4")), "2001:db8:1:2::/64");
  std::deque<Wire> wires;
  for (int i = 0; i < 8; ++i) Open(wires, Head("GET /a"), "127.0.0.9");
  for (Wire& wire : wires) EXPECT_EQ(Status(wire), 200) << "the limit of an address is not for a trusted proxy";
  EXPECT_THROW(TrustedProxies({"a.proxy"}), std::runtime_error);
}

TEST_F(LimitsTest, WithoutADescriptorLeftAConnectionWaitsUntilThereIsOne) {
  AnswerOneAfterTheOther();
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const int next = dup(STDIN_FILENO);
  close(next);
  const rlimit none{static_cast<rlim_t>(next) + 1, before.rlim_max};  // but the client's own
  setrlimit(RLIMIT_NOFILE, &none);
  Wire wire(server->Port(), Head("GET /a"));
  std::string received;
  EXPECT_THROW(wire.Receive(received, std::chrono::milliseconds(300)), std::runtime_error);
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(Status(wire), 200);
}

// The server's own end of the connection, which runs in this process.
int SocketAt(uint16_t port) {
  for (int socket = 3; socket < 1000; ++socket) {
    sockaddr_in own{}, peer{};
    socklen_t length = sizeof own, peerLength = sizeof peer;
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&own), &length) == 0 && own.sin_port == htons(port) &&
        getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &peerLength) == 0) {
      return socket;
    }
  }
  return -1;
}

TEST_F(LimitsTest, TheKernelFindsDeadPeersWithinAMinute) {
  Wire wire(server->Port(), Head("GET /a"));
  ASSERT_EQ(Status(wire), 200);
  const int socket = SocketAt(server->Port());
  const auto option = [socket](int level, int name) {
    int value = -1;
    socklen_t length = sizeof value;
    getsockopt(socket, level, name, &value, &length);
    return value;
  };
  EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 1);
  const int silence =
      option(IPPROTO_TCP, TCP_KEEPIDLE) + option(IPPROTO_TCP, TCP_KEEPINTVL) * option(IPPROTO_TCP, TCP_KEEPCNT);
  EXPECT_GT(silence, 10);
  EXPECT_LE(silence, 60);
  EXPECT_GT(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 10000);
  EXPECT_LE(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 60000);
}

}  // namespace
}  // namespace server::test
