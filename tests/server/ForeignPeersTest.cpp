// SPDX-License-Identifier: Apache-2.0
// Peers that are not ours: a proxy that delays and cuts, curl, nginx as docs/proxies.md has it.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <list>
#include <regex>
#include <thread>

#include "../Cases.h"
#include "ServerProgram.h"
#include "TestClient.h"
#include "system/Sockets.h"

namespace server::test {
namespace {

// One that nobody listens on; somebody else might in the meantime.
uint16_t FreePort() {
  uint16_t port = 0;
  test_sockets::Close(test_sockets::Listen(port));
  return port;
}

// Passes a few bytes on at a time, and ends a connection after so many from the client.
class BadProxy {
 public:
  explicit BadProxy(uint16_t server)
      : m_server(server), m_listener(test_sockets::Listen(m_port)), m_thread([this] { Run(); }) {}
  ~BadProxy() {
    m_isOver = true;
    test_sockets::StopListening(m_listener);
    m_thread.join();
    for (std::thread& thread : m_connections) thread.join();
    test_sockets::CloseListener(m_listener);
  }
  uint16_t Port() const { return m_port; }
  void CutAfter(size_t bytes) { m_cut = bytes; }

 private:
  void Run() {
    for (int client; (client = test_sockets::Accept(m_listener)) >= 0;) {
      m_connections.emplace_back([this, client] { Pass(client); });
    }
  }
  void Pass(int client) const {
    const int server = test_sockets::Connect(m_server);
    size_t left = m_cut, endless = SIZE_MAX;
    while (!m_isOver && left > 0 && PassSome(client, server, left) && PassSome(server, client, endless)) {
    }
    test_sockets::Close(client);
    test_sockets::Close(server);
  }
  // False at the end of either. `left`: how many more are passed on.
  static bool PassSome(int from, int to, size_t& left) {
    if (!test_sockets::IsReadableWithin(from, 1)) return true;
    char piece[41];
    const ptrdiff_t count = test_sockets::Receive(from, piece, std::min(sizeof piece, left));
    left -= static_cast<size_t>(std::max<ptrdiff_t>(count, 0));
    return count > 0 && test_sockets::Send(to, piece, static_cast<size_t>(count)) == count;
  }

  const uint16_t m_server;
  uint16_t m_port = 0;
  const int m_listener;
  std::atomic<bool> m_isOver{false};
  std::atomic<size_t> m_cut{SIZE_MAX};
  std::list<std::thread> m_connections;
  std::thread m_thread;
};

class ForeignPeersTest : public ServerTest {};

TEST_F(ForeignPeersTest, AProxyThatDelaysAndCutsSpoilsNothingButItsOwnRequests) {
  BadProxy proxy(m_server->Port());
  const Client delayed(proxy.Port(), ann.LogIn("ann", "a").Token());
  delayed.AddView("before", -1, kAnn);
  EXPECT_EQ(delayed.Get("V0/Views").body, ann.Get("V0/Views").body);
  EventStream stream = delayed.Listen();
  int made = 0;
  for (size_t cut = 10; cut < 500; cut += 37) {
    proxy.CutAfter(cut);
    const std::string name = "cut after " + std::to_string(cut);
    std::string told;
    FailureOf([&] { told = delayed.Put("V0/Views/1", ViewBody(name, -1, kAnn)).Outcome(); });  // unless nothing comes
    const bool isMade = ann.Show("View", 1, {"Name"}) == name;
    made += isMade;
    EXPECT_TRUE(isMade || told != "0/0 200") << name;
  }
  EXPECT_GT(made, 0);
  EXPECT_LT(made, 14);
  for (int i = 0; i < made; ++i) EXPECT_EQ(stream.Next().Brief(), "OwnViews *1");
}

bool IsInstalled(const std::string& program) {
  return !Program({"sh", "-c", "PATH=$PATH:/usr/sbin command -v " + program}).Line().empty();
}

TEST_F(ForeignPeersTest, CurlIsServedInEachOfItsWays) {
  if (!IsInstalled("curl")) GTEST_SKIP() << "curl is not installed";
  const std::string body = WriteFile("body.json", ViewBody("V", -1, kAnn, Ballast(2 << 20)));
  const std::string setting = "url=http://127.0.0.1:" + std::to_string(m_server->Port()) + kRoot + "; body='@" + body +
                              "'; token=" + ann.LogIn("ann", "a").Token() + "; ";
  const std::string curl =
      "curl -s -m 20 -o /dev/null -o /dev/null -w '%{http_code}' -H \"Authorization: Bearer $token\" ";
  for (const auto& [arguments, status] : testing_support::Cases(TABLES "Curl.txt")) {
    EXPECT_EQ(Program({"sh", "-c", setting + curl + arguments}).All(), status.at(0)) << arguments;
  }
}

// What docs/proxies.md says of nginx, with other ports and without TLS.
std::string NginxOfThePage(uint16_t own, uint16_t server) {
  const std::string text = Bytes(PROXIES_PAGE);
  const size_t begin = text.find("```nginx\n") + 9;
  std::string part = text.substr(begin, text.find("```", begin) - begin);
  part = std::regex_replace(part, std::regex("127.0.0.1:8090"), "127.0.0.1:" + std::to_string(server));
  part = std::regex_replace(part, std::regex("listen 443 ssl"), "listen 127.0.0.1:" + std::to_string(own));
  return std::regex_replace(part, std::regex("ssl_[^\n]*\n"), "\n");
}

std::string PlainNginx(uint16_t own, uint16_t server) {
  return "server { listen 127.0.0.1:" + std::to_string(own) +
         "; location / { proxy_pass http://127.0.0.1:" + std::to_string(server) + "; } }";
}

class Nginx {
 public:
  Nginx(const TestFolder& folder, const std::string& servers, uint16_t port)
      : m_program({"sh", "-c",
                   "PATH=$PATH:/usr/sbin exec nginx -p '" + folder.Path("") + "' -c '" +
                       folder.WriteFile("nginx.conf", Configuration(folder, servers)) + "' -g 'daemon off;' -e '" +
                       folder.Path("error.log") + "'"}) {
    Eventually([&] { return Serves(folder, port) || m_program.HasEnded(); }, 3 * kPatience);
    m_serves = Serves(folder, port);
  }
  bool Serves() const { return m_serves; }

