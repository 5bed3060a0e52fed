// SPDX-License-Identifier: Apache-2.0
// `viewserver`: the reference management server as a program.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/system/Console.h"
#include "base/system/Process.h"
#include "base/system/StopSignal.h"
#include "server/ViewServer.h"
#include "server/commands/Commands.h"
#include "server/login/Secrets.h"

namespace {

// "HOST:PORT", an IPv6 host in brackets.
bool ParseListen(const std::string& text, server::ViewServerOptions& options) {
  const size_t colon = text.rfind(':');
  if (colon == std::string::npos || colon == 0) return false;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data() + colon + 1, end, options.listenPort);
  if (error != std::errc() || stop != end) return false;
  std::string host = text.substr(0, colon);
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
  options.listenHost = host;
  return true;
}

// Each client holds a connection or two for as long as it runs, and each connection a descriptor. Where there are fewer
// of those, the connections must be fewer: those that are idle make room by that number.
void AllowManyConnections(server::HttpLimits& limits) {
  constexpr uint64_t kOthers = 100;  // the store, the log, connections that are ending
  const std::optional<uint64_t> open = base::RaiseOpenFiles();
  if (!open || *open >= limits.maxConnections + kOthers) return;
  limits.maxConnections = static_cast<size_t>(std::max(*open, kOthers + kOthers) - kOthers);
  std::cerr << "viewserver: " << *open << " file descriptors suffice for " << limits.maxConnections
            << " connections only" << std::endl;
}

void AddLimits(CLI::App& app, server::HttpLimits& limits) {
  const auto add = [&app](const char* name, size_t& limit, const char* what) {
    app.add_option(name, limit, what)->type_name("N")->check(CLI::Range(1, 1000000))->capture_default_str();
  };
  add("--max-connections", limits.maxConnections, "connections, each of which takes a file descriptor");
  add("--max-connections-per-user", limits.maxConnectionsPerUser, "connections of one user");
  add("--max-strangers-per-address", limits.maxStrangersPerAddress, "connections without a session from one address");
  add("--max-waiting-logins", limits.maxWaitingLogins, "log-ins that wait for their turn");
  add("--max-waiting-logins-per-address", limits.maxWaitingLoginsPerAddress, "the same from one address");
  add("--max-waiting-bodies", limits.maxWaitingBodies, "requests above 256 KiB that wait for their turn");
  add("--max-waiting-bodies-per-user", limits.maxWaitingBodiesPerUser, "the same of one user");
  app.add_option_function<uint64_t>(
         "--max-body-memory", [&limits](uint64_t mebibytes) { limits.maxBodyBytes = mebibytes << 20; },
         "memory for requests being received or worked on [" + std::to_string(limits.maxBodyBytes >> 20) + "]")
      ->type_name("MIB")
      ->check(CLI::Range(1, 1000000));
  app.add_flag_callback(
      "--no-compression", [&limits] { limits.compresses = false; },
      "send lists as they are, also to clients that take them compressed");
}

int Serve(server::ViewServerOptions options) {
  base::WatchForStop();
  AllowManyConnections(options.limits);
  // Hashing the passwords of a new seed takes its time, and the first line of stdout is the address.
  if (!options.seedFile.empty()) std::cerr << "viewserver: applying the seed " << options.seedFile << std::endl;
  server::ViewServer viewServer(options);
  // Shown before anything else can fail: the store has the user already.
  if (const auto password = viewServer.TakeFirstPassword()) {
    std::cout << "User admin, password " << *password << " (shown this once)" << std::endl;
  }
  viewServer.Start();
  std::cout << "Listening on " << viewServer.Url() << std::endl;
  base::AwaitStop();
  viewServer.Stop();
  return 0;
}

// From VIEWSERVER_PASSWORD or the first line of standard input; never an argument, which others on the machine see.
std::string ReadPassword() {
  if (const auto password = base::Environment("VIEWSERVER_PASSWORD")) return *password;
  std::string password;
  std::getline(std::cin, password);
  if (!password.empty() && password.back() == '\r') password.pop_back();
  return password;
}

// Adds the subcommands and calls the one that was chosen.
class Operator {
 public:
  Operator(CLI::App& app, const server::ViewServerOptions& options) : m_app(app), m_options(options) {
    AddUserCommands();
    Add(app, "check", "read all that is in the store and say what is wrong; status 1 where something is",
        [this] { return server::CheckStore(m_options.dataFile, std::cout) == 0 ? 0 : 1; });
    CLI::App* backup = Add(app, "backup", "copy the store, beside a running server or without one", [this] {
      server::BackUp(m_options.dataFile, m_file);
      return 0;
    });
    backup->add_option("FILE", m_file, "where to; it must not be there yet")->required();
    CLI::App* restore = Add(app, "restore", "put a copy in the place of the store; no server may run", [this] {
      const std::string replaced = server::Restore(m_options.dataFile, m_file);
      if (!replaced.empty()) std::cout << "What was there stands in " << replaced << std::endl;
      return 0;
    });
    restore->add_option("FILE", m_file, "the copy")->required();
    CLI::App* seed = Add(app, "seed", "apply a seed as a starting server does; none may run", [this] {
      server::ApplySeed(m_options.dataFile, m_file, {m_options.keepChanges, m_options.keepChangeBytes});
      return 0;
    });
    seed->add_option("FILE", m_file, "the seed")->required();
  }

