// SPDX-License-Identifier: Apache-2.0
// The command line as a whole: what is said of it in the help, and what is wrong with it.
#pragma once

#include "host/commands/Commands.h"

namespace host {

// The options that every command takes.
void AddGlobalOptions(CLI::App& app, GlobalOptions& options);

// Shows the options of every command in a command's help too. To be called before commands are added.
void UseHelpText(CLI::App& app);

// Throws Failure kUsage where a value is empty, as it is where a variable is not set: an option that goes unnoticed
// would mean another server. `arguments` without the program's name.
void RefuseEmptyValues(const CLI::App& app, const std::vector<std::string>& arguments);

// Throws Failure kUsage where an option has no effect beside the others.
void RefuseIgnoredOptions(const CLI::App& app, const GlobalOptions& options);

// What to say of a line that cannot be read.
std::string Explain(const CLI::App& app, const CLI::ParseError& error);

// The same of a name that no command has.
std::string UnknownCommand(const CLI::App& app, const std::string& name);
// What is wrong with a line that asks for help, too: it names a command that is not there. Else empty.
std::string WhatHelpIsNotFor(const CLI::App& app);

// The commands that the help lists, by name.
std::vector<std::string> CommandNames(const CLI::App& app);

}  // namespace host
