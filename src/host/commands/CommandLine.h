// SPDX-License-Identifier: Apache-2.0
// The command line as a whole: what is said of it in the help, and what is wrong with it.
#pragma once

#include "host/commands/Commands.h"

namespace host {

// Shows the options of every command in a command's help too. To be called before commands are added.
void UseHelpText(CLI::App& app);

// Throws Failure kUsage where a value is empty, as it is where a variable is not set: an option that goes unnoticed
// would mean another server. `arguments` without the program's name.
void RefuseEmptyValues(const CLI::App& app, const std::vector<std::string>& arguments);

// Throws Failure kUsage where an option has no effect beside the others.
void RefuseIgnoredOptions(const CLI::App& app, const GlobalOptions& options);

// What to say of a line that cannot be read.
std::string Explain(const CLI::App& app, const CLI::ParseError& error);

// The commands by name, but for `help`.
std::vector<std::string> CommandNames(const CLI::App& app);

}  // namespace host
