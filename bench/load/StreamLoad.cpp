// SPDX-License-Identifier: Apache-2.0
// Many listeners and a steady rate of edits against one server process: is every change heard by everybody who may see
// it, once and in order for each object, how late, and does the server's memory stay what it is? Ends with status 1
// when a change is missing or out of order, or when the memory grows.
#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "../../tests/model/ServerProcess.h"
#include "LoadClients.h"

namespace {

using namespace load;
using server::test::Client;

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
