// SPDX-License-Identifier: Apache-2.0
#include <QCoreApplication>
#include <cstdio>

#include "host/Failure.h"
#include "host/LogFile.h"
#include "host/Look.h"
#include "host/Terminal.h"
#include "host/commands/CommandLine.h"
#include "host/commands/Context.h"

namespace {

void AddGlobalOptions(CLI::App& app, host::GlobalOptions& options) {
  app.add_option("--server", options.server,
                 "the server, or its name in the configuration; else VIEWCTL_SERVER, else its default; without one "
                 "viewctl runs its own")
      ->type_name("URL");
  app.add_option("--ca-file", options.caFile, "certificates that an https server is checked with")->type_name("FILE");
  app.add_option("--data", options.dataDir, "folder of the own server's store")->type_name("DIR");
  app.add_option("--user", options.user, "who logs in; else VIEWCTL_USER, where there is a server")
      ->type_name("NAME")
      ->capture_default_str();
  app.add_option(
         "--password-file", options.passwordFile,
         "its first line is the password; else VIEWCTL_PASSWORD, the configuration's password-command, or a prompt")
      ->type_name("FILE");
  app.add_option("--plugin", options.plugin, "the library to load; else the one beside viewctl")->type_name("FILE");
  app.add_option("--timeout", options.timeout, "how long the first load may take")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  app.add_option("--log-file", options.logFile, "where log lines are written")->type_name("FILE");
  app.add_flag("--log-time", options.logTime, "log lines begin with the time, in UTC");
  app.add_flag("-v", options.verbose, "log lines on stderr, cut to the width of a terminal");
  app.add_flag("--ascii", options.ascii, "trees and pages are drawn with signs that every terminal has");
  app.add_flag("-q,--quiet", options.quiet, "only what was asked for, and what went wrong");
  app.set_version_flag("--version", "viewctl " VIEWCTL_VERSION);
}

void AddCommands(CLI::App& app, host::Run& chosen) {
  host::AddDemoCommand(app, chosen);
  host::AddTreeCommand(app, chosen);
  host::AddShowCommand(app, chosen);
  host::AddDrawCommand(app, chosen);
  host::AddReportCommand(app, chosen);
  host::AddEditCommand(app, chosen);
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

int ReadAndRun(CLI::App& app, int argc, char** argv) {
  host::GlobalOptions options;
  host::Run chosen;
  host::UseHelpText(app);
  AddGlobalOptions(app, options);
  AddCommands(app, chosen);
  try {
    app.parse(argc, argv);
    host::RefuseEmptyValues(app, {argv + 1, argv + argc});
    if (!chosen) return Fail(host::kUsage, "Name a command (viewctl --help lists them)");
    host::CompleteOptions(app, options);
    host::RefuseIgnoredOptions(app, options);
    return Run(options, chosen);
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
  QCoreApplication qt(argc, argv);
  QCoreApplication::setApplicationName("viewctl");
  QCoreApplication::setApplicationVersion(VIEWCTL_VERSION);

  CLI::App app("Lists, draws, copies and repairs saved views through QorviViewPlugin", "viewctl");
  app.require_subcommand(0, 1);  // without one the parser would not name a command it does not know
  app.fallthrough();
  return ReadAndRun(app, argc, argv);
}
