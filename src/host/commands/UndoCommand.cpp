// SPDX-License-Identifier: Apache-2.0
// viewctl undo: takes back what `replace --undo FILE` did.
#include "host/Client.h"
#include "host/Editing.h"
#include "host/InputFile.h"
#include "host/Names.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/edit/EditableView.h"
#include "host/edit/Outcomes.h"
#include "host/edit/Undo.h"

namespace host {
namespace {

struct UndoOptions {
  std::string file;
  bool dryRun = false;
  bool force = false;
  bool json = false;
};

// By its path, or by the name it had where it is gone.
Subject SubjectOf(const ViewTree& tree, const UndoView& undo) {
  const std::vector<Thing> found = Names(tree).All("view:" + undo.id);
  const std::string name = found.empty() ? "\"" + undo.name + "\"" : PathText(tree, found.front());
  return {"view " + undo.id + " " + name, "view", undo.id};
}

void Restore(const Plugin& plugin, const Subject& what, const UndoView& undo, const UndoOptions& options,
             Outcomes& outcomes) {
  std::string reason;
  auto view = ReadEditable(plugin, undo.id, reason);
  if (!view) return outcomes.Left(what, reason);
  if (view->pages == undo.before) return outcomes.Left(what, "is as it was before");
  if (view->pages != undo.after && !options.force) {
    return outcomes.Left(what, "was changed since; --force takes it back all the same");
  }
  view->pages = undo.before;
  if (!options.dryRun) reason = Update(plugin, *view);
  if (!reason.empty()) return outcomes.Failed(what, reason);
  outcomes.Done(what);
}

int RunUndo(const GlobalOptions& options, const UndoOptions& undo) {
  const UndoFile file = ReadUndo(ReadInput(undo.file));
  if (file.server != options.server && !undo.force) {
    const std::string other = file.server.empty() ? "the own server" : file.server;
    throw Failure(kUsage,
                  "The file is of edits at " + other + ": give that server with --server, or --force for this one");
  }
  Client client(WithoutNewStore(options, undo.dryRun), Texts::kTranslated);
  client.Load();
  if (!undo.dryRun) SayWhatIsEdited(options);
  const ViewTree tree = ReadViewTree(client.Functions());
  Outcomes outcomes("Restoring", "restored", "would restore", file.views.size(), {undo.dryRun, undo.json});
  for (const UndoView& view : file.views) {
    if (outcomes.IsHopeless()) break;
    Restore(client.Functions(), SubjectOf(tree, view), view, undo, outcomes);
  }
  return outcomes.Sum("view");
}

}  // namespace

void AddUndoCommand(CLI::App& app, Run& chosen) {
  const auto [command, undo] =
      AddCommand(app, chosen, "undo", "takes back what replace did, but for views that were changed since", RunUndo);
  command->add_option("FILE", undo->file, "written by replace --undo")->required();
  command->add_flag("--dry-run", undo->dryRun, "only say what would be taken back");
  command->add_flag("--force", undo->force, "takes back views that were changed since, too");
  AddOutcomesAsJson(*command, undo->json);
}

}  // namespace host
