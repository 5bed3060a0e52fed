// SPDX-License-Identifier: Apache-2.0
// viewctl serve: the embedded server alone.
#include <cstdio>

#include "base/system/StopSignal.h"
#include "host/Connection.h"
#include "host/Failure.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct ServeOptions {
  std::string listen = "127.0.0.1:8090";
  std::string seed;
};

// "HOST:PORT", an IPv6 host in brackets.
void ReadAddress(const std::string& text, server::ViewServerOptions& options) {
  const size_t colon = text.rfind(':');
  const std::string port = colon == std::string::npos ? "" : text.substr(colon + 1);
  const bool digits = !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
  if (colon == 0 || !digits || std::stoi(port) > 65535)
    throw Failure(kUsage, "--listen: " + text + " is not HOST:PORT, such as 127.0.0.1:8090");
  std::string name = text.substr(0, colon);
  if (name.size() > 2 && name.front() == '[' && name.back() == ']') name = name.substr(1, name.size() - 2);
  options.listenHost = name;
  options.listenPort = static_cast<uint16_t>(std::stoi(port));
}

int RunServe(const GlobalOptions& options, const ServeOptions& serve) {
  if (!options.server.empty()) throw Failure(kUsage, "serve runs the embedded server; --server names another one");
  server::ViewServerOptions embedded;
  ReadAddress(serve.listen, embedded);
  embedded.seedFile = serve.seed;
  embedded.dataFile = StoreFile(options.dataDir);
  base::WatchForStop();
  const auto server = StartEmbeddedServer(embedded, [](const std::string& password) {
    std::printf("User admin, password %s (shown this once)\n", password.c_str());
  });
  std::printf("Listening on %s\n", server->Url().c_str());
  std::fflush(stdout);
  base::AwaitStop();
  return kDone;
}

}  // namespace

void AddServeCommand(CLI::App& app, Run& chosen) {
  const auto [command, serve] = AddCommand(app, chosen, "serve", "the embedded server alone, until Ctrl-C", RunServe);
  command->add_option("--listen", serve->listen, "where to listen; port 0 picks one")
      ->type_name("HOST:PORT")
      ->capture_default_str();
  command->add_option("--seed", serve->seed, "what the site starts with, applied by ID")->type_name("FILE");
}

}  // namespace host
