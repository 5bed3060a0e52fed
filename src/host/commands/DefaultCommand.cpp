// SPDX-License-Identifier: Apache-2.0
// viewctl default: the view that the client opens for the user.
#include <algorithm>
#include <cstdio>

#include "host/Client.h"
#include "host/Editing.h"
#include "host/JsonText.h"
#include "host/Names.h"
#include "host/Terminal.h"
#include "host/commands/Checks.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

constexpr const char* kNone = "-3";

struct DefaultOptions {
  std::string view;
  int type = 1;
  bool isNone = false;
  bool json = false;
};

std::string PathOf(const ViewTree& tree, const std::string& id) {
  const std::vector<Thing> found = Names(tree).All("view:" + id);
  return found.empty() ? "" : PathText(tree, found.front());
}

int Tell(const Plugin& plugin, const DefaultOptions& wanted) {
  rapidjson::Document answer;
  if (!plugin.Ask("GetClientViewConfig", "", answer)) throw Failure(kRefused, TextOf(answer, "error_info"));
  const rapidjson::Value& config = ObjectOf(ObjectOf(answer, "ViewData"), "ViewDefaultConfig");
  const std::string id = TextOf(config, "view_id");
  const std::string path = id == kNone ? "" : PathOf(ReadViewTree(plugin), id);
  if (wanted.json) {
    ObjectText text;
    text.Add("ID", id == kNone ? "" : id).Add("Type", NumberOf(config, "view_type")).Add("Path", path);
    std::printf("%s\n", text.Text().c_str());
  } else if (id == kNone) {
    Say("There is no default view; viewctl default VIEW sets one");
  } else {
    std::printf("view %s  %s\n", id.c_str(), path.empty() ? "(not to be seen)" : Printable(path).c_str());
  }
  return kDone;
}

int Set(const Plugin& plugin, const DefaultOptions& wanted) {
  const std::string id = wanted.isNone ? kNone : Names(ReadViewTree(plugin)).View(wanted.view).id;
  rapidjson::Document answer;
  const std::string request = ObjectText().Add("view_type", wanted.type).Add("view_id", id).Text();
  if (!plugin.Ask("SetClientViewConfig", request, answer)) throw Failure(kRefused, TextOf(answer, "error_info"));
  return kDone;
}

int RunDefault(const GlobalOptions& options, const DefaultOptions& wanted) {
  if (wanted.isNone && !wanted.view.empty()) throw Failure(kUsage, "Name a view or say --none, not both");
  Client client(options, Texts::kTranslated);
  client.Load();
  if (!wanted.isNone && wanted.view.empty()) return Tell(client.Functions(), wanted);
  SayWhatIsEdited(options);
  return Set(client.Functions(), wanted);
}

}  // namespace

void AddDefaultCommand(CLI::App& app, Run& chosen) {
  const auto [command, wanted] =
      AddCommand(app, chosen, "default", "the view that the client opens for you; tells or sets it", RunDefault);
  command->add_option("VIEW", wanted->view, "the view to open from now on; without it the present one is told");
  command->add_option("--type", wanted->type, "the client's own number, kept beside it")
      ->type_name("N")
      ->check(WholeNumber())
      ->capture_default_str();
  command->add_flag("--none", wanted->isNone, "no view from now on");
  command->add_flag("--json", wanted->json, "as JSON");
}

}  // namespace host
