// SPDX-License-Identifier: Apache-2.0
// viewctl watch: change notices as they come.
#include <set>

#include "host/Client.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/Names.h"
#include "host/Notices.h"
#include "host/StopSignal.h"
#include "host/ViewTree.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct WatchOptions {
  std::vector<std::string> views;
  std::vector<std::string> groups;
  bool all = false;
};

// What is being watched; everything is registered once, because the plugin notifies once per registration.
class Watch {
 public:
  Watch(const Plugin& plugin, ResourceData::IResourceObserver& observer) : m_plugin(plugin), m_observer(observer) {}

  void Add(int type, const std::string& id) {
    if (!m_watched.emplace(type, id).second) return;
    m_plugin.Register(&m_observer, ObjectText().Add("ResourceType", type).Add("ID", id).Add("IsRegister", true).Text());
  }

  void AddEverything() {
    Add(ResourceData::ResourceTypeViewGroup, "-1");
    AddAll(ReadViewTree(m_plugin));
  }

  void AddAnnounced(int type, const std::string& id) {
    Add(type, id);
    // What lies in a group may have come before the group was registered.
    if (type == ResourceData::ResourceTypeViewGroup) AddAll(ReadGroup(m_plugin, id));
  }

 private:
  void AddAll(const ViewTree& tree) {
    for (const TreeFolder& folder : tree.folders) {
      Add(ResourceData::ResourceTypeViewGroup, folder.id);
      for (const TreeView& view : folder.views) Add(ResourceData::ResourceTypeView, view.id);
    }
  }

  const Plugin& m_plugin;
  ResourceData::IResourceObserver& m_observer;
  std::set<std::pair<int, std::string>> m_watched;
};

// The id that the text means. One that is not there is watched all the same, and said to be missing.
std::string IdToWatch(const ViewTree& tree, const std::string& text, bool isView) {
  if (IsId(text)) {
    const std::vector<Thing> found = Names(tree).All((isView ? "view:" : "group:") + text);
    if (found.empty()) Say("There is no " + std::string(isView ? "view " : "group ") + text + " that you may see");
    return text;
  }
  return isView ? Names(tree).View(text).id : Names(tree).Folder(text, true).id;
}

int RunWatch(const GlobalOptions& options, const WatchOptions& watched) {
  if (!watched.all && watched.views.empty() && watched.groups.empty()) {
    throw Failure(kUsage, "Say what to watch: --view VIEW, --group GROUP or --all");
  }

  WatchForStop();
  NoticeQueue notices;  // outlives the client, which notifies it
  Client client(options, Texts::kTranslated);
  client.Load();
  Watch watch(client.Functions(), notices);
  const ViewTree tree = ReadViewTree(client.Functions());
  for (const std::string& text : watched.views) watch.Add(ResourceData::ResourceTypeView, IdToWatch(tree, text, true));
  for (const std::string& text : watched.groups)
    watch.Add(ResourceData::ResourceTypeViewGroup, IdToWatch(tree, text, false));
  if (watched.all) watch.AddEverything();
  Say("Watching; Ctrl-C ends it");

  LineWriter out;
  while (!StopAsked()) {
    for (const Notice& notice : notices.Take(std::chrono::milliseconds(100))) {
      out.Write(NoticeLine(notice));
      if (watched.all && notice.enum_state == kChildAdded) {
        watch.AddAnnounced(notice.child_type, notice.child_id);
      }
    }
  }
  return kDone;
}

}  // namespace

void AddWatchCommand(CLI::App& app, Run& chosen) {
  const auto [command, watched] =
      AddCommand(app, chosen, "watch", "change notices, one JSON line each, until Ctrl-C", RunWatch);
  command->add_option("--view", watched->views, "a view to watch")->type_name("VIEW")->expected(1)->take_all();
  command->add_option("--group", watched->groups, "a group to watch")->type_name("GROUP")->expected(1)->take_all();
  command->add_flag("--all", watched->all, "the top level and everything there is or comes to be");
}

}  // namespace host
