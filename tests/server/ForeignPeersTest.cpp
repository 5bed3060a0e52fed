// SPDX-License-Identifier: Apache-2.0
// Peers that are not ours: a proxy that delays and cuts, curl, nginx as docs/proxies.md has it.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <list>
#include <regex>
#include <sstream>

#include "ServerProgram.h"
#include "TestClient.h"

namespace server::test {
namespace {

int Listener(uint16_t& port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(listener, 16) != 0) {
    throw std::runtime_error("cannot listen");
  }
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  port = ntohs(address.sin_port);
  return listener;
}

// One that nobody listens on; somebody else might in the meantime.
uint16_t FreePort() {
  uint16_t port = 0;
  close(Listener(port));
  return port;
}

// Passes a few bytes on at a time, and ends a connection after so many from the client.
class BadProxy {
 public:
  explicit BadProxy(uint16_t server) : m_server(server), m_listener(Listener(m_port)), m_thread([this] { Run(); }) {}
  ~BadProxy() {
    m_isOver = true;
    m_thread.join();
    for (std::thread& thread : m_connections) thread.join();
    close(m_listener);
  }
  uint16_t Port() const { return m_port; }
  void CutAfter(long bytes) { m_cut = bytes; }

 private:
  void Run() {
    pollfd readable{m_listener, POLLIN, 0};
    while (!m_isOver) {
      if (poll(&readable, 1, 20) <= 0) continue;
      const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
      m_connections.emplace_back([this, client] { Pass(client); });
    }
  }
  void Pass(int client) const {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_server);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(server, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
      for (long left = m_cut; !m_isOver && left > 0 && PassSome(client, server, left);) {
      }
    }
    close(client);
    close(server);
  }
  // False at the end of either. `left`: how many more of the client's are passed on.
  static bool PassSome(int client, int server, long& left) {
    pollfd ends[] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
    poll(ends, 2, 20);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    char piece[41];
    if (ends[0].revents != 0) {
      const ssize_t count = recv(client, piece, std::min<size_t>(sizeof piece, static_cast<size_t>(left)), 0);
      if (count <= 0 || send(server, piece, static_cast<size_t>(count), MSG_NOSIGNAL) != count) return false;
      left -= count;
    }
    if (ends[1].revents != 0) {
      const ssize_t count = recv(server, piece, sizeof piece, 0);
      if (count <= 0 || send(client, piece, static_cast<size_t>(count), MSG_NOSIGNAL) != count) return false;
    }
    return true;
  }

  const uint16_t m_server;
  uint16_t m_port = 0;
  const int m_listener;
  std::atomic<bool> m_isOver{false};
  std::atomic<long> m_cut{1 << 30};
  std::list<std::thread> m_connections;
  std::thread m_thread;
};

std::string TokenOf(const Answer& answer) {
  return answer.Data()["Session"]["Token"].GetString();
}

class ForeignPeersTest : public ServerTest {};

TEST_F(ForeignPeersTest, AProxyThatDelaysAndCutsSpoilsNothingButItsOwnRequests) {
  BadProxy proxy(m_server->Port());
  const std::string token = TokenOf(ann.LogIn("ann", "a"));
  const Client delayed(proxy.Port(), token);
  const int32_t view = delayed.AddView("before", -1, kAnn);
  EXPECT_EQ(delayed.Get("V0/Views").body, ann.Get("V0/Views").body);
  EventStream stream = delayed.Listen();
  const std::string path = "V0/Views/" + std::to_string(view);
  int made = 0;
  for (long cut = 10; cut < 500; cut += 37) {
    proxy.CutAfter(cut);
    const std::string name = "cut after " + std::to_string(cut);
    std::string told;
    try {
      told = delayed.Put(path, ViewBody(name, -1, kAnn)).Outcome();
    } catch (const std::runtime_error&) {
    }
    const bool isMade = ann.Show("View", view, {"Name"}) == name;
    made += isMade;
    EXPECT_TRUE(isMade || told != "0/0 200") << name;
  }
  EXPECT_GT(made, 0);
  EXPECT_LT(made, 14);
  for (int i = 0; i < made; ++i) EXPECT_EQ(stream.Next().Brief(), "OwnViews *" + std::to_string(view));
}

bool IsInstalled(const std::string& program) {
  return !Program({"sh", "-c", "PATH=$PATH:/usr/sbin command -v " + program}).Line().empty();
}

