// SPDX-License-Identifier: Apache-2.0
// The commands of viewctl, one file each. Each adds its options to the command line and runs when it was chosen: it
// answers the exit status or throws Failure.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "host/Options.h"

namespace host {

using Run = std::function<int(const GlobalOptions&)>;

// The command a line has chosen.
struct Chosen {
  Run run;
};

void AddTreeCommand(CLI::App& app, Chosen& chosen);
void AddShowCommand(CLI::App& app, Chosen& chosen);
void AddDrawCommand(CLI::App& app, Chosen& chosen);
void AddReportCommand(CLI::App& app, Chosen& chosen);
void AddCallCommand(CLI::App& app, Chosen& chosen);
void AddScriptCommand(CLI::App& app, Chosen& chosen);
void AddWatchCommand(CLI::App& app, Chosen& chosen);
void AddUsersCommand(CLI::App& app, Chosen& chosen);
void AddExportCommand(CLI::App& app, Chosen& chosen);
void AddImportCommand(CLI::App& app, Chosen& chosen);
void AddServeCommand(CLI::App& app, Chosen& chosen);
void AddDemoCommand(CLI::App& app, Chosen& chosen);

// Adds a subcommand that becomes the chosen one; `run` is called with the global options.
CLI::App* AddCommand(CLI::App& app, Chosen& chosen, const std::string& name, const std::string& help, Run run);

}  // namespace host
