// SPDX-License-Identifier: Apache-2.0
#include "host/find/Search.h"

#include <map>
#include <set>

#include "host/Failure.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/NamePattern.h"
#include "host/Progress.h"

namespace host {
namespace {

void KeepWanted(const Wanted& wanted, const std::set<Resource>& meant, std::vector<ViewUses>& found) {
  for (ViewUses& view : found) {
    std::erase_if(view.uses, [&](const Use& use) {
      return wanted.IsById() ? use.resource.id != wanted.text : !meant.contains(use.resource);
    });
  }
  std::erase_if(found, [](const ViewUses& view) { return view.uses.empty(); });
}

std::set<Resource> ResourcesOf(const std::vector<ViewUses>& views) {
  std::set<Resource> all;
  for (const ViewUses& view : views) {
    for (const Use& use : view.uses) all.insert(use.resource);
  }
  return all;
}

std::set<Resource> Named(const std::set<Resource>& resources, const std::string& pattern) {
  const NamePattern match(pattern);
  std::set<Resource> named;
  for (const Resource& resource : resources) {
    if (match.Fits(NameOfResource(resource))) named.insert(resource);
  }
  return named;
}

}  // namespace

bool Wanted::IsById() const {
  return IsId(text);
}

void ForEachView(const Plugin& plugin, const ViewTree& tree,
                 const std::function<void(const Thing&, bool, const rapidjson::Value&)>& visit) {
  size_t count = 0;
  for (const TreeFolder& folder : tree.folders) count += folder.views.size();
  Progress progress("Reading views", count);
  for (size_t i = 0; i < tree.folders.size(); ++i) {
    for (const TreeView& view : tree.folders[i].views) {
      progress.Step();
      rapidjson::Document detail;
      const std::string request = ObjectText().Add("ID", view.id).Add("NeedResourceName", false).Text();
      if (plugin.Ask("GetPlanDetail", request, detail))
        visit({true, view.id, i, view.name}, view.sharedWithUser, detail);
    }
  }
}

std::vector<ViewUses> FindUses(const Plugin& plugin, const ViewTree& tree, const Wanted& wanted) {
  std::vector<ViewUses> found;
  ForEachView(plugin, tree, [&](const Thing& view, bool isShared, const rapidjson::Value& detail) {
    ViewUses uses{view, isShared, UsesIn(ListOf(detail, "PlanPages"))};
    if (wanted.type) std::erase_if(uses.uses, [&](const Use& use) { return use.resource.type != *wanted.type; });
    found.push_back(std::move(uses));
  });
  std::set<Resource> meant;
  if (!wanted.IsById()) {
    const std::set<Resource> all = ResourcesOf(found);
    FetchResources(all);
    meant = Named(all, wanted.text);
  }
  KeepWanted(wanted, meant, found);
  FetchResources(ResourcesOf(found));
  return found;
}

Resource RequireUsed(const Plugin& plugin, const ViewTree& tree, const Wanted& wanted) {
  if (wanted.IsById()) return {*wanted.type, wanted.text};
  std::set<std::string> ids;
  for (const Resource& resource : ResourcesOf(FindUses(plugin, tree, wanted))) ids.insert(resource.id);
  const std::string what = KindWord(*wanted.type) + " \"" + wanted.text + "\"";
  if (ids.empty()) throw Failure(kUsage, "No view uses a " + what + "; viewctl find \"*\" lists what is used");
  if (ids.size() == 1) return {*wanted.type, *ids.begin()};
  std::string list;
  for (const std::string& id : ids) list += (list.empty() ? "" : ", ") + id;
  throw Failure(kUsage, "The " + what + " may be any of " + list + ": give one of these ids");
}

}  // namespace host
