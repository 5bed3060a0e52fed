// SPDX-License-Identifier: Apache-2.0
#include "host/report/SiteResources.h"

#include <algorithm>

#include "VeltControl/VeltControl.h"
#include "host/ResourceList.h"

namespace host {
namespace {

constexpr const char* kArea = "area";

}  // namespace

std::vector<ReportResource> ListSiteResources() {
  std::vector<ReportResource> resources;
  for (const ListedResource& listed : ListResources()) {
    const bool isArea = listed.resource.type == kAreaType;
    const std::string kind = isArea ? kArea : drawing::WordOf(listed.resource.type).toStdString();
    resources.push_back({kind, listed.resource.id, listed.name, listed.site, true, {}});
  }
  return resources;
}

ResourceIndex::ResourceIndex(std::vector<ReportResource> onServer) {
  for (ReportResource& resource : onServer) {
    std::pair key(resource.kind, resource.id);
    m_resources.emplace(std::move(key), std::move(resource));
  }
}

void ResourceIndex::Add(const drawing::Page& page, size_t view) {
  for (const drawing::Window& window : page.windows) AddWindow(window, {view, page.number, window.number, {}});
}

void ResourceIndex::AddWindow(const drawing::Window& window, const ReportUse& use) {
  const QString word = drawing::WordOf(window.type);
  if (window.kind == drawing::WindowKind::kEmpty) return;
  const bool isPage = window.kind == drawing::WindowKind::kWebPage && !window.text.isEmpty();
  // A map is called by its kind, whatever its name is.
  const QString name = window.kind == drawing::WindowKind::kMap ? QString() : window.name;
  AddUse(word, isPage ? window.text : window.id, isPage ? QString() : name, use);
  if (window.related) {
    AddUse(window.related->word, window.related->id, window.related->name, {use.view, use.page, use.window, "related"});
  }
  if (!window.cycle) return;
  const QString goesThrough = window.cycle->type == 0 ? "camera" : window.cycle->type == 1 ? kArea : "resource";
  for (const auto& resource : window.cycle->resources) {
    AddUse(goesThrough, resource.id, resource.name, {use.view, use.page, use.window, "in its cycle"});
  }
}

void ResourceIndex::AddUse(const QString& kind, const QString& id, const QString& name, const ReportUse& use) {
  if (id.isEmpty() || id == "0") return;
  ReportResource& resource = m_resources[{kind.toStdString(), id.toStdString()}];
  resource.kind = kind.toStdString();
  resource.id = id.toStdString();
  if (resource.name.empty() && name != id) resource.name = name.toStdString();
  resource.uses.push_back(use);
}

std::vector<ReportResource> ResourceIndex::Take() {
  std::vector<ReportResource> resources;
  for (auto& [key, resource] : m_resources) {
    if (resource.kind != kArea || !resource.uses.empty()) resources.push_back(std::move(resource));
  }
  m_resources.clear();
  std::stable_sort(resources.begin(), resources.end(), [](const ReportResource& left, const ReportResource& right) {
    if (left.kind != right.kind) return left.kind < right.kind;
    return left.name != right.name && VeltControl::CStandardItemModel::CustomStringCompare(
                                          QString::fromStdString(left.name), QString::fromStdString(right.name),
                                          VeltControl::CStandardItemModel::SortByName);
  });
  return resources;
}

}  // namespace host
