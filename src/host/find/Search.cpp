// SPDX-License-Identifier: Apache-2.0
#include "host/find/Search.h"

#include <map>
#include <set>

#include "host/Failure.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/NamePattern.h"
#include "host/Progress.h"
#include "host/ResourceList.h"

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

std::string TextOf(const Wanted& wanted) {
  return KindWord(*wanted.type) + " \"" + wanted.text + "\"";
}

Resource RequireOne(const std::set<Resource>& found, const Wanted& wanted) {
  if (found.size() == 1) return *found.begin();
  std::string list;
  for (const Resource& resource : found) list += (list.empty() ? "" : ", ") + resource.id;
  throw Failure(kUsage, "The " + TextOf(wanted) + " may be any of " + list + ": give one of these ids");
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
  if (wanted.IsById()) {
    if (!IsOfSomething(wanted.text))
      throw Failure(kUsage, "No " + KindWord(*wanted.type) + " has the id " + wanted.text + ", which stands for none");
    return {*wanted.type, wanted.text};
  }
  const std::set<Resource> used = ResourcesOf(FindUses(plugin, tree, wanted));
  if (!used.empty()) return RequireOne(used, wanted);
  throw Failure(kUsage, "No view uses a " + TextOf(wanted) + "; viewctl find \"*\" lists what is used");
}

Resource RequireKnown(const Plugin& plugin, const ViewTree& tree, const Wanted& wanted) {
  if (wanted.IsById() || !CanBeFetched(*wanted.type)) return RequireUsed(plugin, tree, wanted);
  std::set<Resource> known;
  for (const ListedResource& one : ListResources()) {
    if (one.resource.type == *wanted.type) known.insert(one.resource);
  }
  known = Named(known, wanted.text);
  if (!known.empty()) return RequireOne(known, wanted);
  throw Failure(kUsage, "The server has no " + TextOf(wanted) + "; viewctl resources lists what it has");
}

}  // namespace host
