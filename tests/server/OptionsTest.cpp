// SPDX-License-Identifier: Apache-2.0
// What `viewserver` is told by its options is what it does, each of them for itself: a probe feels a limit where its
// option sets it low, and not where another option does that is easily taken for it, nor where none does.
#include <deque>
#include <functional>

#include "ServerProgram.h"
#include "TestClient.h"

namespace server::test {
namespace {

std::string RequestLines(const std::string& line, const std::string& token, const std::string& more = "",
                         const std::string& body = "") {
  std::string head = line + " HTTP/1.1\r\nHost: t\r\n" + more;
  if (!token.empty()) head += "Authorization: Bearer " + token + "\r\n";
  if (more.empty()) head += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  return head + "\r\n" + body;
}

int Status(Wire& wire) {
  std::string received;
  return wire.Receive(received) ? ParseAnswer(received + "\r\n\r\n").status : 0;
}

class OptionsTest : public ServerTest {
 public:
  OptionsTest() {
    for (const char* name : {"ann", "bob", "cid"}) m_tokens.push_back(m_server->OpenLocalSession(name)->token);
    m_server.reset();
  }

  void Start(const std::vector<std::string>& option) {
    std::vector<std::string> command{VIEWSERVER_FILE, "--data", Options().dataFile, "--listen", "127.0.0.1:0"};
    command.insert(command.end(), option.begin(), option.end());
    m_program.reset();
    m_program = std::make_unique<ServerProgram>(command);
  }
  Wire& Open(std::deque<Wire>& wires, const std::string& sent, const std::string& from = "127.0.0.1") const {
    return wires.emplace_back(m_program->Port(), sent, from.c_str());
  }
  // Whether some are refused for what others do.
  static bool IsRefused(std::deque<Wire>& wires, int with = 503) {
    int count = 0;
    for (Wire& wire : wires) count += Status(wire) == with;
    return count > 0;
  }

  bool StrangersFrom(const std::function<std::string(int)>& address) const {
    std::deque<Wire> wires;
    for (int i = 0; i < 6; ++i) Status(Open(wires, RequestLines("GET /a", ""), address(i)));
    wires[0].Send(RequestLines("GET /a", ""));
    return Status(wires[0]) == 0;
  }
  bool StrangersFromMany() {
    return StrangersFrom([](int i) { return "127.0.1." + std::to_string(1 + i); });
  }
  bool StrangersFromOne() {
    return StrangersFrom([](int) { return "127.0.0.2"; });
  }
  bool ConnectionsOfOne() {
    std::deque<Wire> wires;
    for (int i = 0; i < 3; ++i) Open(wires, RequestLines("GET " + kRoot + "V0/Areas", m_tokens[0]));
    return IsRefused(wires, 429);
  }
  // Names and addresses are used once, for whom many log-ins fail is not looked at.
  bool LogInsFrom(const std::function<std::string(int)>& address) {
    std::deque<Wire> wires;
    for (int i = 0; i < 8; ++i) {
      const std::string name = std::to_string(m_wave) + "-" + std::to_string(i);
      const std::string body = R"({"Session":{"UserName":")" + name + R"(","Password":"x"}})";
      Open(wires, RequestLines("POST " + kRoot + "V0/Sessions", "", "", body), address(i));
    }
    ++m_wave;
    return IsRefused(wires);
  }
  bool LogInsFromMany() {
    return LogInsFrom([this](int i) { return "127.1." + std::to_string(m_wave % 250) + "." + std::to_string(1 + i); });
  }
  bool LogInsFromOne() {
    return LogInsFrom([this](int) { return "127.2.0." + std::to_string(1 + m_wave % 250); });
  }
  // Bodies that take a while to be worked on, and end at the same moment.
  bool BodiesOf(size_t users) {
    std::string numbers = R"(,"X":[0)";
    for (int i = 0; i < 400000; ++i) numbers += ",0";
    const std::string body = ViewBody("V", -1, -1, numbers + "]");
    std::deque<Wire> wires;
    for (size_t i = 0; i < 3; ++i) {
      const std::string whole = RequestLines("POST " + kRoot + "V0/Views", m_tokens[i % users], "", body);
      Open(wires, whole.substr(0, whole.size() - 1));
    }
    for (Wire& wire : wires) wire.Send("}");
    return IsRefused(wires);
  }
  bool BodiesOfMany() { return BodiesOf(3); }
  bool BodiesOfOne() { return BodiesOf(1); }
  bool LargeBody() {
    const std::string announced = "Expect: 100-continue\r\nContent-Length: 1500000\r\n";
    Wire wire(m_program->Port(), RequestLines("POST " + kRoot + "V0/Views", m_tokens[0], announced));
    return Status(wire) == 503;
  }
  bool OldChange() {
    const Client client(m_program->Port(), m_tokens[0]);
    for (int i = 0; i < 5; ++i) client.AddGroup("G", -1, 1);
    return client.Listen(0).Status() == 410;
  }
  bool PlainList() {
    const Client client(m_program->Port(), m_tokens[0]);
    for (int i = 0; i < 6; ++i) client.AddView("a view", -1, -1);
    const std::string asked =
        RequestLines("GET " + kRoot + "V0/Views", m_tokens[0], "Connection: close\r\nAccept-Encoding: zstd\r\n");
    return ParseAnswer(Wire(m_program->Port(), asked).ReceiveAll()).headers.count("content-encoding") == 0;
  }

 private:
  std::unique_ptr<ServerProgram> m_program;
  std::vector<std::string> m_tokens;
  int m_wave = 0;
};

TEST_F(OptionsTest, EachSetsItsOwnLimit) {
  using Probes = OptionsTest;
  const struct {
    std::vector<std::string> option;
    bool (Probes::*feels)(), (Probes::*feelsNot)();
  } cases[] = {
      {{"--max-connections", "4"}, &Probes::StrangersFromMany, &Probes::ConnectionsOfOne},
      {{"--max-connections-per-user", "1"}, &Probes::ConnectionsOfOne, &Probes::StrangersFromOne},
      {{"--max-strangers-per-address", "1"}, &Probes::StrangersFromOne, &Probes::StrangersFromMany},
      {{"--max-waiting-logins", "1"}, &Probes::LogInsFromMany, &Probes::BodiesOfMany},
      {{"--max-waiting-logins-per-address", "1"}, &Probes::LogInsFromOne, &Probes::LogInsFromMany},
      {{"--max-waiting-bodies", "1"}, &Probes::BodiesOfMany, &Probes::LogInsFromMany},
      {{"--max-waiting-bodies-per-user", "1"}, &Probes::BodiesOfOne, &Probes::BodiesOfMany},
      {{"--max-body-memory", "2"}, &Probes::LargeBody, &Probes::ConnectionsOfOne},
      {{"--no-compression"}, &Probes::PlainList, &Probes::LargeBody},
      {{"--keep-changes", "3"}, &Probes::OldChange, &Probes::LargeBody},
      {{"--keep-change-bytes", "300"}, &Probes::OldChange, &Probes::LargeBody},
  };
  Start({});
  for (const auto& c : cases) EXPECT_FALSE((this->*c.feels)()) << "without " << c.option[0];
  for (const auto& c : cases) {
    SCOPED_TRACE(c.option[0]);
    Start(c.option);
    EXPECT_FALSE((this->*c.feelsNot)());
    // Where the machine is so busy that nothing has to wait, there is a next time.
    bool isFelt = false;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!isFelt && std::chrono::steady_clock::now() < end) isFelt = (this->*c.feels)();
    EXPECT_TRUE(isFelt);
  }
}

}  // namespace
}  // namespace server::test
