// SPDX-License-Identifier: Apache-2.0
// viewctl man: manual pages, printed or written.
#include <QDir>
#include <cstdio>

#include "host/SavedFile.h"
#include "host/Suggestion.h"
#include "host/commands/CommandLine.h"
#include "host/commands/ManPage.h"

namespace host {
namespace {

struct ManOptions {
  std::string command;
  std::string folder;
};

std::string PageOf(const CLI::App& app, const std::string& name) {
  return name.empty() ? ManPageOf(app) : ManPageOf(app, *app.get_subcommand(name));
}

void WritePages(const CLI::App& app, const QDir& folder) {
  if (!folder.mkpath(".")) throw Failure(kUsage, "The folder " + folder.path().toStdString() + " cannot be made");
  std::vector<std::string> names = CommandNames(app);
  names.emplace_back();
  for (const std::string& name : names) {
    const std::string file = "viewctl" + (name.empty() ? "" : "-" + name) + ".1";
    SavedFile(folder.filePath(QString::fromStdString(file)).toStdString()).Write(PageOf(app, name));
  }
}

int RunMan(const CLI::App& app, const ManOptions& man) {
  const std::vector<std::string> names = CommandNames(app);
  if (!man.command.empty() && std::ranges::find(names, man.command) == names.end()) {
    throw Failure(kUsage, UnknownCommand(app, man.command));
  }
  if (!man.folder.empty()) {
    WritePages(app, QString::fromStdString(man.folder));
  } else {
    std::fputs(PageOf(app, man.command).c_str(), stdout);
  }
  return kDone;
}

}  // namespace

void AddManCommand(CLI::App& app, Run& chosen) {
  auto man = std::make_shared<ManOptions>();
  CLI::App* command = AddCommand(app, chosen, "man", "the manual page of viewctl, or of one of its commands",
                                 [&app, man](const GlobalOptions&) { return RunMan(app, *man); });
  command->add_option("COMMAND", man->command, "one of the commands");
  command->add_option("--into-folder", man->folder, "writes all pages there instead")->type_name("DIR");
  command->footer("Example:\n  viewctl man show | man -l -");
}

}  // namespace host
