// SPDX-License-Identifier: Apache-2.0
#include "host/commands/Context.h"

#include <algorithm>
#include <array>

#include "base/system/Process.h"
#include "host/Configuration.h"
#include "host/Failure.h"
#include "host/Suggestion.h"

namespace host {
namespace {

// Those that have a server of their own, or none.
constexpr std::array kWithoutServer = {"demo", "serve", "servers", "completion", "__complete", "man", "help"};

bool NeedsServer(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return !chosen.empty() && std::ranges::find(kWithoutServer, chosen.front()->get_name()) == kWithoutServer.end();
}

bool IsLeftOpen(const CLI::App& app, const char* option) {
  return app.get_option(option)->count() == 0;
}

// Empty where it is not set.
std::string Variable(const char* name) {
  const std::optional<std::string> value = base::Environment(name);
  if (!value) return {};
  if (value->empty()) throw Failure(kUsage, std::string(name) + " is set to nothing: set it, or unset it");
  return *value;
}

void TakeFrom(const CLI::App& app, const NamedServer& server, GlobalOptions& options) {
  options.server = server.url;
  if (IsLeftOpen(app, "--user") && !server.user.empty()) options.user = server.user;
  if (IsLeftOpen(app, "--ca-file")) options.caFile = server.caFile;
  options.passwordCommand = server.passwordCommand;
}

// A slip in a name is told from an address by what only addresses have.
void RefuseUnknownName(const Configuration& configuration, const std::string& server) {
  if (server.empty() || server.find_first_of(":/.") != std::string::npos) return;
  std::vector<std::string> names;
  for (const auto& named : configuration.servers) names.push_back(named.first);
  throw Failure(kUsage, server + " is neither an address, which begins with http:// or https://, nor a server that " +
                            configuration.file + " names" + Suggestion(server, names) +
                            " (viewctl servers lists them)");
}

}  // namespace

void CompleteOptions(const CLI::App& app, GlobalOptions& options) {
  if (!NeedsServer(app)) return;
  const Configuration configuration = ReadConfiguration(ConfigurationFile());
  if (IsLeftOpen(app, "--server") && IsLeftOpen(app, "--data")) {
    options.server = Variable("VIEWCTL_SERVER");
    if (options.server.empty()) options.server = configuration.defaultName;
  }
  const auto named = configuration.servers.find(options.server);
  if (named != configuration.servers.end()) {
    TakeFrom(app, named->second, options);
  } else {
    RefuseUnknownName(configuration, options.server);
  }
  if (options.server.empty() || !IsLeftOpen(app, "--user")) return;
  if (const std::string user = Variable("VIEWCTL_USER"); !user.empty()) options.user = user;
}

}  // namespace host
