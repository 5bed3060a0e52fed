// SPDX-License-Identifier: Apache-2.0
#include <QCoreApplication>
#include <cstdio>

#include "host/Failure.h"
#include "host/LogFile.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"

namespace {

void AddGlobalOptions(CLI::App& app, host::GlobalOptions& options) {
  app.add_option("--server", options.server, "the server; without it viewctl runs its own")->type_name("URL");
  app.add_option("--ca-file", options.caFile, "certificates that an https server is checked with")->type_name("FILE");
  app.add_option("--data", options.dataDir, "folder of the own server's store")->type_name("DIR");
  app.add_option("--user", options.user, "who logs in")->type_name("NAME")->capture_default_str();
  app.add_option("--password-file", options.passwordFile, "its first line is the password; else VIEWCTL_PASSWORD")
      ->type_name("FILE");
  app.add_option("--plugin", options.plugin, "the library to load; else the one beside viewctl")->type_name("FILE");
  app.add_option("--timeout", options.timeout, "how long the first load may take")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  app.add_option("--log-file", options.logFile, "where log lines are written")->type_name("FILE");
  app.add_flag("-v", options.verbose, "log lines on stderr");
  app.set_version_flag("--version", "viewctl " VIEWCTL_VERSION);
}

void AddCommands(CLI::App& app, host::Run& chosen) {
  host::AddDemoCommand(app, chosen);
  host::AddTreeCommand(app, chosen);
  host::AddShowCommand(app, chosen);
  host::AddDrawCommand(app, chosen);
  host::AddReportCommand(app, chosen);
  host::AddCallCommand(app, chosen);
  host::AddScriptCommand(app, chosen);
  host::AddWatchCommand(app, chosen);
  host::AddUsersCommand(app, chosen);
  host::AddExportCommand(app, chosen);
  host::AddImportCommand(app, chosen);
  host::AddServeCommand(app, chosen);
}

int Fail(int status, const std::string& sentence) {
  host::Say("viewctl: " + host::Printable(sentence));
  return status;
}

int Run(const host::GlobalOptions& options, const host::Run& chosen) {
  try {
    Vant::Base::SetLogSink(std::make_shared<host::LogFile>(options.logFile, options.verbose));
    const int status = chosen(options);
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) return Fail(host::kRefused, "stdout cannot be written");
    return status;
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

  host::GlobalOptions options;
  host::Run chosen;
  CLI::App app("Lists, draws, copies and repairs saved views through QorviViewPlugin", "viewctl");
  app.require_subcommand(0, 1);  // without one the parser would not name a command it does not know
  app.fallthrough();
  AddGlobalOptions(app, options);
  AddCommands(app, chosen);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // help and version
    return Fail(host::kUsage, std::string(error.what()) + " (viewctl --help lists what there is)");
  }
  if (!chosen) return Fail(host::kUsage, "Name a command (viewctl --help lists them)");
  return Run(options, chosen);
}
