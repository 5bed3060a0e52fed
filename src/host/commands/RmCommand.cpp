// SPDX-License-Identifier: Apache-2.0
// viewctl rm: deletes views and folders.
#include <set>

#include "host/Client.h"
#include "host/Editing.h"
#include "host/JsonText.h"
#include "host/Names.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/edit/Outcomes.h"

namespace host {
namespace {

struct RmOptions {
  std::vector<std::string> things;
  bool yes = false;
  bool dryRun = false;
  bool json = false;
};

std::string Describe(const ViewTree& tree, const Thing& thing) {
  if (thing.isView) return "view " + thing.id + " " + PathText(tree, thing);
  const TreeCount content = tree.CountIn(thing.folder);
  const std::string text = "group " + thing.id + " " + PathText(tree, thing.folder);
  if (content.folders + content.views == 0) return text + ", which is empty";
  return text + " with " + Counted(content.folders, "folder") + " and " + Counted(content.views, "view");
}

std::string Delete(const Plugin& plugin, const Thing& thing) {
  rapidjson::Document answer;
  const char* exchange = thing.isView ? "DeletePlan" : "DeletePlanGroup";
  return plugin.Ask(exchange, ObjectText().Add("ID", thing.id).Text(), answer) ? "" : TextOf(answer, "ErrorInfo");
}

// Throws Failure kUsage where nobody says yes.
void Confirm(const std::vector<std::string>& texts, const RmOptions& rm) {
  if (rm.yes || rm.dryRun) return;
  for (const std::string& text : texts) Say("Delete " + Printable(text));
  if (!CanAsk()) throw Failure(kUsage, "Nothing was deleted: --yes deletes it without asking");
  if (!Ask("Delete " + Counted(texts.size(), "thing") + "?")) throw Failure(kUsage, "Nothing was deleted");
}

int RunRm(const GlobalOptions& options, const RmOptions& rm) {
  Client client(WithoutNewStore(options, rm.dryRun), Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  std::vector<Thing> things;
  std::vector<std::string> texts;
  for (const std::string& name : rm.things) {
    things.push_back(Names(tree).Either(name));
    texts.push_back(Describe(tree, things.back()));
  }
  if (!rm.dryRun) SayWhatIsEdited(options);
  Confirm(texts, rm);
  Outcomes outcomes("Deleting", "deleted", "would delete", things.size(), {rm.dryRun, rm.json});
  for (size_t i = 0; i < things.size() && !outcomes.IsHopeless(); ++i) {
    const std::string reason = rm.dryRun ? "" : Delete(client.Functions(), things[i]);
    const Subject what{texts[i], things[i].isView ? "view" : "group", things[i].id};
    if (reason.empty()) {
      outcomes.Done(what);
    } else {
      outcomes.Failed(what, reason);
    }
  }
  return outcomes.Sum("thing");
}

}  // namespace

void AddRmCommand(CLI::App& app, Run& chosen) {
  const auto [command, rm] = AddCommand(app, chosen, "rm", "deletes views, and folders with what they hold", RunRm);
  command->add_option("NAME", rm->things, "views and groups by id or path")->required();
  command->add_flag("-y,--yes", rm->yes, "without asking");
  command->add_flag("--dry-run", rm->dryRun, "only say what would be deleted");
  AddOutcomesAsJson(*command, rm->json);
  command->footer(
      "viewctl export keeps what may be wanted back:\n  viewctl export Station -o station.json && viewctl rm Station");
}

}  // namespace host
