// SPDX-License-Identifier: Apache-2.0
// viewctl replace: another resource in the place of one, in every view that uses it.
#include <QFileInfo>
#include <set>

#include "host/Client.h"
#include "host/Editing.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/SavedFile.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/edit/EditableView.h"
#include "host/edit/Outcomes.h"
#include "host/edit/Undo.h"
#include "host/find/Search.h"

namespace host {
namespace {

struct ReplaceOptions {
  std::string kind = "camera";
  std::string from;
  std::string to;
  std::vector<std::string> in;
  std::string undo;
  bool dryRun = false;
  bool json = false;
};

struct PlannedEdit {
  Thing view;
  bool isShared = false;
  EditableView before;
  std::string after;
  std::string detail;  // what to say of it
};

class Replace {
 public:
  Replace(const Plugin& plugin, const ViewTree& tree, const ReplaceOptions& options)
      : m_plugin(plugin), m_tree(tree), m_options(options) {
    for (const std::string& text : options.in) AddFolder(Names(tree).Folder(text, true).folder);
  }

  // What is to be done to which view. Throws Failure.
  void Plan() {
    const ResourceType type = KindOfWord(m_options.kind);
    const Wanted from{m_options.from, type};
    const std::vector<ViewUses> found = FindUses(m_plugin, m_tree, from);
    m_from = RequireUsed(m_plugin, m_tree, from);
    m_to = RequireKnown(m_plugin, m_tree, {m_options.to, type});
    if (m_from == m_to)
      throw Failure(kUsage, "Both resources are " + KindWord(type) + " " + m_to.id + ": name another one");
    RequireOnServer({m_to});
    for (const ViewUses& view : found) PlanView(view);
  }

  void SaveUndo(const std::string& server) {
    if (m_options.undo.empty() || m_options.dryRun || m_edits.empty()) return;
    UndoFile file{server, {}};
    for (const PlannedEdit& edit : m_edits) {
      if (!edit.isShared) file.views.push_back({edit.view.id, edit.view.name, edit.before.pages, edit.after});
    }
    SavedFile(m_options.undo).Write(WriteUndo(file));
  }

  int Run() {
    if (m_edits.empty()) Say("No view uses " + Text(m_from));
    Outcomes outcomes("Replacing", "changed", "would change", m_edits.size(), {m_options.dryRun, m_options.json});
    for (const PlannedEdit& edit : m_edits) {
      if (outcomes.IsHopeless()) break;
      CarryOut(edit, outcomes);
    }
    return outcomes.Sum("view");
  }

 private:
  void AddFolder(size_t folder) {
    if (!m_in.insert(folder).second) return;
    for (const size_t below : m_tree.folders[folder].folders) AddFolder(below);
  }

  void PlanView(const ViewUses& found) {
    if (!m_in.empty() && !m_in.contains(found.view.folder)) return;
    rapidjson::Document detail;
    const std::string request = ObjectText().Add("ID", found.view.id).Add("NeedResourceName", false).Text();
    if (!m_plugin.Ask("GetPlanDetail", request, detail)) return;
    const rapidjson::Value& pages = ListOf(detail, "PlanPages");
    size_t places = 0;
    PlannedEdit edit{found.view, found.isShared, ToEditable(detail), {}, {}};
    const Substitute other{m_to, SiteOfResource(m_to), NameOfResource(m_to)};
    edit.after = WithOtherResources(pages, {{m_from, other}}, places);
    if (places == 0) return;
    edit.detail = Counted(places, "place");
    std::string kept;
    for (const std::string& setting : SettingsFor(pages, m_from)) kept += (kept.empty() ? "" : ", ") + setting;
    if (!kept.empty()) edit.detail += "; check that it fits: " + kept;
    m_edits.push_back(std::move(edit));
  }

  void CarryOut(const PlannedEdit& edit, Outcomes& outcomes) {
    const Subject what{"view " + edit.view.id + " " + PathText(m_tree, edit.view), "view", edit.view.id};
    if (edit.isShared) return outcomes.Left(what, "shared with you, and its owner's to edit");
    if (!m_options.dryRun) {
      EditableView changed = edit.before;
      changed.pages = edit.after;
      if (const std::string reason = Update(m_plugin, changed); !reason.empty()) return outcomes.Failed(what, reason);
    }
    outcomes.Done(what, edit.detail);
  }

  static std::string Text(const Resource& resource) {
    const std::string name = NameOfResource(resource);
    return KindWord(resource.type) + " " + resource.id + (name.empty() ? "" : " \"" + Printable(name) + "\"");
  }

  const Plugin& m_plugin;
  const ViewTree& m_tree;
  const ReplaceOptions& m_options;
  std::set<size_t> m_in;  // folders to keep to; empty: all
  Resource m_from, m_to;
  std::vector<PlannedEdit> m_edits;
};

int RunReplace(const GlobalOptions& options, const ReplaceOptions& replace) {
  KindOfWord(replace.kind);
  if (!replace.undo.empty() && QFileInfo::exists(QString::fromStdString(replace.undo))) {
    throw Failure(kUsage, "The file " + replace.undo + " is there already: name another one with --undo");
  }
  Client client(WithoutNewStore(options, replace.dryRun), Texts::kTranslated);
  client.Load();
  if (!replace.dryRun) SayWhatIsEdited(options);
  const ViewTree tree = ReadViewTree(client.Functions());
  Replace work(client.Functions(), tree, replace);
  work.Plan();
  work.SaveUndo(options.server);
  return work.Run();
}

}  // namespace

void AddReplaceCommand(CLI::App& app, Run& chosen) {
  const auto [command, replace] =
      AddCommand(app, chosen, "replace", "another resource in the place of one, wherever views use it", RunReplace);
  command->add_option("OLD", replace->from, "the resource that is used now: its id, or its name")->required();
  command->add_option("NEW", replace->to, "the one to use from now on: its id, or its name")->required();
  command->add_option("--kind", replace->kind, "camera, door, elevator, radar, map, area, web-page, or a type's number")
      ->type_name("KIND")
      ->capture_default_str();
  command->add_option("--in", replace->in, "only in this folder and those below")
      ->type_name("FOLDER")
      ->expected(1)
      ->take_all();
  command->add_option("--undo", replace->undo, "a new file, with which viewctl undo takes it back")->type_name("FILE");
  command->add_flag("--dry-run", replace->dryRun, "only say what would be changed");
  AddOutcomesAsJson(*command, replace->json);
  command->footer(
      "viewctl resources lists what there is. With --undo FILE, viewctl undo FILE takes it back.\n"
      "Example:\n  viewctl replace --kind camera 118 240 --dry-run");
}

}  // namespace host
