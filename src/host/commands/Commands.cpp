// SPDX-License-Identifier: Apache-2.0
#include "host/commands/Commands.h"

namespace host {

CLI::App* AddCommand(CLI::App& app, Chosen& chosen, const std::string& name, const std::string& help, Run run) {
  CLI::App* command = app.add_subcommand(name, help);
  command->fallthrough();
  command->callback([&chosen, run = std::move(run)] { chosen.run = run; });
  return command;
}

}  // namespace host
