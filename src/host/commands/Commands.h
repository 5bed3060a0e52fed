// SPDX-License-Identifier: Apache-2.0
// The commands of viewctl, one file each. Each adds its options to the command line and runs when it was chosen: it
// answers the exit status or throws Failure.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "host/Options.h"

namespace host {

using Run = std::function<int(const GlobalOptions&)>;

void AddTreeCommand(CLI::App& app, Run& chosen);
void AddShowCommand(CLI::App& app, Run& chosen);
void AddDrawCommand(CLI::App& app, Run& chosen);
void AddReportCommand(CLI::App& app, Run& chosen);
void AddCallCommand(CLI::App& app, Run& chosen);
void AddScriptCommand(CLI::App& app, Run& chosen);
void AddWatchCommand(CLI::App& app, Run& chosen);
void AddUsersCommand(CLI::App& app, Run& chosen);
void AddExportCommand(CLI::App& app, Run& chosen);
void AddImportCommand(CLI::App& app, Run& chosen);
void AddServeCommand(CLI::App& app, Run& chosen);
void AddDemoCommand(CLI::App& app, Run& chosen);
void AddEditCommand(CLI::App& app, Run& chosen);
void AddResourcesCommand(CLI::App& app, Run& chosen);
void AddFindCommand(CLI::App& app, Run& chosen);
void AddReplaceCommand(CLI::App& app, Run& chosen);
void AddUndoCommand(CLI::App& app, Run& chosen);
void AddShareCommand(CLI::App& app, Run& chosen);
void AddDefaultCommand(CLI::App& app, Run& chosen);
void AddMkdirCommand(CLI::App& app, Run& chosen);
void AddMoveCommands(CLI::App& app, Run& chosen);
void AddRmCommand(CLI::App& app, Run& chosen);
void AddServersCommand(CLI::App& app, Run& chosen);
void AddCompletionCommand(CLI::App& app, Run& chosen);
void AddManCommand(CLI::App& app, Run& chosen);
void AddHelpCommand(CLI::App& app, Run& chosen);

// Adds a subcommand; `chosen` becomes its `run` where the line names it.
inline CLI::App* AddCommand(CLI::App& app, Run& chosen, const std::string& name, const std::string& help, Run run) {
  CLI::App* command = app.add_subcommand(name, help);
  command->fallthrough();
  command->callback([&chosen, run = std::move(run)] { chosen = run; });
  return command;
}

// The same for a command with options of its own, which `run` gets as the line leaves them. Answers where to add them.
template <class Options>
std::pair<CLI::App*, std::shared_ptr<Options>> AddCommand(CLI::App& app, Run& chosen, const std::string& name,
                                                          const std::string& help,
                                                          int (*run)(const GlobalOptions&, const Options&)) {
  auto own = std::make_shared<Options>();
  CLI::App* command =
      AddCommand(app, chosen, name, help, [run, own](const GlobalOptions& options) { return run(options, *own); });
  return {command, std::move(own)};
}

}  // namespace host
