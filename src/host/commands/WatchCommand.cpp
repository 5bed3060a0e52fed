// SPDX-License-Identifier: Apache-2.0
// viewctl watch: change notices as they come.
#include <optional>
#include <set>

#include "base/system/StopSignal.h"
#include "host/Client.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/LogFile.h"
#include "host/Look.h"
#include "host/Names.h"
#include "host/NoticeText.h"
#include "host/ServerWatch.h"
#include "host/ViewTree.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct WatchOptions {
  std::vector<std::string> views;
  std::vector<std::string> groups;
  bool all = false;
  bool text = false;
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

// Prints notices as they come, until somebody asks to stop.
class WatchLoop {
 public:
  WatchLoop(const Plugin& plugin, NoticeQueue& notices, Watch& watch, const WatchOptions& options)
      : m_notices(notices), m_watch(watch), m_isAll(options.all) {
    if (options.text) m_text.emplace(plugin);
  }

  void Run() {
    while (!base::StopAsked()) {
      const std::vector<Notice> notices = m_notices.Take(std::chrono::milliseconds(100));
      for (const std::string& sentence : m_server.Take()) Say(Printable(sentence));
      if (m_text && !notices.empty()) m_text->Refresh();
      for (const Notice& notice : notices) Tell(notice);
    }
  }

 private:
  void Tell(const Notice& notice) {
    m_out.Write(m_text ? TimeText(std::chrono::system_clock::now()) + m_text->Line(notice) : NoticeLine(notice));
    if (m_isAll && notice.enum_state == kChildAdded) m_watch.AddAnnounced(notice.child_type, notice.child_id);
  }

  NoticeQueue& m_notices;
  Watch& m_watch;
  const bool m_isAll;
  std::optional<NoticeText> m_text;
  LineWriter m_out;
  ServerWatch m_server;
};

int RunWatch(const GlobalOptions& options, const WatchOptions& watched) {
  if (!watched.all && watched.views.empty() && watched.groups.empty()) {
    throw Failure(kUsage, "Say what to watch: --view VIEW, --group GROUP or --all");
  }

  base::WatchForStop();
  NoticeQueue notices;  // outlives the client, which notifies it
  Client client(options, Texts::kTranslated);
  client.Load();
  Watch watch(client.Functions(), notices);
  const ViewTree tree = ReadViewTree(client.Functions());
  for (const std::string& text : watched.views) watch.Add(ResourceData::ResourceTypeView, IdToWatch(tree, text, true));
  for (const std::string& text : watched.groups) {
    watch.Add(ResourceData::ResourceTypeViewGroup, IdToWatch(tree, text, false));
  }
  if (watched.all) watch.AddEverything();
  WatchLoop loop(client.Functions(), notices, watch, watched);
  Mention("Watching; Ctrl-C ends it");
  loop.Run();
  return kDone;
}

}  // namespace

void AddWatchCommand(CLI::App& app, Run& chosen) {
  const auto [command, watched] =
      AddCommand(app, chosen, "watch", "change notices, one JSON line each, until Ctrl-C", RunWatch);
  command->add_option("--view", watched->views, "a view to watch")->type_name("VIEW")->expected(1)->take_all();
  command->add_option("--group", watched->groups, "a group to watch")->type_name("GROUP")->expected(1)->take_all();
  command->add_flag("--all", watched->all, "the top level and everything there is or comes to be");
  command->add_flag("--text", watched->text, "in words instead, with names and the time in UTC");
}

}  // namespace host
