// SPDX-License-Identifier: Apache-2.0
#include <QCoreApplication>
#include <cstdio>
#include <vector>

#include "base/system/Console.h"
#include "base/system/Process.h"
#include "host/Failure.h"
#include "host/LogFile.h"
#include "host/Look.h"
#include "host/Terminal.h"
#include "host/commands/CommandLine.h"
#include "host/commands/Context.h"

namespace {

void AddCommands(CLI::App& app, host::Run& chosen) {
  host::AddDemoCommand(app, chosen);
  host::AddTreeCommand(app, chosen);
  host::AddShowCommand(app, chosen);
  host::AddDrawCommand(app, chosen);
  host::AddReportCommand(app, chosen);
  host::AddEditCommand(app, chosen);
  host::AddResourcesCommand(app, chosen);
  host::AddFindCommand(app, chosen);
  host::AddReplaceCommand(app, chosen);
  host::AddUndoCommand(app, chosen);
  host::AddMkdirCommand(app, chosen);
  host::AddMoveCommands(app, chosen);
  host::AddRmCommand(app, chosen);
  host::AddShareCommand(app, chosen);
  host::AddDefaultCommand(app, chosen);
  host::AddCallCommand(app, chosen);
  host::AddScriptCommand(app, chosen);
  host::AddWatchCommand(app, chosen);
  host::AddUsersCommand(app, chosen);
  host::AddExportCommand(app, chosen);
  host::AddImportCommand(app, chosen);
  host::AddServeCommand(app, chosen);
  host::AddServersCommand(app, chosen);
  host::AddCompletionCommand(app, chosen);
  host::AddManCommand(app, chosen);
  host::AddHelpCommand(app, chosen);
}

int Fail(int status, const std::string& sentence) {
  host::Say(host::StyledErr(host::Style::kBad, "viewctl:") + " " + host::Printable(sentence));
  return status;
}

int Run(const host::GlobalOptions& options, const host::Run& chosen) {
  host::SetLook({options.ascii, options.quiet});
  Vant::Base::SetLogSink(std::make_shared<host::LogFile>(options.logFile, options.verbose, options.logTime));
  const int status = chosen(options);
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) return Fail(host::kRefused, "stdout cannot be written");
  return status;
}

int ReadAndRun(CLI::App& app, const std::vector<const char*>& arguments) {
  host::GlobalOptions options;
  host::Run chosen;
  host::UseHelpText(app);
  host::AddGlobalOptions(app, options);
  AddCommands(app, chosen);
  try {
    app.parse(static_cast<int>(arguments.size()), arguments.data());
    host::RefuseEmptyValues(app, {arguments.begin() + 1, arguments.end()});
    if (!chosen) return Fail(host::kUsage, "Name a command (viewctl --help lists them)");
    host::CompleteOptions(app, options);
    host::RefuseIgnoredOptions(app, options);
    return Run(options, chosen);
  } catch (const CLI::CallForHelp& help) {
    const std::string wrong = host::WhatHelpIsNotFor(app);
    return wrong.empty() ? app.exit(help) : Fail(host::kUsage, wrong);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // help and version
    return Fail(host::kUsage, host::Explain(app, error));
  } catch (const host::Failure& failure) {
    return Fail(failure.Status(), failure.what());
  } catch (const std::exception& error) {
    return Fail(host::kRefused, error.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  base::PrepareStreams();
  QCoreApplication qt(argc, argv);
  QCoreApplication::setApplicationName("viewctl");
  QCoreApplication::setApplicationVersion(VIEWCTL_VERSION);

  CLI::App app("Lists, draws, copies and repairs saved views through QorviViewPlugin", "viewctl");
  app.allow_windows_style_options(false);  // a path may begin with a slash on Windows, too
  app.require_subcommand(0, 1);            // without one the parser would not name a command it does not know
  app.fallthrough();
  return ReadAndRun(app, base::Arguments(argc, argv));
}
