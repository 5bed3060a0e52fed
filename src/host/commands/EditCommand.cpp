// SPDX-License-Identifier: Apache-2.0
// viewctl edit: a view as text in an editor, and back.
#include <cstdio>
#include <set>

#include "host/Client.h"
#include "host/Editing.h"
#include "host/InputFile.h"
#include "host/JsonText.h"
#include "host/Look.h"
#include "host/Names.h"
#include "host/Resources.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"
#include "host/edit/Destination.h"
#include "host/edit/EditText.h"
#include "host/edit/EditableView.h"
#include "host/edit/Editor.h"
#include "host/edit/ViewDifference.h"
#include "host/find/Uses.h"

namespace host {
namespace {

struct EditOptions {
  std::string view;
  std::string from;
  bool dryRun = false;
  bool force = false;
  bool yes = false;
};

class EditView {
 public:
  EditView(const Plugin& plugin, const ViewTree& tree, const EditOptions& options, const Thing& view)
      : m_plugin(plugin), m_tree(tree), m_options(options), m_folder(view.folder), m_before(Present(view.id)) {
    if (m_before.isShared) throw Failure(kRefused, "View " + view.id + " is shared with you, and its owner's to edit");
  }

  int Run() {
    if (!m_options.from.empty()) return Take(WithoutNotes(ReadInput(m_options.from)), m_options.from);
    EditFile file("view-" + m_before.id, ToEditText(m_before));
    const std::string text = EditUntilSound(file);
    try {
      return Take(text, "The text");
    } catch (const Failure& failure) {
      throw Failure(failure.Status(), failure.what() + std::string("; your text is in ") + file.Keep());
    }
  }

 private:
  EditableView Present(const std::string& id) const {
    std::string reason;
    auto view = ReadEditable(m_plugin, id, reason);
    if (!view) throw Failure(kRefused, "View " + id + ": " + reason);
    return *std::move(view);
  }

  // The file comes back as long as it has faults, unless nobody mends them: away from a terminal it does so once.
  std::string EditUntilSound(EditFile& file) const {
    std::string faulty;
    while (true) {
      file.Edit();
      std::string text = WithoutNotes(file.Read());
      if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
        throw Failure(kUsage, "The text is empty, so nothing was changed");
      }
      const std::vector<EditFault> faults = FaultsInEdit(text, m_before);
      if (faults.empty()) return text;
      const bool isLeft = text == faulty || (!faulty.empty() && !CanAsk());
      if (isLeft) throw Failure(kUsage, FaultText("The text", faults) + "; your text is in " + file.Keep());
      Say(FaultText("The text", faults));
      file.Write(WithNotes(text, faults));
      faulty = text;
    }
  }

  static std::string FaultText(const std::string& where, const std::vector<EditFault>& faults) {
    return where + ", line " + std::to_string(faults.front().line) + ": " + faults.front().text;
  }

  int Take(const std::string& text, const std::string& where) {
    if (const auto faults = FaultsInEdit(text, m_before); !faults.empty())
      throw Failure(kUsage, FaultText(where, faults));
    const EditableView after = FromEditText(text, m_before);
    const std::vector<std::string> changes = Differences(m_before, after);
    if (changes.empty()) {
      Say("Nothing was changed");
      return kDone;
    }
    RequireNameIsFree(after);
    RequireOnServer(NewResources(after));
    const std::vector<std::string> others = Differences(m_before, Present(m_before.id));
    for (const std::string& change : changes) std::printf("%s\n", change.c_str());
    std::fflush(stdout);
    TellOthers(others);
    if (!m_options.dryRun) Save(after, !others.empty());
    return kDone;
  }

  void RequireNameIsFree(const EditableView& after) const {
    if (after.name == m_before.name || !ViewNamed(m_tree, m_folder, after.name)) return;
    throw Failure(kRefused,
                  "There is a view of the name " + Printable(after.name) + " in the folder; choose another name");
  }

  std::set<Resource> NewResources(const EditableView& after) const {
    std::set<Resource> resources = ResourcesOf(after);
    for (const Resource& known : ResourcesOf(m_before)) resources.erase(known);
    return resources;
  }

  static std::set<Resource> ResourcesOf(const EditableView& view) {
    rapidjson::Document pages;
    ParseJson(view.pages, pages);
    std::set<Resource> resources;
    for (const Use& use : UsesIn(pages)) resources.insert(use.resource);
    return resources;
  }

  static void TellOthers(const std::vector<std::string>& others) {
    if (!others.empty()) Say("Another client has changed the view meanwhile:");
    for (const std::string& change : others) Say("  " + change);
  }

  void Save(const EditableView& after, bool isOverOthers) {
    const char* question = isOverOthers ? "Save yours in the place of that?" : "Save?";
    const bool mayBeSaved = isOverOthers ? m_options.force : m_options.yes || m_options.force || !CanAsk();
    if (!mayBeSaved && !(CanAsk() && Ask(question))) {
      throw Failure(kRefused, std::string("Nothing was saved") +
                                  (isOverOthers ? "; --force puts yours in the place of that" : ""));
    }
    if (const std::string reason = Update(m_plugin, after); !reason.empty()) throw Failure(kRefused, reason);
    Mention("Saved view " + after.id);
  }

  const Plugin& m_plugin;
  const ViewTree& m_tree;
  const EditOptions& m_options;
  const size_t m_folder;
  const EditableView m_before;
};

int RunEdit(const GlobalOptions& options, const EditOptions& edit) {
  Client client(WithoutNewStore(options, edit.dryRun), Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  const Thing view = Names(tree).View(edit.view);
  if (!edit.dryRun) SayWhatIsEdited(options);
  return EditView(client.Functions(), tree, edit, view).Run();
}

}  // namespace

void AddEditCommand(CLI::App& app, Run& chosen) {
  const auto [command, edit] = AddCommand(app, chosen, "edit", "a view as text in an editor", RunEdit);
  command->add_option("VIEW", edit->view, "its id, or its path: Station/Forecourt")->required();
  command->add_option("--from", edit->from, "takes the text from there instead; \"-\" is stdin")->type_name("FILE");
  command->add_flag("--force", edit->force, "saves it even where another client has changed the view meanwhile");
  command->add_flag("-y,--yes", edit->yes, "saves without asking, as it does away from a terminal");
  command->add_flag("--dry-run", edit->dryRun, "only say what would be changed");
  command->footer(
      "The editor is VISUAL, EDITOR or vi. What is changed is shown by page and window before it is saved.");
}

}  // namespace host
