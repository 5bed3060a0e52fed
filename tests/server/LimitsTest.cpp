// SPDX-License-Identifier: Apache-2.0
// What clients may hold of the server, and that those who hold much keep nobody else waiting or out.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <deque>
#include <stdexcept>

#include "../Cases.h"
#include "EchoHandler.h"
#include "TestClient.h"
#include "server/http/Addresses.h"
#include "server/http/BodyBudget.h"
#include "server/http/HttpServer.h"

namespace server::test {
namespace {

constexpr const char* kOne = "127.0.0.2";
constexpr const char* kOther = "127.0.0.3";

class LimitsTest : public HttpSideTest<Echo> {
 protected:
  LimitsTest() {
    settings.loginThreads = 1;
    settings.maxStrangersPerAddress = 4;
    settings.maxWaitingLogins = 4;
    settings.maxWaitingLoginsPerAddress = 2;
    settings.maxBodyBytes = 2 << 20;
    settings.trustedProxies = {"127.0.0.9"};
    Serve();
  }

  Wire& Open(std::deque<Wire>& wires, const std::string& sent, const char* from = nullptr) const {
    return wires.emplace_back(server->Port(), sent, from);
  }
  // With one thread a connection lies idle, after its answer, before a later request is looked at.
  void AnswerOneAfterTheOther() {
    settings.threads = 1;
    Serve();
  }
  static bool IsOpen(Wire& wire) {
    wire.Send(Head("GET /a"));
    return wire.NextStatus() == 200;
  }
  // Waits until so many of them have been answered 503.
  static void AwaitRefusals(std::deque<Wire>& wires, int count) {
    Eventually([&] {
      for (Wire& wire : wires) {
        std::string received;
        FailureOf([&] { wire.Receive(received, std::chrono::milliseconds(1)); });  // unless it waits
        if (received.starts_with("HTTP/1.1 503")) --count;
      }
      return count <= 0;
    });
    EXPECT_EQ(count, 0);
  }
};

TEST_F(LimitsTest, LogInsWaitForTheirTurnByAddressAndLargeBodiesForNoneOfThem) {
  settings.maxStrangersPerAddress = 20;
  Serve();
  std::deque<Wire> first, ofOne, ofOther;
  Open(first, Head("POST /login?hold"), kOne);
  ASSERT_TRUE(handler.Held().WaitUntilReached());
  for (int i = 0; i < 6; ++i) Open(ofOne, Head("POST /login"), kOne);
  AwaitRefusals(ofOne, 4);
  for (int i = 0; i < 3; ++i) Open(ofOther, Head("POST /login"), kOther);
  AwaitRefusals(ofOther, 1);
  EXPECT_EQ(Wire(server->Port(), Head("POST /login"), "127.0.0.4").NextStatus(), 503) << "the lane is full";
  EXPECT_EQ(Wire(server->Port(), Head("POST /large"), kOne).NextStatus(), 200) << "while log-ins wait";
  handler.Held().Open();
  EXPECT_TRUE(Eventually([this] { return handler.Logins().size() >= 5; }));
  EXPECT_EQ(handler.Logins(), (std::vector<std::string>{kOne, kOne, kOther, kOne, kOther}));
}

TEST_F(LimitsTest, WhoComesAnewTakesThePlaceOfTheStrangerThatWasIdleForTheLongestTime) {
  AnswerOneAfterTheOther();
  std::deque<Wire> ofOne, users, others;
  EXPECT_EQ(Open(users, Head("GET /a", As(1)), kOne).NextStatus(), 200);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(Open(ofOne, Head("GET /a"), kOne).NextStatus(), 200);
  EXPECT_TRUE(IsOpen(ofOne[0])) << "now the second is the longest idle";
  EXPECT_EQ(Open(ofOne, Head("GET /a"), kOne).NextStatus(), 200) << "a fifth";
  EXPECT_EQ(ofOne[1].NextStatus(), 0);
  EXPECT_TRUE(IsOpen(ofOne[0]));

  Wire busy(server->Port(), Head("POST /login?hold"), "127.0.0.4");
  ASSERT_TRUE(handler.Held().WaitUntilReached());
  for (int i = 0; i < 40; ++i) {  // strangers may have 15 places
    EXPECT_EQ(Open(others, Head("GET /a"), ("127.0.1." + std::to_string(1 + i)).c_str()).NextStatus(), 200);
  }
  EXPECT_EQ(ofOne[0].NextStatus(), 0);
  EXPECT_EQ(others[25].NextStatus(), 0) << "the 14 after it and the busy one have the places";
  EXPECT_TRUE(IsOpen(others[39]));
  EXPECT_TRUE(IsOpen(users[0])) << "a user keeps the connection";
  EXPECT_EQ(Open(users, Head("GET /a", As(2)), kOne).NextStatus(), 200) << "and comes in";
  handler.Held().Open();
  EXPECT_EQ(busy.NextStatus(), 200) << "a stranger that is being answered stays";
}

TEST_F(LimitsTest, AConnectionThatLosesItsUserCountsAsAStranger) {
  AnswerOneAfterTheOther();
  std::deque<Wire> wires;
  const auto use = [](Wire& wire) {
    wire.Send(Head("GET /a", As(1)));
    EXPECT_EQ(wire.NextStatus(), 200);
    wire.Send(Head("GET /a", Bearer("nobody")));
    EXPECT_EQ(wire.NextStatus(), 200);
  };
  for (int i = 0; i < 5; ++i) use(Open(wires, "", kOne));
  EXPECT_EQ(wires[0].NextStatus(), 0);
  EXPECT_TRUE(IsOpen(wires[1]));
}

// "100 Continue" tells that a body is wanted.
TEST_F(LimitsTest, BodiesShareTheMemoryAndNobodyHoldsMoreThanTheyLeave) {
  const auto announce = [](const std::string& who, const std::string& length) {
    return Head("PUT /a", who + "Expect: 100-continue\r\n" + length + "\r\n");
  };
  const auto bytes = [](int kib) { return "Content-Length: " + std::to_string(kib << 10); };
  std::deque<Wire> wires;
  EXPECT_EQ(Open(wires, announce(As(1), bytes(1024))).NextStatus(), 100) << "half of it";
  EXPECT_EQ(Open(wires, announce(As(1), bytes(65))).NextStatus(), 503);
  EXPECT_EQ(Open(wires, announce(As(2), bytes(300))).NextStatus(), 100);
  EXPECT_EQ(Open(wires, announce(As(2), bytes(300))).NextStatus(), 503);
  EXPECT_EQ(Open(wires, announce("", bytes(1))).NextStatus(), 100) << "there is always room for what is small";
  Wire& chunked = Open(wires, announce(As(3), "Transfer-Encoding: chunked"));
  EXPECT_EQ(chunked.NextStatus(), 100);
  chunked.Send("80000\r\n" + std::string(0x80000, 'x'));
  EXPECT_EQ(chunked.NextStatus(), 503) << "it has outgrown its share";
  wires.clear();
  const auto has = [&] { return Open(wires, announce(As(1), bytes(1024))).NextStatus() == 100; };
  EXPECT_TRUE(Eventually(has)) << "what has ended holds nothing";
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
  // The peer, and what it says.
  for (const auto& [told, expected] : testing_support::Cases(TABLES "Requests.txt")) {
    const std::string peer = told.substr(0, told.find(' '));
    const std::string fields = kClose + WithLineEnds(told.substr(peer.size() + 1)) + "\r\n";
    EXPECT_EQ(ParseAnswer(Wire(server->Port(), Head("GET /peer", fields), peer.c_str()).ReceiveAll()).body,
              expected.at(0))
        << told;
  }
  EXPECT_EQ(NetworkOf(boost::asio::ip::make_address("2001:db8:1:2:3333::4")), "2001:db8:1:2::/64");
  std::deque<Wire> wires;
  for (int i = 0; i < 8; ++i) Open(wires, Head("GET /a"), "127.0.0.9");
  for (Wire& wire : wires) EXPECT_EQ(wire.NextStatus(), 200) << "the limit of an address is not for a trusted proxy";
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
  EXPECT_EQ(wire.NextStatus(), 200);
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
  ASSERT_EQ(wire.NextStatus(), 200);
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
  EXPECT_EQ(silence, 50);
  EXPECT_EQ(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 50000) << "the same of what is not acknowledged";
}

}  // namespace
}  // namespace server::test
