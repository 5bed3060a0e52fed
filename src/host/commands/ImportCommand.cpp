// SPDX-License-Identifier: Apache-2.0
// viewctl import: makes on the server what exported files hold, through the exchanges only.
#include <optional>
#include <set>

#include "base/system/StopSignal.h"
#include "host/Client.h"
#include "host/Editing.h"
#include "host/ImportPlan.h"
#include "host/InputFile.h"
#include "host/JsonText.h"
#include "host/Names.h"
#include "host/SavedFile.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/import/ImportRun.h"
#include "host/import/ResourceMap.h"
#include "host/import/UnknownResources.h"

namespace host {
namespace {

struct ImportOptions {
  std::vector<std::string> files;
  std::string into;
  std::string map;
  std::string writeMap;
  std::string retry;
  bool skipUnknown = false;
  bool update = false;
  bool dryRun = false;
  bool json = false;
};

// Each view of the files once; where a file holds one name at a place more than once, so often.
PortableFile ReadAll(const std::vector<std::string>& names) {
  PortableFile all;
  std::map<std::pair<Place, std::string>, size_t> counts;
  for (const std::string& name : names) {
    const PortableFile file = ReadPortable(ReadInput(name));
    all.folders.insert(all.folders.end(), file.folders.begin(), file.folders.end());
    all.names.insert(file.names.begin(), file.names.end());
    std::map<std::pair<Place, std::string>, size_t> own;
    for (const PortableView& view : file.views) {
      const std::pair key(view.folder, view.name);
      if (++own[key] <= counts[key]) continue;
      counts[key] = own[key];
      all.views.push_back(view);
    }
  }
  return all;
}

class Importing {
 public:
  Importing(const Plugin& plugin, const ImportOptions& wanted, PortableFile file)
      : m_plugin(plugin), m_wanted(wanted), m_file(std::move(file)), m_tree(ReadViewTree(plugin)) {}

  int Run() {
    FindInto();
    if (!m_wanted.map.empty()) ApplyMap();
    const std::vector<UnknownUse> unknown = FindUnknown(m_file);
    if (!m_wanted.writeMap.empty()) return SaveMap(unknown);
    std::optional<SavedFile> retry;
    if (!m_wanted.retry.empty() && !m_wanted.dryRun) retry.emplace(m_wanted.retry);
    Tell(unknown);
    return CarryOut(unknown, retry);
  }

 private:
  // Of unknown resources more would hide what else is said; a dry run tells all.
  static constexpr size_t kMostTold = 20;

  void FindInto() {
    if (m_wanted.into.empty()) return;
    m_intoFolder = Names(m_tree).Folder(m_wanted.into).folder;
    m_into = Place{m_tree.folders[*m_intoFolder].kind, m_tree.PathOf(*m_intoFolder)};
  }

  void ApplyMap() {
    const Substitutes substitutes = ResolveMap(ReadMap(ReadInput(m_wanted.map)), m_file, m_plugin, m_tree);
    for (PortableView& view : m_file.views) {
      rapidjson::Document pages;
      ParseJson(view.pages, pages);
      size_t places = 0;
      view.pages = WithOtherResources(pages, substitutes, places);
    }
  }

  int SaveMap(const std::vector<UnknownUse>& unknown) {
    std::vector<MapEntry> entries;
    for (const Resource& resource : ResourcesOf(unknown)) {
      const auto name = m_file.names.find(resource);
      entries.push_back({resource.type, resource.id, name == m_file.names.end() ? "" : name->second, ""});
    }
    SavedFile(m_wanted.writeMap).Write(WriteMap(entries));
    Say(Counted(entries.size(), "resource") +
        " of the file not on this server; nothing was imported. Fill in each \"To\" in " + m_wanted.writeMap +
        " and give it with --map");
    return kDone;
  }

  void Tell(const std::vector<UnknownUse>& unknown) const {
    if (unknown.empty()) return;
    const size_t told = m_wanted.dryRun ? unknown.size() : std::min(unknown.size(), kMostTold);
    for (size_t i = 0; i < told; ++i) Say(DescribeUnknown(m_file, unknown[i], m_into));
    if (told < unknown.size()) Say("and " + std::to_string(unknown.size() - told) + " more; --dry-run tells all");
    const std::string advice =
        m_wanted.skipUnknown ? "these views are left out" : "--skip-unknown leaves these views out";
    Say("Warning: " + Counted(ResourcesOf(unknown).size(), "resource") +
        " not on this server; --write-map FILE and --map FILE put others in their place, " + advice);
  }

  int CarryOut(const std::vector<UnknownUse>& unknown, std::optional<SavedFile>& retry) {
    Existing existing = ExistingIn(m_tree, m_intoFolder);
    const auto steps = PlanImport(m_file, existing, m_into);
    ImportChoices choices{m_wanted.dryRun, m_wanted.json, m_wanted.update, {}};
    if (m_wanted.skipUnknown) {
      for (const UnknownUse& one : unknown) choices.skip.insert(m_file.views[one.view]);
    }
    base::WatchForStop();
    ImportRun run(m_plugin, std::move(existing), std::move(choices));
    const int status = run.Run(steps);
    if (retry) SaveRest(run.Unfinished(), *retry);
    return status;
  }

  void SaveRest(const std::vector<PortableView>& rest, SavedFile& retry) const {
    PortableFile file;
    file.views = rest;
    retry.Write(WritePortable(file));
    if (!rest.empty()) {
      Say(Counted(rest.size(), "view") + " left for another time: viewctl import " + m_wanted.retry);
    }
  }

  const Plugin& m_plugin;
  const ImportOptions& m_wanted;
  PortableFile m_file;
  const ViewTree m_tree;
  std::optional<size_t> m_intoFolder;
  std::optional<Place> m_into;  // that folder's
};

int RunImport(const GlobalOptions& options, const ImportOptions& wanted) {
  PortableFile file = ReadAll(wanted.files);
  const bool changesNothing = wanted.dryRun || !wanted.writeMap.empty();
  Client client(WithoutNewStore(options, changesNothing), Texts::kTranslated);
  client.Load();
  if (!changesNothing) SayWhatIsEdited(options);
  return Importing(client.Functions(), wanted, std::move(file)).Run();
}

}  // namespace

void AddImportCommand(CLI::App& app, Run& chosen) {
  const auto [command, wanted] =
      AddCommand(app, chosen, "import", "what such files hold and is not there yet", RunImport);
  command->add_option("FILE", wanted->files, "written by export; \"-\" is stdin")->required();
  command->add_option("--into", wanted->into, "puts everything below this group")->type_name("GROUP");
  command->add_option("--map", wanted->map, "what takes the place of resources that are not on this server")
      ->type_name("FILE");
  command->add_option("--write-map", wanted->writeMap, "only writes such a file, to be filled in")->type_name("FILE");
  command->add_option("--retry", wanted->retry, "takes the views that were not made, to be imported again")
      ->type_name("FILE");
  command->add_flag("--skip-unknown", wanted->skipUnknown, "leaves out views that show what is not on this server");
  command->add_flag("--update", wanted->update, "makes views that are there equal to the file's");
  command->add_flag("--dry-run", wanted->dryRun, "only say what would be made");
  AddOutcomesAsJson(*command, wanted->json);
  command->footer(
      "What is made has new ids and is shared with nobody; a default view that was deleted is to be set anew\n"
      "(viewctl share, viewctl default). A second import makes nothing twice.");
}

}  // namespace host
