// SPDX-License-Identifier: Apache-2.0
#include "host/commands/CommandLine.h"

#include <algorithm>

#include "host/Failure.h"
#include "host/Plugin.h"
#include "host/Suggestion.h"
#include "host/commands/Checks.h"

namespace host {
namespace {

class HelpText : public CLI::Formatter {
 public:
  std::string make_footer(const CLI::App* app) const override {
    const CLI::App* parent = app->get_parent();
    if (!parent) return Formatter::make_footer(app);
    const auto isShown = [&](const CLI::Option* option) { return option != parent->get_help_ptr(); };
    return make_group("Options of every command", false, parent->get_options(isShown)) + Formatter::make_footer(app);
  }
};

bool IsGiven(const CLI::App& app, const std::string& option) {
  return app.get_option(option)->count() > 0;
}

Failure EmptyValue(const std::string& option) {
  return {kUsage, option + ": the value is empty (is a variable not set?); give one, or leave the option out"};
}

void RefuseEmptyValuesOf(const CLI::App& app) {
  for (const CLI::Option* option : app.get_options()) {
    const std::vector<std::string>& values = option->results();
    if (!option->get_positional() && std::ranges::find(values, "") != values.end())
      throw EmptyValue(option->get_name());
  }
}

std::vector<std::string> OptionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

const CLI::App* ChosenCommand(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? nullptr : chosen.front();
}

std::string ExplainOption(const CLI::App& app, const std::string& option) {
  const CLI::App* command = ChosenCommand(app);
  std::vector<std::string> names = OptionNames(app);
  if (command) {
    const std::vector<std::string> own = OptionNames(*command);
    names.insert(names.end(), own.begin(), own.end());
  }
  const std::string bare = option.substr(0, option.find('='));
  const std::string whose = command ? "viewctl " + command->get_name() : "viewctl";
  if (command && std::ranges::count(OptionNames(*command), bare) > 0) return bare + " stands behind " + whose;
  return whose + " has no option " + bare + Suggestion(bare, names) + " (" + whose + " --help lists them)";
}

std::string ExplainExtra(const CLI::App& app, const std::string& extra) {
  const CLI::App* command = ChosenCommand(app);
  if (extra.starts_with('-')) return ExplainOption(app, extra);
  if (!command) return UnknownCommand(app, extra);
  return "viewctl " + command->get_name() + " takes no further argument \"" + extra + "\" (viewctl " +
         command->get_name() + " --help says what it takes)";
}

// The option or argument that the parser's words are about; null where they name none.
const CLI::Option* OptionIn(const CLI::App& app, const std::string& words) {
  const CLI::App* command = ChosenCommand(app);
  for (const std::string& word : CLI::detail::split(words, ' ')) {
    const std::string name = word.substr(0, word.find_last_not_of(":,") + 1);
    for (const CLI::App* one : {command, &app}) {
      if (!one) continue;
      for (const CLI::Option* option : one->get_options()) {
        if (option->get_name() == name) return option;
      }
    }
  }
  return nullptr;
}

// In plain words what the parser finds wrong with an option or argument.
std::string WhatIsWrong(const CLI::Option& option, const CLI::ParseError& error) {
  const std::string name = option.get_name();
  const std::string meaning = ": " + option.get_description();
  if (dynamic_cast<const CLI::RequiredError*>(&error)) return name + " is missing" + meaning;
  if (dynamic_cast<const CLI::ConversionError*>(&error)) return name + " takes no value" + meaning;
  if (!dynamic_cast<const CLI::ArgumentMismatch*>(&error)) return error.what();
  const int least = option.get_items_expected_min();
  if (option.count() > static_cast<size_t>(least)) return name + " is said more than once: leave all but one out";
  if (!option.get_positional()) return name + " has no value" + meaning;
  return name + " takes at least " + std::to_string(least) + meaning;
}

}  // namespace

void AddGlobalOptions(CLI::App& app, GlobalOptions& options) {
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
  app.add_option("--plugin", options.plugin, "the library to load; else it is looked for in " + PluginFolders())
      ->type_name("FILE");
  app.add_option("--timeout", options.timeout, "how long the first load may take")
      ->type_name("SECONDS")
      ->check(WholeNumber(1, 86400))
      ->capture_default_str();
  app.add_option("--log-file", options.logFile, "where log lines are written")->type_name("FILE");
  app.add_flag("--log-time", options.logTime, "log lines begin with the time, in UTC");
  app.add_flag("-v", options.verbose, "log lines on stderr, cut to the width of a terminal");
  app.add_flag("--ascii", options.ascii, "trees and pages are drawn with signs that every terminal has");
  app.add_flag("-q,--quiet", options.quiet, "only what was asked for, and what went wrong");
  app.set_version_flag("--version", "viewctl " VIEWCTL_VERSION);
}

void UseHelpText(CLI::App& app) {
  app.formatter(std::make_shared<HelpText>());
}

void RefuseEmptyValues(const CLI::App& app, const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    if (argument == "--") break;
    if (argument.starts_with("--") && argument.find('=') == argument.size() - 1) {
      throw EmptyValue(argument.substr(0, argument.size() - 1));
    }
  }
  RefuseEmptyValuesOf(app);
  if (const CLI::App* command = ChosenCommand(app)) RefuseEmptyValuesOf(*command);
}

void RefuseIgnoredOptions(const CLI::App& app, const GlobalOptions& options) {
  const CLI::App* command = ChosenCommand(app);
  const std::string name = command ? command->get_name() : "";
  const bool isOwn = options.server.empty();
  const bool needsNoUser = name == "demo" || name == "serve";
  const struct {
    bool isIgnored;
    const char* sentence;
  } rules[] = {
      {!isOwn && IsGiven(app, "--data"),
       "--data names the own server's store and --server another server: leave one of them out"},
      {isOwn && IsGiven(app, "--password-file"),
       "--password-file: the own server wants no password; give --server URL too, or leave it out"},
      {isOwn && IsGiven(app, "--ca-file"),
       "--ca-file: the own server has no certificate; give --server https://... too, or leave it out"},
      {!isOwn && IsGiven(app, "--ca-file") && options.server.starts_with("http://"),
       "--ca-file: a server at http:// shows no certificate; say https://, or leave it out"},
      {needsNoUser && IsGiven(app, "--user"), "--user: nobody logs in for this command; leave it out"},
  };
  for (const auto& rule : rules) {
    if (rule.isIgnored) throw Failure(kUsage, rule.sentence);
  }
}

std::string Explain(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> rest = app.remaining(true);
  if (dynamic_cast<const CLI::ExtrasError*>(&error) && !rest.empty()) return ExplainExtra(app, rest.front());
  const CLI::App* command = ChosenCommand(app);
  const CLI::Option* option = OptionIn(app, error.what());
  const std::string help =
      command ? "viewctl " + command->get_name() + " --help says what it takes" : "viewctl --help lists what there is";
  return (option ? WhatIsWrong(*option, error) : error.what()) + " (" + help + ")";
}

std::string UnknownCommand(const CLI::App& app, const std::string& name) {
  return "There is no command " + name + Suggestion(name, CommandNames(app)) + " (viewctl --help lists them)";
}

std::string WhatHelpIsNotFor(const CLI::App& app) {
  const std::vector<std::string> rest = app.remaining();
  const bool isForCommand = ChosenCommand(app) || rest.empty() || rest.front().starts_with('-');
  return isForCommand ? "" : UnknownCommand(app, rest.front());
}

std::vector<std::string> CommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) {
    if (!command->get_group().empty()) names.push_back(command->get_name());
  }
  return names;
}

}  // namespace host
