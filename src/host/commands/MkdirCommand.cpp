// SPDX-License-Identifier: Apache-2.0
// viewctl mkdir: new folders.
#include "host/Client.h"
#include "host/Editing.h"
#include "host/JsonText.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/edit/Destination.h"
#include "host/edit/Outcomes.h"

namespace host {
namespace {

struct MkdirOptions {
  std::vector<std::string> paths;
  bool parents = false;
  bool dryRun = false;
  bool json = false;
};

// A folder, of which only one that is made has an id.
Subject FolderSubject(const std::string& path, const std::string& id = {}) {
  return {"folder " + path, "group", id};
}

class Mkdir {
 public:
  Mkdir(const Plugin& plugin, const MkdirOptions& options)
      : m_plugin(plugin),
        m_options(options),
        m_outcomes("Making", "made", "would make", options.paths.size(), {options.dryRun, options.json}) {}

  void Make(const std::string& path) {
    // Each path anew, as the one before may have made a part of it.
    const ViewTree tree = ReadViewTree(m_plugin);
    const Destination place = Follow(tree, path);
    const std::string above = PathText(tree, place.folder);
    if (place.rest.empty()) {
      return m_options.parents ? m_outcomes.Left(FolderSubject(above), "is there")
                               : m_outcomes.Failed(FolderSubject(above), "is there already", false);
    }
    if (place.rest.size() > 1 && !m_options.parents) {
      return m_outcomes.Failed(
          FolderSubject(path),
          "there is no folder " + above + "/" + EscapedName(place.rest[0]) + "; --parents makes it too", false);
    }
    MakeAll(tree, place, above);
  }

  bool IsHopeless() const { return m_outcomes.IsHopeless(); }
  int Sum() { return m_outcomes.Sum("folder"); }

 private:
  void MakeAll(const ViewTree& tree, const Destination& place, std::string path) {
    std::string parent = tree.folders[place.folder].id;
    for (const std::string& name : place.rest) {
      path += "/" + EscapedName(name);
      const std::string reason = m_options.dryRun ? "" : Add(name, tree.folders[place.folder].kind, parent);
      if (!reason.empty()) return m_outcomes.Failed(FolderSubject(path), reason);
      m_outcomes.Done(FolderSubject(path, m_options.dryRun ? "" : parent), m_options.dryRun ? "" : "group " + parent);
    }
  }

  // Empty where it is made, and `parent` is then its id; else the reason.
  std::string Add(const std::string& name, FolderKind kind, std::string& parent) {
    ObjectText request;
    request.Add("Name", name).Add("ParentID", parent).Add("Type", kind).Add("is_share_viewgroup", kind == kShared);
    rapidjson::Document answer;
    if (!m_plugin.Ask("AddPlanGroup", request.Text(), answer)) return TextOf(answer, "ErrorInfo");
    parent = TextOf(answer, "ID");
    return {};
  }

  const Plugin& m_plugin;
  const MkdirOptions& m_options;
  Outcomes m_outcomes;
};

int RunMkdir(const GlobalOptions& options, const MkdirOptions& mkdir) {
  Client client(WithoutNewStore(options, mkdir.dryRun), Texts::kTranslated);
  client.Load();
  if (!mkdir.dryRun) SayWhatIsEdited(options);
  Mkdir work(client.Functions(), mkdir);
  for (const std::string& path : mkdir.paths) {
    if (!work.IsHopeless()) work.Make(path);
  }
  return work.Sum();
}

}  // namespace

void AddMkdirCommand(CLI::App& app, Run& chosen) {
  const auto [command, mkdir] = AddCommand(app, chosen, "mkdir", "new folders", RunMkdir);
  command->add_option("PATH", mkdir->paths, "from the top: Station/New; private/New for one of your own")->required();
  command->add_flag("-p,--parents", mkdir->parents, "makes the folders above too, and takes one that is there");
  command->add_flag("--dry-run", mkdir->dryRun, "only say what would be made");
  AddOutcomesAsJson(*command, mkdir->json);
}

}  // namespace host
