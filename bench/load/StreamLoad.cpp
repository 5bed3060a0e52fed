// SPDX-License-Identifier: Apache-2.0
// Many listeners and a steady rate of edits against one server process: is every change heard by everybody who may see
// it, once and in order for each object, how late, and does the server's memory stay what it is? Ends with status 1
// when a change is missing or out of order, or when the memory grows.
#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <boost/asio.hpp>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "../../tests/model/ServerProcess.h"
#include "../../tests/server/TestClient.h"

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using Clock = std::chrono::steady_clock;
using server::test::Client;
using server::test::kRoot;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryCounts = false;  // the sanitizer keeps what was freed
#else
constexpr bool kMemoryCounts = true;
#endif
constexpr int kViewsOfAUser = 4;
constexpr size_t kEditors = 8;

struct Options {
  int users = 50;
  int clients = 1000;
  int edits = 200;  // a second
  int seconds = 60;
};

double Milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

// What has been edited and what must be heard of it. A view's name is "<number of the edit>".
struct Ledger {
  std::vector<Clock::time_point> sent;           // by number of the edit
  std::map<int32_t, std::vector<size_t>> edits;  // of a view, in order
  std::vector<float> delays;                     // of all events, in milliseconds
  size_t disorder = 0;
};

// One listener.
class Stream : public std::enable_shared_from_this<Stream> {
 public:
  Stream(asio::io_context& io, Ledger& ledger) : m_socket(io), m_ledger(ledger) {}

  void Open(uint16_t port, const std::string& token, int64_t after) {
    m_socket.connect({asio::ip::make_address("127.0.0.1"), port});
    asio::write(m_socket, asio::buffer("GET " + kRoot + "V0/Changes?After=" + std::to_string(after) +
                                       " HTTP/1.1\r\nHost: load\r\nAuthorization: Bearer " + token + "\r\n\r\n"));
    Read();
  }
  size_t Heard() const { return m_heard; }
  Clock::time_point LastHeard() const { return m_lastHeard; }
  bool HasEnded() const { return m_ended; }
  // Whether every edit of that view has been heard.
  bool Knows(int32_t view) const {
    const auto position = m_positions.find(view);
    return (position == m_positions.end() ? 0 : position->second) == m_ledger.edits[view].size();
  }

 private:
  void Read() {
    m_socket.async_read_some(asio::buffer(m_piece), [self = shared_from_this()](error_code error, size_t bytes) {
      if (error) {
        self->m_ended = true;
        return;
      }
      self->m_received.append(self->m_piece.data(), bytes);
      self->TakeEvents();
      self->Read();
    });
  }

  void TakeEvents() {
    size_t begin = 0;
    for (size_t end = 0; (end = m_received.find("\n\n", begin)) != std::string::npos; begin = end + 2) {
      TakeEvent(std::string_view(m_received).substr(begin, end - begin));
    }
    m_received.erase(0, begin);
  }

  void TakeEvent(std::string_view event) {
    static constexpr std::string_view kId = "{\"ID\":";
    static constexpr std::string_view kName = "\"Name\":\"";
    const size_t id = event.find(kId);
    const size_t name = event.find(kName);
    if (id == std::string_view::npos || name == std::string_view::npos) return;  // a sign of life
    const auto view = static_cast<int32_t>(std::strtol(event.data() + id + kId.size(), nullptr, 10));
    const size_t number = std::strtoul(event.data() + name + kName.size(), nullptr, 10);
    size_t& position = m_positions[view];
    const std::vector<size_t>& edits = m_ledger.edits[view];
    if (position >= edits.size() || edits[position] != number) ++m_ledger.disorder;
    ++position;
    ++m_heard;
    m_lastHeard = Clock::now();
    m_ledger.delays.push_back(static_cast<float>(Milliseconds(m_lastHeard - m_ledger.sent[number])));
  }

  tcp::socket m_socket;
  Ledger& m_ledger;
  std::array<char, 16384> m_piece{};
  std::string m_received;
  std::map<int32_t, size_t> m_positions;  // how many edits of a view have been heard
  size_t m_heard = 0;
  Clock::time_point m_lastHeard;
  bool m_ended = false;
};

