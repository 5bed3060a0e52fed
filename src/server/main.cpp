// SPDX-License-Identifier: Apache-2.0
// `viewserver`: the reference management server as a program.
#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <cstdlib>
#include <iostream>
#include <string>

#include "server/ViewServer.h"
#include "server/login/Accounts.h"
#include "server/login/Secrets.h"
#include "server/store/Database.h"

namespace {

// "HOST:PORT", an IPv6 host in brackets.
bool ParseListen(const std::string& text, server::ViewServerOptions& options) {
  const size_t colon = text.rfind(':');
  if (colon == std::string::npos || colon == 0) return false;
  const std::string port = text.substr(colon + 1);
  if (port.empty() || port.size() > 5 || port.find_first_not_of("0123456789") != std::string::npos) return false;
  if (std::stoi(port) > 65535) return false;
  std::string host = text.substr(0, colon);
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
  options.listenHost = host;
  options.listenPort = static_cast<uint16_t>(std::stoi(port));
  return true;
}

// Each client holds a connection or two for as long as it runs, and each connection a descriptor. Where there are fewer
// of those, the connections must be fewer: those that are idle make room by that number.
void AllowManyConnections(server::HttpLimits& limits) {
  constexpr rlim_t kOthers = 100;  // the store, the log, connections that are ending
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  if (limit.rlim_cur >= limits.maxConnections + kOthers) return;
  limits.maxConnections = static_cast<size_t>(std::max(limit.rlim_cur, kOthers + kOthers) - kOthers);
  std::cerr << "viewserver: " << limit.rlim_cur << " file descriptors suffice for " << limits.maxConnections
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
}

int Serve(server::ViewServerOptions options) {
  boost::asio::io_context io;
  boost::asio::signal_set signals(io, SIGTERM, SIGINT);
  signals.async_wait([](const boost::system::error_code&, int) {});

  AllowManyConnections(options.limits);
  server::ViewServer viewServer(options);
  // Shown before anything else can fail: the store has the user already.
  if (const auto password = viewServer.TakeFirstPassword()) {
    std::cout << "User admin, password " << *password << " (shown this once)" << std::endl;
  }
  viewServer.Start();
  std::cout << "Listening on " << viewServer.Url() << std::endl;
  io.run();
  viewServer.Stop();
  return 0;
}

// From VIEWSERVER_PASSWORD or the first line of standard input; never an argument, which others on the machine see.
std::string ReadPassword() {
  if (const char* password = std::getenv("VIEWSERVER_PASSWORD")) return password;
  std::string password;
  std::getline(std::cin, password);
  if (!password.empty() && password.back() == '\r') password.pop_back();
  return password;
}

int ManageUser(const server::ViewServerOptions& options, const std::string& name, bool isNew) {
  const std::string password = ReadPassword();
  std::string error = server::WhyUnusable(name, password);
  if (error.empty()) {
    server::Database database(options.dataFile, server::Database::Use::kAccounts);
    server::Accounts accounts(database, server::SecondsNow);
    const std::string hash = server::HashPassword(password);
    if (isNew && !accounts.AddUser(0, name, hash, 0)) error = "there is a user of that name";
    if (!isNew && !accounts.SetPassword(name, hash)) error = "no such user";
  }
  if (error.empty()) return 0;
  std::cerr << "viewserver: " << error << std::endl;
  return 1;
}

int ListUsers(const server::ViewServerOptions& options) {
  server::Database database(options.dataFile, server::Database::Use::kAccounts);
  server::Accounts accounts(database, server::SecondsNow);
  for (const server::User& user : accounts.Users()) std::cout << user.id << '\t' << user.name << '\n';
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  server::ViewServerOptions options;
  std::string listen = "127.0.0.1:8090";
  std::string userName;

  CLI::App app("Reference management server for views and view groups");
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
  app.add_option("--faults", options.faultsFile, "a fault plan")->type_name("FILE");
  app.add_option("--trusted-proxy", options.trustedProxies, "a proxy whose X-Forwarded-For says who asks; repeatable")
      ->type_name("ADDR")
      ->allow_extra_args(false);
  app.add_option("--access-log", options.accessLog, "writes down each request there; \"-\" is standard error")
      ->type_name("FILE");
  AddLimits(app, options.limits);
  CLI::App* user = app.add_subcommand("user",
                                      "manage users; a password is read from standard input or "
                                      "VIEWSERVER_PASSWORD");
  user->require_subcommand(1);
  CLI::App* add = user->add_subcommand("add", "add a user");
  add->add_option("NAME", userName, "its name")->required();
  CLI::App* password = user->add_subcommand("password", "set a user's password, which ends its sessions");
  password->add_option("NAME", userName, "its name")->required();
  CLI::App* list = user->add_subcommand("list", "list the users: id, tab, name");

  try {
    app.parse(argc, argv);
    if (!ParseListen(listen, options)) throw CLI::ValidationError("--listen", "not HOST:PORT");
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? 0 : 2;
  }
  try {
    server::InitSecrets();
    if (add->parsed() || password->parsed()) return ManageUser(options, userName, add->parsed());
    if (list->parsed()) return ListUsers(options);
    return Serve(options);
  } catch (const std::exception& e) {
    std::cerr << "viewserver: " << e.what() << std::endl;
    return 1;
  }
}