 private:
  static std::string Configuration(const TestFolder& folder, const std::string& servers) {
    // Its workers give up being root, and could not write into our folder.
    std::string text = geteuid() == 0 ? "user root;\n" : "";
    text += "pid " + folder.Path("nginx.pid") + ";\nworker_processes 1;\nevents {}\nhttp {\naccess_log off;\n";
    for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
      text += std::string(kind) + "_temp_path " + folder.Path(kind) + ";\n";
    }
    return text + servers + "}\n";
  }
  // It writes its number once it listens: what is reached before may be somebody else.
  static bool Serves(const TestFolder& folder, uint16_t port) {
    std::error_code none;
    if (std::filesystem::file_size(folder.Path("nginx.pid"), none) == 0 || none) return false;
    return FailureOf([port] { Wire reached(port); }).empty();
  }

  Program m_program;
  bool m_serves = false;
};

// `port`: where it listens; another one where somebody else takes the first.
std::unique_ptr<Nginx> StartNginx(const TestFolder& folder, std::string (*servers)(uint16_t, uint16_t), uint16_t server,
                                  uint16_t& port) {
  for (int attempt = 0; attempt < 5; ++attempt) {
    port = FreePort();
    auto nginx = std::make_unique<Nginx>(folder, servers(port, server), port);
    if (nginx->Serves()) return nginx;
  }
  throw std::runtime_error("nginx does not start");
}

TEST(BehindNginx, ChangesAreHeardAtOnceAndTheServerKnowsWhoAsks) {
  if (!IsInstalled("nginx")) GTEST_SKIP() << "nginx is not installed";
  const TestFolder folder;
  const std::string log = folder.Path("access.log");
  const ServerProgram server(R"({"Users":[{"ID":1,"Name":"ann","Password":"a"}]})",
                             {"--trusted-proxy", "127.0.0.1", "--access-log", log});
  for (const auto& servers : {PlainNginx, NginxOfThePage}) {
    uint16_t port = 0;
    const std::unique_ptr<Nginx> nginx = StartNginx(folder, servers, server.Port(), port);
    const Client ann(port, Client(port, "").LogIn("ann", "a").Token());
    EventStream stream = ann.Listen();
    ann.AddView("V", -1, 1);
    EXPECT_LT(TimeOf([&stream] { EXPECT_EQ(stream.Next().name, "OwnViews"); }), std::chrono::seconds(30));
    const int status = ann.Post("V0/Views", ViewBody("V", -1, 1, Ballast(3 << 20))).status;
    EXPECT_EQ(status, servers == NginxOfThePage ? 200 : 413);
    const std::string asked = Head("GET " + kRoot + "V0/Areas?of-the-page", kClose);
    EXPECT_EQ(Wire(port, asked, "127.0.0.7").NextStatus(), 401);
  }
  // The page's way alone tells the address. On the kept connection a user's requests came before.
  const auto isTold = [&log] { return ("\n" + Bytes(log)).find("\n127.0.0.7 - - [") != std::string::npos; };
  EXPECT_TRUE(Eventually(isTold)) << Bytes(log);
}

}  // namespace
}  // namespace server::test
