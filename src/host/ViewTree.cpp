// SPDX-License-Identifier: Apache-2.0
#include "host/ViewTree.h"

#include <algorithm>
#include <map>
#include <set>

#include "VeltControl/VeltControl.h"
#include "host/Failure.h"
#include "host/JsonText.h"

namespace host {
namespace {

bool SortsBefore(const std::string& left, const std::string& right) {
  return VeltControl::CStandardItemModel::CustomStringCompare(
      QString::fromStdString(left), QString::fromStdString(right), VeltControl::CStandardItemModel::SortByName);
}

// Whether the answer was UTF-8.
bool AskListing(const Plugin& plugin, const char* exchange, const std::string& request, rapidjson::Document& answer) {
  bool isUtf8 = true;
  if (!plugin.Ask(exchange, request, answer, &isUtf8))
    throw Failure(kRefused, std::string(exchange) + ": " + TextOf(answer, "ErrorInfo"));
  return isUtf8;
}

class TreeReader {
 public:
  explicit TreeReader(const Plugin& plugin) : m_plugin(plugin) {}

  ViewTree Read() {
    rapidjson::Document roots;
    AskListing(m_plugin, "GetPlanGroups", ObjectText().Add("ParentID", "root").Add("GroupType", 0).Text(), roots);
    for (const auto& root : ListOf(roots, "PlanGroups").GetArray()) {
      const size_t index = m_tree.folders.size();
      if (index > kShared) break;
      TreeFolder& folder = m_tree.folders.emplace_back();
      folder.id = "-1";
      folder.name = TextOf(root, "Name");
      folder.kind = static_cast<FolderKind>(index);
      folder.parent = index;
    }
    const size_t tops = m_tree.folders.size();
    for (size_t top = 0; top < tops; ++top) ListGroups(top, {static_cast<FolderKind>(top)});
    for (size_t top = 0; top < tops; ++top) ListViews(top);
    ListBelow(tops);
    return std::move(m_tree);
  }

  ViewTree ReadGroup(const std::string& id) {
    m_tree.folders.emplace_back().id = id;
    ListBelow(0);
    return std::move(m_tree);
  }

 private:
  // Folders are appended while the list is walked, so that depth costs no stack.
  void ListBelow(size_t first) {
    for (size_t i = first; i < m_tree.folders.size(); ++i) {
      ListGroups(i, {m_tree.folders[i].kind, kPublic, kPrivate, kShared});
      ListViews(i);
    }
  }

  // A listing names only groups of the asked type but counts them all, so the types after the first are asked for
  // only while some are missing.
  void ListGroups(size_t parent, const std::vector<FolderKind>& types) {
    std::vector<TreeFolder> found;
    int total = 1;
    int seen = 0;
    std::set<FolderKind> asked;
    for (const FolderKind type : types) {
      if (seen >= total || !asked.insert(type).second) continue;
      rapidjson::Document answer;
      const bool isUtf8 =
          AskListing(m_plugin, "GetPlanGroups",
                     ObjectText().Add("ParentID", m_tree.folders[parent].id).Add("GroupType", type).Text(), answer);
      total = NumberOf(answer, "Total");
      for (const auto& group : ListOf(answer, "PlanGroups").GetArray()) {
        ++seen;
        // A group is listed once, whatever a server says about who lies in whom.
        if (!m_groups.insert(TextOf(group, "ID")).second) continue;
        TreeFolder& folder = found.emplace_back();
        folder.id = TextOf(group, "ID");
        folder.name = TextOf(group, "Name");
        folder.kind = m_tree.folders[parent].kind;
        folder.hasReplacedBytes = !isUtf8 && folder.name.find(kReplacement) != std::string::npos;
        folder.parent = parent;
      }
    }
    std::stable_sort(found.begin(), found.end(), [](const TreeFolder& left, const TreeFolder& right) {
      return SortsBefore(left.name, right.name);
    });
    for (TreeFolder& folder : found) {
      m_tree.folders[parent].folders.push_back(m_tree.folders.size());
      m_tree.folders.push_back(std::move(folder));
    }
  }

  // A group keeps a view that somebody else moved away: "ParentID" says where a view lies. Of one that somebody else
  // changed twice there may be earlier states as well, even in other groups: which is the last one its detail says.
  void Put(TreeView view, size_t index) {
    const auto [place, isNew] = m_views.emplace(view.id, index);
    if (!isNew) {
      rapidjson::Document detail;
      const std::string request = ObjectText().Add("ID", view.id).Add("NeedResourceName", false).Text();
      if (!m_plugin.Ask("GetPlanDetail", request, detail)) return;
      if (TextOf(detail, "GroupID") != m_tree.folders[index].id) return;
      view.name = TextOf(detail, "Name");
      std::erase_if(m_tree.folders[place->second].views, [&](const TreeView& old) { return old.id == view.id; });
      place->second = index;
    }
    m_tree.folders[index].views.push_back(std::move(view));
  }

  void ListViews(size_t index) {
    TreeFolder& folder = m_tree.folders[index];
    rapidjson::Document answer;
    // A group that is not known has gone since it was listed, and what it held with it.
    if (!m_plugin.Ask("GetPlansInGroup", ObjectText().Add("GroupID", folder.id).Add("Type", folder.kind).Text(),
                      answer)) {
      return;
    }
    for (const auto& plan : ListOf(answer, "Plans").GetArray()) {
      if (TextOf(plan, "ParentID") != folder.id) continue;
      Put({TextOf(plan, "ID"), TextOf(plan, "name"), FlagOf(plan, "is_share_view"), {}}, index);
    }
    // Views of one name come in no fixed order.
    std::stable_sort(folder.views.begin(), folder.views.end(), [](const TreeView& left, const TreeView& right) {
      if (left.name != right.name) return SortsBefore(left.name, right.name);
      return std::make_pair(left.id.size(), left.id) < std::make_pair(right.id.size(), right.id);
    });
  }

  const Plugin& m_plugin;
  ViewTree m_tree;
  std::set<std::string> m_groups;
  std::map<std::string, size_t> m_views;  // in which folder each stands
};

}  // namespace

std::vector<std::string> ViewTree::PathOf(size_t folder) const {
  std::vector<std::string> path;
  for (; folders[folder].parent != folder; folder = folders[folder].parent) path.push_back(folders[folder].name);
  std::reverse(path.begin(), path.end());
  return path;
}

TreeCount ViewTree::CountIn(size_t folder) const {
  TreeCount count;
  std::vector<size_t> todo = {folder};
  while (!todo.empty()) {
    const TreeFolder& next = folders[todo.back()];
    todo.pop_back();
    count.folders += next.folders.size();
    count.views += next.views.size();
    todo.insert(todo.end(), next.folders.begin(), next.folders.end());
  }
  return count;
}

size_t ViewTree::FindFolder(const std::string& id) const {
  const auto found = std::find_if(folders.begin(), folders.end(),
                                  [&](const TreeFolder& folder) { return folder.id == id && folder.id != "-1"; });
  return static_cast<size_t>(found - folders.begin());
}

ViewTree ReadViewTree(const Plugin& plugin) {
  return TreeReader(plugin).Read();
}

ViewTree ReadGroup(const Plugin& plugin, const std::string& id) {
  return TreeReader(plugin).ReadGroup(id);
}

}  // namespace host