TEST_F(ForeignPeersTest, CurlIsServedInEachOfItsWays) {
  if (!IsInstalled("curl")) GTEST_SKIP() << "curl is not installed";
  const std::string body =
      WriteFile("body.json", ViewBody("V", -1, kAnn, R"(,"X":")" + std::string(2 << 20, 'x') + '"'));
  const std::string token = TokenOf(ann.LogIn("ann", "a"));
  const std::string url = "http://127.0.0.1:" + std::to_string(m_server->Port()) + kRoot;
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{url + "V0/Areas"}, "200"},
      {{"--http1.0", url + "V0/Areas"}, "200"},
      {{"--head", url + "V0/Areas"}, "200"},
      {{"--head", url + "V0/Nothing", url + "V0/Areas"}, "404200"},
      {{"--request-target", url + "V0/Areas", url}, "200"},
      {{"--data-binary", "@" + body, "-H", "Expect: 100-continue", url + "V0/Views", url + "V0/Views"}, "200200"},
      {{"--data-binary", "@" + body, "-H", "Transfer-Encoding: chunked", url + "V0/Views"}, "200"},
      {{"--data-binary", "@" + body, "-H", "Transfer-Encoding: gzip, chunked", url + "V0/Views"}, "501"},
      {{"-H", "Host:", url + "V0/Areas"}, "400"},
  };
  for (const auto& [arguments, expected] : cases) {
    std::vector<std::string> command{"curl", "-s",        "-m", "20",           "-o", "/dev/null",
                                     "-o",   "/dev/null", "-w", "%{http_code}", "-H", "Authorization: Bearer " + token};
    command.insert(command.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(Program(command).All(), expected) << arguments[0] << ' ' << arguments.back();
  }
}

// What docs/proxies.md says of nginx, with other ports and without TLS.
std::string NginxOfThePage(uint16_t own, uint16_t server) {
  std::stringstream page;
  page << std::ifstream(PROXIES_PAGE).rdbuf();
  const std::string text = page.str();
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
                   "PATH=$PATH:/usr/sbin exec nginx -p '" + folder.Path() + "' -c '" +
                       folder.Write("nginx.conf", Configuration(folder.Path(), servers)) + "' -g 'daemon off;' -e '" +
                       folder.Path() + "/error.log'"}) {
    const auto end = std::chrono::steady_clock::now() + 3 * kPatience;
    while (!Serves(folder, port) && !m_program.HasEnded() && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    m_serves = Serves(folder, port);
  }
  bool Serves() const { return m_serves; }

 private:
  static std::string Configuration(const std::string& folder, const std::string& servers) {
    // Its workers give up being root, and could not write into our folder.
    std::string text = geteuid() == 0 ? "user root;\n" : "";
    text += "pid " + folder + "/nginx.pid;\nworker_processes 1;\nevents {}\nhttp {\naccess_log off;\n";
    for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
      text += std::string(kind) + "_temp_path " + folder + "/" + kind + ";\n";
    }
    return text + servers + "}\n";
  }
  // It writes its number once it listens: what is reached before may be somebody else.
  static bool Serves(const TestFolder& folder, uint16_t port) {
    std::error_code none;
    if (std::filesystem::file_size(folder.Path() + "/nginx.pid", none) == 0 || none) return false;
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
  const std::string log = folder.Path() + "/access.log";
  const ServerProgram server(R"({"Users":[{"ID":1,"Name":"ann","Password":"a"}]})",
                             {"--trusted-proxy", "127.0.0.1", "--access-log", log});
  for (const auto& servers : {PlainNginx, NginxOfThePage}) {
    uint16_t port = 0;
    const std::unique_ptr<Nginx> nginx = StartNginx(folder, servers, server.Port(), port);
    const std::string token = TokenOf(Client(port, "").LogIn("ann", "a"));
    const Client ann(port, token);
    EventStream stream = ann.Listen();
    const auto began = std::chrono::steady_clock::now();
    ann.AddView("V", -1, 1);
    EXPECT_EQ(stream.Next().name, "OwnViews");
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(30));
    const int status = ann.Post("V0/Views", ViewBody("V", -1, 1, R"(,"X":")" + std::string(3 << 20, 'x') + '"')).status;
    EXPECT_EQ(status, servers == NginxOfThePage ? 200 : 413);
    const std::string asked = "GET " + kRoot + "V0/Areas?of-the-page HTTP/1.1\r\nHost: t\r\nConnection: close\r\n\r\n";
    EXPECT_EQ(ParseAnswer(Wire(port, asked, "127.0.0.7").ReceiveAll()).status, 401);
  }
  // The page's way alone tells the address. On the kept connection a user's requests came before.
  bool isTold = false;
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!isTold && std::chrono::steady_clock::now() < end) {
    std::ifstream lines(log);
    for (std::string line; std::getline(lines, line);) isTold = isTold || line.rfind("127.0.0.7 - - [", 0) == 0;
  }
  std::stringstream all;
  all << std::ifstream(log).rdbuf();
  EXPECT_TRUE(isTold) << all.str();
}

}  // namespace
}  // namespace server::test
