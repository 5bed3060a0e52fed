// SPDX-License-Identifier: Apache-2.0
// viewctl help: what --help says, in the words that people try first.
#include <algorithm>
#include <cstdio>

#include "host/Failure.h"
#include "host/commands/CommandLine.h"

namespace host {
namespace {

std::string HelpOf(const CLI::App& app, const std::string& name) {
  // By its formatter: the program itself would tell of the command that was chosen, which is `help`.
  if (name.empty()) return app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
  const auto commands = app.get_subcommands({});
  const auto found = std::ranges::find_if(
      commands, [&](const CLI::App* one) { return one->get_name() == name && !one->get_group().empty(); });
  if (found != commands.end()) return (*found)->help(app.get_name());
  throw Failure(kUsage, UnknownCommand(app, name));
}

}  // namespace

void AddHelpCommand(CLI::App& app, Run& chosen) {
  auto name = std::make_shared<std::string>();
  const auto run = [&app, name](const GlobalOptions&) {
    std::fputs(HelpOf(app, *name).c_str(), stdout);
    return kDone;
  };
  CLI::App* help = AddCommand(app, chosen, "help", "what viewctl, or one of its commands, takes", run);
  help->add_option("COMMAND", *name, "one of the commands");
}

}  // namespace host
