// SPDX-License-Identifier: Apache-2.0
// viewctl servers: the servers that the configuration names.
#include <cstdio>

#include "host/Configuration.h"
#include "host/Failure.h"
#include "host/JsonText.h"
#include "host/Table.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct ServersOptions {
  bool json = false;
};

std::string ServersAsJson(const Configuration& configuration) {
  std::string lines;
  for (const auto& [name, server] : configuration.servers) {
    ObjectText text;
    text.Add("Name", name).Add("URL", server.url).Add("User", server.user);
    text.Add("Default", name == configuration.defaultName);
    lines += (lines.empty() ? "\n" : ",\n") + text.Text();
  }
  return "[" + lines + "]\n";
}

std::string ServersAsTable(const Configuration& configuration) {
  Table table({"NAME", "DEFAULT", "USER", "URL"});
  for (const auto& [name, server] : configuration.servers) {
    table.Add({Printable(name), name == configuration.defaultName ? "yes" : "no", Printable(server.user),
               Printable(server.url)});
  }
  return table.IsEmpty() ? "" : table.Text();
}

int RunServers(const GlobalOptions&, const ServersOptions& servers) {
  const Configuration configuration = ReadConfiguration(ConfigurationFile());
  const std::string text = servers.json ? ServersAsJson(configuration) : ServersAsTable(configuration);
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (configuration.servers.empty() && !servers.json) Say(Printable("No server is named in " + configuration.file));
  return kDone;
}

}  // namespace

void AddServersCommand(CLI::App& app, Run& chosen) {
  const auto [command, servers] =
      AddCommand(app, chosen, "servers", "the servers that the configuration names", RunServers);
  command->add_flag("--json", servers->json, "as JSON");
  command->footer(
      "The configuration is VIEWCTL_CONFIG, else viewctl/config in the user's folder of configurations:\n"
      "  default = site\n\n  [site]\n  url = https://site:8090\n  user = maria\n  ca-file = site.pem\n"
      "  password-command = secret-tool lookup server site");
}

}  // namespace host