// One connection that sends edits, one after the other.
class Editor : public std::enable_shared_from_this<Editor> {
 public:
  Editor(asio::io_context& io, uint16_t port, Ledger& ledger) : m_socket(io), m_ledger(ledger) {
    m_socket.connect({asio::ip::make_address("127.0.0.1"), port});
    m_socket.set_option(tcp::no_delay(true));
  }

  struct Edit {
    size_t number;
    int32_t view;
    int32_t owner;
    const std::string* token;
  };
  void Ask(const Edit& edit) {
    m_waiting.push_back(edit);
    m_longest = std::max(m_longest, m_waiting.size());
    if (m_waiting.size() == 1) Send();
  }
  size_t Waiting() const { return m_waiting.size(); }
  size_t Longest() const { return m_longest; }
  size_t Refused() const { return m_refused; }

 private:
  void Send() {
    const Edit& edit = m_waiting.front();
    const std::string body = server::test::ViewBody(std::to_string(edit.number), -1, edit.owner,
                                                    R"(,"PlanPages":[{"PlanViewItem":[{"ResourceType":1001}]}])");
    m_request = "PUT " + kRoot + "V0/Views/" + std::to_string(edit.view) + " HTTP/1.1\r\nHost: load\r\n" +
                "Authorization: Bearer " + *edit.token + "\r\nContent-Length: " + std::to_string(body.size()) +
                "\r\n\r\n" + body;
    m_ledger.edits[edit.view].push_back(edit.number);
    m_ledger.sent[edit.number] = Clock::now();
    asio::async_write(m_socket, asio::buffer(m_request), [self = shared_from_this()](error_code error, size_t) {
      if (!error) self->ReadAnswer();
    });
  }

  void ReadAnswer() {
    m_socket.async_read_some(asio::buffer(m_piece), [self = shared_from_this()](error_code error, size_t bytes) {
      if (error) return;
      self->m_received.append(self->m_piece.data(), bytes);
      if (!self->m_received.ends_with("}}}")) return self->ReadAnswer();  // the end of the envelope
      self->m_refused += self->m_received.find("\"ErrorCode\":0") == std::string::npos;
      self->m_received.clear();
      self->m_waiting.pop_front();
      if (!self->m_waiting.empty()) self->Send();
    });
  }

  tcp::socket m_socket;
  Ledger& m_ledger;
  std::deque<Edit> m_waiting;
  std::array<char, 4096> m_piece{};
  std::string m_request, m_received;
  size_t m_longest = 0;
  size_t m_refused = 0;
};

struct User {
  std::string listens, edits;  // tokens
  std::vector<int32_t> views;
};

std::string SeedText(const Options& options) {
  std::string users, views;
  int view = 1;  // the public one
  for (int user = 1; user <= options.users; ++user) {
    users += std::string(user > 1 ? "," : "") + R"({"ID":)" + std::to_string(user) + R"(,"Name":"u)" +
             std::to_string(user) + R"(","Password":"p"})";
    for (int i = 0; i < kViewsOfAUser; ++i) {
      views += R"(,{"ID":)" + std::to_string(++view) + R"(,"Name":"v","UserID":)" + std::to_string(user) + "}";
    }
  }
  return R"({"Users":[)" + users + R"(],"Views":[{"ID":1,"Name":"public"})" + views + "]}";
}

std::string LogIn(uint16_t port, int user) {
  const auto answer = Client(port, "").Post(
      "V0/Sessions", R"({"Session":{"UserName":"u)" + std::to_string(user) + R"(","Password":"p"}})");
  return answer.Data()["Session"]["Token"].GetString();
}

// Resident memory of a process, in MiB.
double Memory(qint64 process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) return std::strtod(line.c_str() + 6, nullptr) / 1024;
  }
  return 0;
}