  // The exit status of the chosen command; nothing where none was.
  std::optional<int> Run() const {
    for (const auto& [command, run] : m_commands) {
      if (command->parsed()) return run();
    }
    return std::nullopt;
  }

 private:
  using Action = std::function<int()>;

  CLI::App* Add(CLI::App& parent, const char* name, const char* description, Action run) {
    CLI::App* command = parent.add_subcommand(name, description);
    m_commands.emplace_back(command, std::move(run));
    return command;
  }

  void AddUserCommands() {
    CLI::App* user = m_app.add_subcommand("user",
                                          "manage users; a password is read from standard input or "
                                          "VIEWSERVER_PASSWORD");
    user->require_subcommand(1);
    const std::string& data = m_options.dataFile;
    AddForUser(*user, "add", "add a user", [this, &data] { server::AddUser(data, m_name, ReadPassword()); });
    AddForUser(*user, "password", "set a user's password, which ends its sessions",
               [this, &data] { server::SetPassword(data, m_name, ReadPassword()); });
    AddForUser(*user, "rename", "give a user another name",
               [this, &data] { server::RenameUser(data, m_name, m_newName); })
        ->add_option("NEW", m_newName, "its new name")
        ->required();
    AddForUser(*user, "delete", "delete a user and what is the user's alone",
               [this, &data] { server::DeleteUser(data, m_name); });
    Add(*user, "list", "list the users: id, tab, name", [&data] {
      server::ListUsers(data, std::cout);
      return 0;
    });
  }

  CLI::App* AddForUser(CLI::App& parent, const char* name, const char* description, std::function<void()> run) {
    CLI::App* command = Add(parent, name, description, [run = std::move(run)] {
      run();
      return 0;
    });
    command->add_option("NAME", m_name, "its name")->required();
    return command;
  }

  CLI::App& m_app;
  const server::ViewServerOptions& m_options;
  std::string m_name, m_newName, m_file;
  std::vector<std::pair<CLI::App*, Action>> m_commands;
};

}  // namespace

int main(int argc, char** argv) {
  base::PrepareStreams();
  base::IgnoreBrokenPipes();  // who reads what is logged may end before the server does
  const std::vector<const char*> arguments = base::Arguments(argc, argv);
  server::ViewServerOptions options;
  std::string listen = "127.0.0.1:8090";

  CLI::App app("Reference management server for views and view groups");
  app.allow_windows_style_options(false);  // a path may begin with a slash on Windows, too
  app.fallthrough();
  app.add_option("--data", options.dataFile, "the store, made when absent")->required()->type_name("FILE");
  app.add_option("--listen", listen, "where to listen; port 0 picks one")
      ->type_name("HOST:PORT")
      ->capture_default_str();
  app.add_option("--seed", options.seedFile, "what the site starts with, applied by ID")->type_name("FILE");
  app.add_option("--tls-cert", options.tlsCertFile, "certificate chain, PEM")->type_name("FILE");
  app.add_option("--tls-key", options.tlsKeyFile, "its key, PEM")->type_name("FILE");
  app.add_option("--keep-changes", options.keepChanges, "changes kept for clients that come back")
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--keep-change-bytes", options.keepChangeBytes, "and of these no more than so many bytes")
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--faults", options.faultsFile, "a fault plan")->type_name("FILE");
  app.add_option("--trusted-proxy", options.trustedProxies, "a proxy whose X-Forwarded-For says who asks; repeatable")
      ->type_name("ADDR")
      ->allow_extra_args(false);
  app.add_option("--access-log", options.accessLog, "writes down each request there; \"-\" is standard error")
      ->type_name("FILE");
  AddLimits(app, options.limits);
  app.set_version_flag("--version", "viewserver " VIEWSERVER_VERSION);
  const Operator commands(app, options);

  try {
    app.parse(static_cast<int>(arguments.size()), arguments.data());
    if (!ParseListen(listen, options)) throw CLI::ValidationError("--listen", "not HOST:PORT");
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? 0 : 2;
  }
  try {
    server::InitSecrets();
    if (const std::optional<int> status = commands.Run()) return *status;
    return Serve(options);
  } catch (const std::exception& e) {
    std::cerr << "viewserver: " << e.what() << std::endl;
    return 1;
  }
}
