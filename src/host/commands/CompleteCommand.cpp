// SPDX-License-Identifier: Apache-2.0
// viewctl completion: what a shell asks to complete a line that is being typed, and the script that has it ask.
#include <QFile>
#include <algorithm>
#include <cstdio>
#include <map>

#include "host/Client.h"
#include "host/Configuration.h"
#include "host/JsonText.h"
#include "host/ResourceList.h"
#include "host/calls/RequestCheck.h"
#include "host/commands/CommandLine.h"
#include "host/commands/Context.h"
#include "host/complete/Line.h"
#include "host/complete/Paths.h"

namespace host {
namespace {

using Candidates = std::vector<Candidate>;

// The line so far, as the parser would see it.
struct TypedLine {
  const CLI::App* command = nullptr;
  const CLI::Option* option = nullptr;  // whose value is being typed
  size_t positionals = 0;               // given before
  std::string word;                     // that is being typed
  std::vector<std::string> connection;  // options that say which server, with their values
};

const CLI::Option* FindOption(const TypedLine& line, const CLI::App& app, const std::string& name) {
  for (const CLI::App* one : {line.command, &app}) {
    if (!one) continue;
    for (const CLI::Option* option : one->get_options()) {
      if (option->check_name(name)) return option;
    }
  }
  return nullptr;
}

bool TakesValue(const CLI::Option* option) {
  return option && option->get_items_expected_max() > 0;
}

const CLI::App* FindCommand(const CLI::App& app, const std::string& name) {
  const auto commands = app.get_subcommands({});
  const auto found = std::ranges::find_if(commands, [&](const CLI::App* one) { return one->get_name() == name; });
  return found == commands.end() ? nullptr : *found;
}

TypedLine ReadTyped(const CLI::App& app, const std::vector<std::string>& words) {
  TypedLine line;
  for (size_t i = 1; i + 1 < words.size(); ++i) {
    const std::string& word = words[i];
    if (word.starts_with('-') && word.size() > 1) {
      const std::string name = word.substr(0, word.find('='));
      const CLI::Option* option = FindOption(line, app, name);
      const bool isNext = TakesValue(option) && word.find('=') == std::string::npos;
      if (isNext && i + 2 == words.size()) line.option = option;
      if (TakesValue(option) && app.get_option_no_throw(name) == option && i + 2 < words.size()) {
        line.connection.push_back(word);
        if (isNext) line.connection.push_back(words[i + 1]);
      }
      if (isNext) ++i;
    } else if (!line.command) {
      line.command = FindCommand(app, word);
      if (!line.command) return {nullptr, nullptr, 1, "", {}};
    } else {
      ++line.positionals;
    }
  }
  line.word = words.back();
  return line;
}

// The positional argument that comes next.
const CLI::Option* NextPositional(const TypedLine& line) {
  size_t taken = 0;
  for (const CLI::Option* option : line.command->get_options()) {
    if (!option->get_positional()) continue;
    taken += static_cast<size_t>(option->get_items_expected_max());
    if (line.positionals < taken) return option;
  }
  return nullptr;
}

Candidates Beginning(const std::string& word, const Candidates& all) {
  Candidates fitting;
  std::ranges::copy_if(all, std::back_inserter(fitting),
                       [&](const Candidate& one) { return one.text.starts_with(word); });
  return fitting;
}

Candidates OptionsOf(const CLI::App* app) {
  Candidates all;
  if (!app) return all;
  for (const CLI::Option* option : app->get_options()) {
    for (const std::string& name : option->get_lnames()) all.push_back({"--" + name, option->get_description()});
    if (option->get_lnames().empty()) {
      for (const std::string& name : option->get_snames()) all.push_back({"-" + name, option->get_description()});
    }
  }
  return all;
}

Candidates Commands(const CLI::App& app) {
  Candidates all;
  for (const std::string& name : CommandNames(app)) all.push_back({name, app.get_subcommand(name)->get_description()});
  return all;
}

Candidates Words(const std::vector<std::string>& words) {
  Candidates all;
  for (const std::string& word : words) all.push_back({word, ""});
  return all;
}

Candidates ServerNames() {
  Candidates all;
  for (const auto& [name, server] : ReadConfiguration(ConfigurationFile()).servers) all.push_back({name, server.url});
  return all;
}

bool IsResource(const std::string& kind) {
  return kind == "RESOURCE" || kind == "OLD" || kind == "NEW";
}

// By name, or by id where the word is one.
Candidates Resources(const std::string& word) {
  const bool isNumber = !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
  Candidates all;
  for (const ListedResource& one : ListResources()) {
    const std::string kind = KindWord(one.resource.type) + " ";
    if (isNumber) all.push_back({one.resource.id, kind + one.name});
    if (!one.name.empty() && CanBeTyped(one.name)) all.push_back({one.name, kind + one.resource.id});
  }
  return Beginning(word, all);
}

// What the server names. Nobody is asked for a password, and no store is made.
Candidates FromServer(GlobalOptions options, const std::string& kind, const std::string& word) {
  options.isUnattended = options.makesNoStore = true;
  Client client(options, Texts::kTranslated);
  if (IsResource(kind)) return Resources(word);
  client.Load();
  if (kind == "USER") {
    rapidjson::Document answer;
    client.Functions().Ask("GetAllUserInfo", "", answer);
    Candidates users;
    for (const auto& user : ListOf(answer, "user_detail_list").GetArray())
      users.push_back({TextOf(user, "user_name"), ""});
    return Beginning(word, users);
  }
  const bool isFolder = kind == "FOLDER" || kind == "GROUP";
  const PathsOf wanted = kind == "VIEW" ? PathsOf::kViews : isFolder ? PathsOf::kFolders : PathsOf::kBoth;
  return PathsBeginning(ReadViewTree(client.Functions()), word, wanted);
}

// The options that say which server, as the line gives them so far.
GlobalOptions ConnectionOf(const TypedLine& line, const std::string& command) {
  CLI::App app("", "viewctl");
  app.allow_windows_style_options(false);
  GlobalOptions options;
  AddGlobalOptions(app, options);
  app.add_subcommand(command, "");
  // The parser takes its words from the end.
  std::vector<std::string> words = {command};
  words.insert(words.end(), line.connection.rbegin(), line.connection.rend());
  app.parse(std::move(words));
  CompleteOptions(app, options);
  return options;
}

// What may stand for an argument that the help calls by that word.
Candidates ValuesOf(const CLI::App& app, const TypedLine& line, const std::string& kind) {
  const std::map<std::string, std::vector<std::string>> fixed = {
      {"KIND", {"camera", "door", "elevator", "radar", "map", "area", "web-page"}},
      {"FUNCTION", ExchangeNames()},
      {"COMMAND", CommandNames(app)},
      {"SHELL", {"bash", "zsh", "fish"}},
      {"FORMAT", {"wide", "json"}}};
  if (const auto words = fixed.find(kind); words != fixed.end()) return Beginning(line.word, Words(words->second));
  if (kind == "URL") return Beginning(line.word, ServerNames());
  if (kind.starts_with("FILE") || kind == "DIR" || kind == "SCRIPT") return {{kFiles, ""}};
  constexpr const char* kOfServer[] = {"VIEW", "FOLDER",   "GROUP", "NAME", "PATH", "SOURCE...DESTINATION",
                                       "USER", "RESOURCE", "OLD",   "NEW"};
  if (std::ranges::find(kOfServer, kind) == std::end(kOfServer)) return {};
  return FromServer(ConnectionOf(line, line.command ? line.command->get_name() : "tree"), kind, line.word);
}

// "FORMAT" of "FORMAT:{wide,json}".
std::string KindOf(const CLI::Option& option) {
  const std::string name = option.get_positional() ? option.get_name(true) : option.get_type_name();
  return name.substr(0, name.find(':'));
}

Candidates Complete(const CLI::App& app, const std::vector<std::string>& words) {
  const TypedLine line = ReadTyped(app, words);
  if (line.option) return ValuesOf(app, line, KindOf(*line.option));
  if (line.word.starts_with('-')) {
    Candidates all = OptionsOf(line.command);
    const Candidates common = OptionsOf(&app);
    all.insert(all.end(), common.begin(), common.end());
    return Beginning(line.word, all);
  }
  if (!line.command) return line.positionals == 0 ? Beginning(line.word, Commands(app)) : Candidates();
  const CLI::Option* positional = NextPositional(line);
  return positional ? ValuesOf(app, line, KindOf(*positional)) : Candidates();
}

struct CompletionOptions {
  std::string shell;
  std::vector<std::string> words;
  std::string line;
};

// A line that cannot be completed, for whatever reason, stays as it is.
int PrintCandidates(const CLI::App& app, const CompletionOptions& wanted) {
  std::vector<std::string> words = {"viewctl"};
  words.insert(words.end(), wanted.words.begin(), wanted.words.end());
  if (!wanted.line.empty()) words = SplitLine(wanted.line);
  try {
    for (const Candidate& one : Complete(app, words)) {
      std::printf("%s%s%s\n", one.text.c_str(), one.about.empty() ? "" : "\t", one.about.c_str());
    }
  } catch (const std::exception&) {
    return kRefused;
  }
  return kDone;
}

int PrintScript(const std::string& shell) {
  QFile file(QString(":/completion/viewctl.") + QString::fromStdString(shell));
  if (!file.open(QIODevice::ReadOnly)) throw Failure(kUsage, "Name a shell: bash, zsh or fish");
  const QByteArray script = file.readAll();
  std::fwrite(script.constData(), 1, static_cast<size_t>(script.size()), stdout);
  return kDone;
}

}  // namespace

void AddCompletionCommand(CLI::App& app, Run& chosen) {
  auto wanted = std::make_shared<CompletionOptions>();
  CLI::App* script = AddCommand(app, chosen, "completion", "the script that has a shell complete viewctl's lines",
                                [wanted](const GlobalOptions&) { return PrintScript(wanted->shell); });
  script->add_option("SHELL", wanted->shell, "bash, zsh or fish")->required();
  script->footer(
      "Examples:\n  source <(viewctl completion bash)\n  viewctl completion fish > "
      "~/.config/fish/completions/viewctl.fish");
  // What the scripts ask; no part of the help.
  CLI::App* ask = AddCommand(app, chosen, "__complete", "what may stand at a line's end",
                             [&app, wanted](const GlobalOptions&) { return PrintCandidates(app, *wanted); });
  ask->group("");
  ask->add_option("--line", wanted->line, "the line up to the cursor, as it was typed");
  ask->add_option("WORDS", wanted->words, "or its words, the last being typed");
}

}  // namespace host
