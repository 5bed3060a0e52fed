// SPDX-License-Identifier: Apache-2.0
// viewctl export: views and folders as a file for another server.
#include <cstdio>
#include <optional>
#include <set>

#include "host/Client.h"
#include "host/JsonText.h"
#include "host/Look.h"
#include "host/Names.h"
#include "host/PortableFile.h"
#include "host/Progress.h"
#include "host/SavedFile.h"
#include "host/Terminal.h"
#include "host/ViewTree.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/find/Uses.h"

namespace host {
namespace {

struct ExportOptions {
  std::vector<std::string> ids;
  std::string output;
  bool withNames = false;
  bool json = false;
};

// The names of all that the views show.
std::map<Resource, std::string> NamesIn(const std::vector<PortableView>& views) {
  std::set<Resource> resources;
  for (const PortableView& view : views) {
    rapidjson::Document pages;
    ParseJson(view.pages, pages);
    for (const Use& use : UsesIn(pages)) resources.insert(use.resource);
  }
  FetchResources(resources);
  std::map<Resource, std::string> names;
  for (const Resource& resource : resources) {
    if (const std::string name = NameOfResource(resource); !name.empty()) names[resource] = name;
  }
  return names;
}

struct Selection {
  std::set<std::string> views;
  std::set<size_t> folders;
};

// Views and groups are numbered apart, so a bare number may mean both.
Selection Select(const ViewTree& tree, const std::vector<std::string>& texts) {
  Selection selection;
  for (const std::string& text : texts) {
    const Thing thing = Names(tree).Either(text, true);
    if (thing.isView) {
      selection.views.insert(thing.id);
    } else {
      selection.folders.insert(thing.folder);
    }
  }
  return selection;
}

class Export {
 public:
  Export(const Plugin& plugin, const ViewTree& tree) : m_plugin(plugin), m_tree(tree) {}

  PortableFile Everything() {
    std::set<size_t> all;
    for (size_t i = 0; i < m_tree.folders.size(); ++i) all.insert(i);
    return Collect(all, {});
  }

  PortableFile Of(const Selection& selection) {
    std::set<size_t> whole;
    // Folders stand behind the one they lie in, so one pass finds all that lie in a chosen one.
    for (size_t i = 0; i < m_tree.folders.size(); ++i) {
      if (selection.folders.contains(i) || whole.contains(m_tree.folders[i].parent)) whole.insert(i);
    }
    return Collect(whole, selection.views);
  }

  size_t LeftOut() const { return m_leftOut; }
  // What had bytes that are no UTF-8 and is not exported as it was: "group 3, view 5", empty for nothing.
  const std::string& WithReplacedBytes() const { return m_withReplacedBytes; }

 private:
  PortableFile Collect(const std::set<size_t>& whole, const std::set<std::string>& views) {
    PortableFile file;
    std::vector<std::pair<const TreeView*, Place>> wanted;
    for (size_t i = 0; i < m_tree.folders.size(); ++i) {
      const Place place{m_tree.folders[i].kind, m_tree.PathOf(i)};
      if (whole.count(i) != 0) AddFolder(place, file);
      for (const TreeView& view : m_tree.folders[i].views) {
        const bool named = views.count(view.id) != 0;
        if (!named && whole.count(i) == 0) continue;
        if (view.sharedWithUser && !named) {
          ++m_leftOut;
          continue;
        }
        // A copy of somebody else's view is the user's own and lies nowhere yet.
        wanted.emplace_back(&view, view.sharedWithUser ? Place{kPrivate, {}} : place);
      }
    }
    Progress progress("Exporting", wanted.size());
    for (const auto& [view, place] : wanted) {
      progress.Step();
      AddFolder(place, file);
      file.views.push_back(Read(view->id, place));
    }
    for (size_t i = 0; i < m_tree.folders.size(); ++i) {
      const TreeFolder& folder = m_tree.folders[i];
      if (folder.hasReplacedBytes && m_added.contains({folder.kind, m_tree.PathOf(i)})) {
        NoteReplacedBytes("group " + folder.id);
      }
    }
    return file;
  }

  // A folder that was added has brought those above it.
  void AddFolder(Place place, PortableFile& file) {
    for (; !place.path.empty() && m_added.insert(place).second; place.path.pop_back()) file.folders.push_back(place);
  }

  void NoteReplacedBytes(const std::string& what) {
    m_withReplacedBytes += (m_withReplacedBytes.empty() ? "" : ", ") + what;
  }

  PortableView Read(const std::string& id, const Place& place) {
    rapidjson::Document detail;
    bool isUtf8 = true;
    const std::string request = ObjectText().Add("ID", id).Add("NeedResourceName", false).Text();
    const bool done = m_plugin.Ask("GetPlanDetail", request, detail, &isUtf8);
    if (!isUtf8) NoteReplacedBytes("view " + id);
    if (!done) throw Failure(kRefused, "View " + id + ": " + TextOf(detail, "ErrorInfo"));
    return ToPortable(detail, place);
  }

  const Plugin& m_plugin;
  const ViewTree& m_tree;
  std::set<Place> m_added;
  size_t m_leftOut = 0;
  std::string m_withReplacedBytes;
};

// On stdout as JSON, else on stderr.
void TellExported(size_t views, const Export& exporter, bool asJson) {
  if (asJson) {
    ObjectText text;
    text.Add("Views", static_cast<int>(views)).Add("LeftOut", static_cast<int>(exporter.LeftOut()));
    std::printf("%s\n", text.Add("ReplacedBytesIn", exporter.WithReplacedBytes()).Text().c_str());
    return;
  }
  Mention("Exported " + Counted(views, "view"));
  if (exporter.LeftOut() > 0) {
    Say("Left out " + std::to_string(exporter.LeftOut()) +
        " that others shared with you; name their ids to export copies of them");
  }
  if (!exporter.WithReplacedBytes().empty()) {
    Say("Warning: bytes that are no UTF-8 were exported as U+FFFD in " + exporter.WithReplacedBytes());
  }
}

int RunExport(const GlobalOptions& options, const ExportOptions& wanted) {
  RequireStdoutForJson(wanted.json, wanted.output);
  std::optional<SavedFile> file;
  if (wanted.output != "-") file.emplace(wanted.output);

  Client client(options, Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  Export exporter(client.Functions(), tree);
  PortableFile content = wanted.ids.empty() ? exporter.Everything() : exporter.Of(Select(tree, wanted.ids));
  if (wanted.withNames) content.names = NamesIn(content.views);
  const std::string text = WritePortable(content);
  if (file) {
    file->Write(text);
  } else {
    std::fwrite(text.data(), 1, text.size(), stdout);
  }
  TellExported(content.views.size(), exporter, wanted.json);
  return kDone;
}

}  // namespace

void AddExportCommand(CLI::App& app, Run& chosen) {
  const auto [command, wanted] =
      AddCommand(app, chosen, "export", "views and folders as a file for any server", RunExport);
  command->add_option("NAME", wanted->ids,
                      "views and groups by id or path, view:ID and group:ID where a number means both; else all");
  command->add_option("-o", wanted->output, "the file; \"-\" is stdout")->type_name("FILE")->required();
  command->add_flag("--with-names", wanted->withNames, "adds the names of what the views show, for a map by name");
  AddSumAsJson(*command, wanted->json);
}

}  // namespace host