// Processor time that a process has used, in seconds.
double ProcessorTime(qint64 process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string text;
  std::getline(file, text);
  std::stringstream fields(text.substr(text.rfind(')') + 2));
  std::vector<std::string> all;
  for (std::string field; fields >> field;) all.push_back(field);
  return all.size() < 13 ? 0 : (std::stod(all[11]) + std::stod(all[12])) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

class Load {
 public:
  Load(const Options& options, const std::string& folder)
      : m_options(options), m_server(folder, SeedText(options), ""), m_users(static_cast<size_t>(options.users)) {}

  bool Run() {
    Connect();
    m_ledger.sent.resize(static_cast<size_t>(m_options.edits) * static_cast<size_t>(m_options.seconds) + 1);
    const double processorTime = ProcessorTime(m_server.Pid());
    EditSteadily();
    const bool isWhole = AwaitAll() && m_ledger.disorder == 0 && Refused() == 0;
    ReportSteady(ProcessorTime(m_server.Pid()) - processorTime);
    const bool isFlat = ReportMemory();
    return EditPublicly() && isWhole && isFlat;
  }

 private:
  void Connect() {
    const auto began = Clock::now();
    for (size_t u = 0; u < m_users.size(); ++u) {
      m_users[u].listens = LogIn(m_server.Port(), static_cast<int>(u) + 1);
      m_users[u].edits = LogIn(m_server.Port(), static_cast<int>(u) + 1);
      for (int i = 0; i < kViewsOfAUser; ++i) {
        m_users[u].views.push_back(static_cast<int32_t>(2 + u * kViewsOfAUser + static_cast<size_t>(i)));
      }
    }
    const int64_t after = Client(m_server.Port(), m_users[0].listens).Sequence();
    for (int c = 0; c < m_options.clients; ++c) {
      m_streams.push_back(std::make_shared<Stream>(m_io, m_ledger));
      m_streams.back()->Open(m_server.Port(), UserOf(c).listens, after);
    }
    for (size_t e = 0; e < kEditors; ++e)
      m_editors.push_back(std::make_shared<Editor>(m_io, m_server.Port(), m_ledger));
    m_io.run_for(std::chrono::seconds(1));
    std::cout << m_options.clients << " streams of " << m_options.users << " users open after "
              << Milliseconds(Clock::now() - began) / 1000 << " s" << std::endl;
  }

  User& UserOf(int client) { return m_users[static_cast<size_t>(client) % m_users.size()]; }

  void EditSteadily() {
    m_began = Clock::now();
    Tick();
    while (m_number < m_ledger.sent.size() - 1) {
      m_io.run_for(std::chrono::seconds(1));
      m_memory.push_back(Memory(m_server.Pid()));
    }
    while (Waiting() > 0) m_io.run_for(std::chrono::milliseconds(1));
    m_took = Clock::now() - m_began;
  }

  // Asks for as many edits as are due by now.
  void Tick() {
    const auto due =
        static_cast<size_t>(std::chrono::duration<double>(Clock::now() - m_began).count() * m_options.edits);
    for (; m_number < std::min(due, m_ledger.sent.size() - 1); ++m_number) {
      const size_t u = m_number % m_users.size();
      const User& user = m_users[u];
      const int32_t view = user.views[m_number / m_users.size() % user.views.size()];
      m_editors[u % kEditors]->Ask({m_number, view, static_cast<int32_t>(u) + 1, &user.edits});
    }
    if (m_number >= m_ledger.sent.size() - 1) return;
    m_timer.expires_after(std::chrono::milliseconds(2));
    m_timer.async_wait([this](error_code error) {
      if (!error) Tick();
    });
  }

  bool AwaitAll() {
    const auto end = Clock::now() + std::chrono::seconds(20);
    while (Missing() > 0 && Clock::now() < end) m_io.run_for(std::chrono::milliseconds(10));
    return Missing() == 0;
  }

  size_t Missing() {
    size_t missing = 0;
    for (size_t c = 0; c < m_streams.size(); ++c) {
      for (int32_t view : UserOf(static_cast<int>(c)).views) missing += !m_streams[c]->Knows(view);
    }
    return missing;
  }

  size_t Waiting() const {
    size_t waiting = 0;
    for (const auto& editor : m_editors) waiting += editor->Waiting();
    return waiting;
  }
  size_t Refused() const {
    size_t refused = 0;
    for (const auto& editor : m_editors) refused += editor->Refused();
    return refused;
  }

  void ReportSteady(double processorTime) {
    size_t heard = 0;
    size_t ended = 0;
    for (const auto& stream : m_streams) {
      heard += stream->Heard();
      ended += stream->HasEnded();
    }
    size_t longest = 0;
    for (const auto& editor : m_editors) longest = std::max(longest, editor->Longest());
    std::vector<float>& delays = m_ledger.delays;
    std::sort(delays.begin(), delays.end());
    const auto at = [&delays](double part) {
      return delays.empty() ? 0 : delays[static_cast<size_t>(part * static_cast<double>(delays.size() - 1))];
    };
    const double seconds = Milliseconds(m_took) / 1000;
    std::cout << m_number << " edits in " << seconds << " s (" << static_cast<double>(m_number) / seconds
              << " a second), " << Refused() << " refused, longest queue of an editor " << longest << "\n"
              << heard << " events heard, " << Missing() << " views not known to the end by a listener, "
              << m_ledger.disorder << " out of order or twice, " << ended << " streams ended\n"
              << "from sending the edit to hearing of it: half within " << at(0.5) << " ms, 99 % within " << at(0.99)
              << " ms, all within " << at(1) << " ms\n"
              << "the server used " << processorTime / seconds * 100 << " % of a core" << std::endl;
  }

  bool ReportMemory() const {
    const double early = m_memory[m_memory.size() / 4];
    const double late = m_memory.back();
    std::cout << "memory of the server: " << early << " MiB after a quarter of the time, " << late << " MiB at the end"
              << std::endl;
    return !kMemoryCounts || late < early * 1.1 + 8;
  }

  // One edit that everybody hears.
  bool EditPublicly() {
    constexpr int kTimes = 5;
    std::vector<double> times;
    for (int i = 0; i < kTimes; ++i) {
      const size_t number = m_ledger.sent.size();
      m_ledger.sent.emplace_back();
      m_editors[0]->Ask({number, 1, -1, &m_users[0].edits});
      const auto end = Clock::now() + std::chrono::seconds(20);
      const auto knows = [](const std::shared_ptr<Stream>& stream) { return stream->Knows(1); };
      while (!std::all_of(m_streams.begin(), m_streams.end(), knows)) {
        m_io.run_for(std::chrono::milliseconds(1));
        if (Clock::now() > end) {
          std::cout << "a public edit was not heard by everybody" << std::endl;
          return false;
        }
      }
      Clock::time_point last;
      for (const auto& stream : m_streams) last = std::max(last, stream->LastHeard());
      times.push_back(Milliseconds(last - m_ledger.sent[number]));
      m_io.run_for(std::chrono::milliseconds(100));
    }
    std::sort(times.begin(), times.end());
    std::cout << "a public edit reached the last of " << m_streams.size() << " listeners after " << times[kTimes / 2]
              << " ms (median of " << kTimes << "; worst " << times.back() << " ms)" << std::endl;
    return m_ledger.disorder == 0;
  }

  const Options m_options;
  ServerProcess m_server;
  asio::io_context m_io{1};
  asio::steady_timer m_timer{m_io};
  Ledger m_ledger;
  std::vector<User> m_users;
  std::vector<std::shared_ptr<Stream>> m_streams;
  std::vector<std::shared_ptr<Editor>> m_editors;
  Clock::time_point m_began;
  Clock::duration m_took{};
  size_t m_number = 0;  // of the next edit
  std::vector<double> m_memory;
};

void AllowManyConnections() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Many listeners and a steady rate of edits against one viewserver");
  app.add_option("--users", options.users, "how many users")->check(CLI::Range(1, 10000))->capture_default_str();
  app.add_option("--clients", options.clients, "change streams in all")
      ->check(CLI::Range(1, 8000))
      ->capture_default_str();
  app.add_option("--edits", options.edits, "edits a second")->check(CLI::Range(1, 100000))->capture_default_str();
  app.add_option("--seconds", options.seconds, "for how long")->check(CLI::Range(1, 3600))->capture_default_str();
  CLI11_PARSE(app, argc, argv);

  AllowManyConnections();
  std::string folder = (std::filesystem::temp_directory_path() / "stream-load-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) return 1;
  bool isGood = false;
  try {
    isGood = Load(options, folder).Run();
  } catch (const std::exception& e) {
    std::cerr << "stream_load: " << e.what() << std::endl;
  }
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  std::cout << (isGood ? "nothing lost, nothing out of order, memory flat" : "FAILED") << std::endl;
  return isGood ? 0 : 1;
}
