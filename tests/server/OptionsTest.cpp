// SPDX-License-Identifier: Apache-2.0
// What `viewserver` is told by its options is what it does, each of them for itself: a probe feels a limit where its
// option sets it low, and not where another option does that is easily taken for it, nor where none does.
#include <algorithm>
#include <deque>

#include "ServerProgram.h"
#include "TestClient.h"

namespace server::test {
namespace {

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
  Client As(size_t user) const { return {m_program->Port(), m_tokens[user]}; }
  // Whether some are refused for what others do.
  static bool IsRefused(std::deque<Wire>& wires, int with = 503) {
    return std::ranges::count(wires, with, &Wire::NextStatus) > 0;
  }

  // Their token is nobody's, and so makes no users of them.
  bool StrangersFrom(bool isMany) const {
    std::deque<Wire> wires;
    for (int i = 0; i < 6; ++i) {
      Open(wires, Head("GET /a", Bearer("ended")), "127.0.1." + std::to_string(isMany ? i + 1 : 99)).NextStatus();
    }
    wires[0].Send(Head("GET /a"));
    return wires[0].NextStatus() == 0;
  }
  bool StrangersFromMany() { return StrangersFrom(true); }
  bool StrangersFromOne() { return StrangersFrom(false); }
  bool ConnectionsOfOne() {
    std::deque<Wire> wires;
    for (int i = 0; i < 3; ++i) Open(wires, Head("GET " + kRoot + "V0/Areas", Bearer(m_tokens[0])));
    return IsRefused(wires, 429);
  }
  // Names and addresses are used once, for whom many log-ins fail is not looked at.
  bool LogInsFrom(bool isMany) {
    std::deque<Wire> wires;
    const std::string network = "127.1." + std::to_string(++m_wave % 250) + ".";
    for (int i = 0; i < 8; ++i) {
      const std::string name = std::to_string(m_wave) + "-" + std::to_string(i);
      const std::string body = R"({"Session":{"UserName":")" + name + R"(","Password":"x"}})";
      Open(wires, Client().Written("POST", "V0/Sessions", body), network + std::to_string(isMany ? i + 1 : 99));
    }
    return IsRefused(wires);
  }
  bool LogInsFromMany() { return LogInsFrom(true); }
  bool LogInsFromOne() { return LogInsFrom(false); }
  // Bodies that take a while to be worked on, and end at the same moment.
  bool BodiesOf(size_t users) {
    std::string numbers = R"(,"X":[0)";
    for (int i = 0; i < 400000; ++i) numbers += ",0";
    const std::string body = ViewBody("V", -1, -1, numbers + "]");
    std::deque<Wire> wires;
    for (size_t i = 0; i < 3; ++i) {
      const std::string whole = As(i % users).Written("POST", "V0/Views", body);
      Open(wires, whole.substr(0, whole.size() - 1));
    }
    for (Wire& wire : wires) wire.Send("}");
    return IsRefused(wires);
  }
  bool BodiesOfMany() { return BodiesOf(3); }
  bool BodiesOfOne() { return BodiesOf(1); }
  bool LargeBody() {
    const std::string announced = "Expect: 100-continue\r\nContent-Length: 1500000\r\n";
    return Wire(m_program->Port(), Head("POST " + kRoot + "V0/Views", Bearer(m_tokens[0]) + announced)).NextStatus() ==
           503;
  }
  bool OldChange() {
    const Client client = As(0);
    for (int i = 0; i < 5; ++i) client.AddGroup("G", -1, 1);
    return client.Listen(0).Status() == 410;
  }
  bool PlainList() {
    for (int i = 0; i < 6; ++i) As(0).AddView("a view", -1, -1);
    const std::string asked =
        Head("GET " + kRoot + "V0/Views", Bearer(m_tokens[0]) + kClose + "Accept-Encoding: zstd\r\n");
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
    EXPECT_TRUE(Eventually([&] { return (this->*c.feels)(); }));
  }
}

}  // namespace
}  // namespace server::test
