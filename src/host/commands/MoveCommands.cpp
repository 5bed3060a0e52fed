// SPDX-License-Identifier: Apache-2.0
// viewctl mv and cp: views into a folder, or under a new name; folders under a new name.
#include "host/Client.h"
#include "host/Editing.h"
#include "host/JsonText.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/edit/Destination.h"
#include "host/edit/EditableView.h"
#include "host/edit/Outcomes.h"

namespace host {
namespace {

struct MoveOptions {
  std::vector<std::string> paths;  // the sources, and the destination
  bool dryRun = false;
  bool json = false;
};

constexpr const char* kFolderAdvice =
    "a folder can only be renamed where it is; viewctl export, and import --into, make a copy of it elsewhere";

// What both commands have in common. Throws Failure before anything is changed where the line makes no sense.
class Mover {
 public:
  Mover(const Plugin& plugin, const ViewTree& tree, const MoveOptions& options)
      : m_plugin(plugin), m_tree(tree), m_options(options), m_to(FindDestination(tree, options.paths.back())) {
    for (size_t i = 0; i + 1 < options.paths.size(); ++i) m_sources.push_back(Names(tree).Either(options.paths[i]));
    if (!m_to.rest.empty() && m_sources.size() > 1) {
      throw Failure(kUsage, "There is no folder " + options.paths.back() + " to put several things into" +
                                AdviceOnMissing(tree, m_to));
    }
  }
  virtual ~Mover() = default;

  int Run(Outcomes outcomes, const char* what) {
    for (const Thing& thing : m_sources) {
      if (outcomes.IsHopeless()) break;
      const std::string kind = thing.isView ? "view" : "group";
      const Subject text{kind + " " + thing.id + " to " + Target(thing), kind, thing.id};
      const std::string reason = thing.isView ? View(thing) : Folder(thing);
      if (reason.empty()) {
        outcomes.Done(text);
      } else {
        outcomes.Failed(text, reason, std::exchange(m_isServerAsked, false));
      }
    }
    return outcomes.Sum(what);
  }

 protected:
  // Empty where it is done, or would be; else the reason.
  virtual std::string CarryOut(EditableView view) = 0;
  virtual std::string Folder(const Thing& folder) = 0;
  virtual bool MayChangeOwner() const = 0;

  std::string NewName(const Thing& thing) const { return m_to.rest.empty() ? thing.name : m_to.rest[0]; }
  // Whether the server is to be asked now.
  bool AskServer() {
    m_isServerAsked = !m_options.dryRun;
    return m_isServerAsked;
  }

  const Plugin& m_plugin;
  const ViewTree& m_tree;
  const MoveOptions& m_options;
  const Destination m_to;

 private:
  std::string Target(const Thing& thing) const { return PathText(m_tree, {true, "", m_to.folder, NewName(thing)}); }

  std::string View(const Thing& thing) {
    // The server would put it at the top of the user's own views.
    if (m_tree.folders[m_to.folder].kind == kShared && m_tree.folders[m_to.folder].parent == m_to.folder) {
      return "no view can be put beside the shared folders; name one of them, or private";
    }
    if (const TreeView* there = ViewNamed(m_tree, m_to.folder, NewName(thing))) {
      return there->id == thing.id ? "it is there already"
                                   : "there is a view of that name, view " + there->id + "; give another name";
    }
    if (!MayChangeOwner() && IsPublic(m_tree, thing.folder) != IsPublic(m_tree, m_to.folder)) {
      return "a view stays public, or its owner's; viewctl cp makes a copy";
    }
    std::string reason;
    auto view = ReadEditable(m_plugin, thing.id, reason);
    if (!view) return reason;
    view->name = NewName(thing);
    view->groupId = m_tree.folders[m_to.folder].id;
    return CarryOut(std::move(*view));
  }

  std::vector<Thing> m_sources;
  bool m_isServerAsked = false;  // for what is at hand
};

class Move final : public Mover {
 public:
  using Mover::Mover;

 private:
  std::string CarryOut(EditableView view) override {
    if (view.isShared) return "shared with you, and its owner's to edit";
    return AskServer() ? Update(m_plugin, view) : "";
  }

  std::string Folder(const Thing& folder) override {
    if (m_to.rest.empty() || m_tree.folders[folder.folder].parent != m_to.folder) return kFolderAdvice;
    if (!AskServer()) return {};
    rapidjson::Document answer;
    ObjectText request;
    request.Add("Name", m_to.rest[0]).Add("ID", folder.id);
    request.Add("is_share_viewgroup", m_tree.folders[folder.folder].kind == kShared);
    return m_plugin.Ask("UpdatePlanGroup", request.Text(), answer) ? "" : TextOf(answer, "ErrorInfo");
  }

  bool MayChangeOwner() const override { return false; }
};

class Copy final : public Mover {
 public:
  using Mover::Mover;

 private:
  std::string CarryOut(EditableView view) override {
    view.type = IsPublic(m_tree, m_to.folder) ? kPublic : kPrivate;
    std::string id;
    return AskServer() ? Add(m_plugin, view, id) : "";
  }

  std::string Folder(const Thing&) override {
    return "only views are copied; viewctl export, and import --into, make a copy of a folder";
  }

  bool MayChangeOwner() const override { return true; }
};

template <class Work>
int RunWith(const GlobalOptions& options, const MoveOptions& move, const char* doing, const char* done,
            const char* wouldDo) {
  Client client(WithoutNewStore(options, move.dryRun), Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  Work work(client.Functions(), tree, move);
  if (!move.dryRun) SayWhatIsEdited(options);
  return work.Run(Outcomes(doing, done, wouldDo, move.paths.size() - 1, {move.dryRun, move.json}), "thing");
}

int RunMove(const GlobalOptions& options, const MoveOptions& move) {
  return RunWith<Move>(options, move, "Moving", "moved", "would move");
}

int RunCopy(const GlobalOptions& options, const MoveOptions& move) {
  return RunWith<Copy>(options, move, "Copying", "copied", "would copy");
}

void AddArguments(CLI::App& command, MoveOptions& move) {
  command
      .add_option("SOURCE...DESTINATION", move.paths,
                  "what to take, by id or path, and then a folder, or a path with a new name at its end")
      ->required()
      ->expected(2, 100000);
  command.add_flag("--dry-run", move.dryRun, "only say what would be done");
  AddOutcomesAsJson(command, move.json);
}

}  // namespace

void AddMoveCommands(CLI::App& app, Run& chosen) {
  const auto [mv, move] = AddCommand(app, chosen, "mv", "views into another folder, or a new name", RunMove);
  AddArguments(*mv, *move);
  const auto [cp, copy] = AddCommand(app, chosen, "cp", "copies of views", RunCopy);
  AddArguments(*cp, *copy);
}

}  // namespace host
