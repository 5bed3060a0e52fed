// SPDX-License-Identifier: Apache-2.0
#include "host/report/SiteResources.h"

#include <algorithm>

#include "BizShared/NetCommManager.h"
#include "ErrorText/ErrorText.h"
#include "ResourceStore/Element.h"
#include "VeltControl/VeltControl.h"
#include "host/Failure.h"
#include "host/JsonText.h"

namespace host {
namespace {

constexpr const char* kArea = "area";

rapidjson::Document AskServer(const std::string& list) {
  auto request = std::make_shared<NetLink::CClientSendInfo>();
  request->SetVal_Method("GET");
  request->SetVal_URL("/NXAPI/Vantorel/Platform/V0/" + list);
  auto reply = std::make_shared<NetLink::CClientRecvInfo>();
  if (!BizShared::CNetCommManager::Instance().ClientSynSend(reply, request, 0)) {
    throw Failure(kRefused, list + ": " + ErrorText::GetErrorInfoByErrorCode(reply->GetVal_Error_code()));
  }
  rapidjson::Document answer;
  ParseAnswer(reply->GetVal_Receive_Data(), answer);
  const rapidjson::Value& status = ObjectOf(answer, "ResponseStatus");
  if (NumberOf(status, "ErrorCode", -1) != 0) throw Failure(kRefused, "The server does not list its " + list);
  return answer;
}

// Calls `take` with each entry of a list of the server.
template <class Take>
void ForEach(const std::string& list, const char* outer, const char* inner, const Take& take) {
  const rapidjson::Document answer = AskServer(list);
  const rapidjson::Value& data = ObjectOf(ObjectOf(answer, "ResponseStatus"), "Data");
  for (const rapidjson::Value& entry : ListOf(ObjectOf(data, outer), inner).GetArray()) take(entry);
}

ReportResource Known(const std::string& kind, const rapidjson::Value& entry) {
  ReportResource resource;
  resource.kind = kind;
  resource.id = std::to_string(NumberOf(entry, "ID", -1));
  resource.name = TextOf(entry, "Name");
  resource.isOnServer = true;
  return resource;
}

}  // namespace

std::vector<ReportResource> ListSiteResources() {
  std::vector<ReportResource> resources;
  std::vector<std::shared_ptr<ResourceStore::CElement>> elements;
  ForEach("Elements", "ElementList", "Element", [&](const rapidjson::Value& entry) {
    const int type = NumberOf(entry, "Type");
    const int site = NumberOf(entry, "SiteID", -1);
    ReportResource& resource = resources.emplace_back(Known(drawing::WordOf(type).toStdString(), entry));
    if (site != -1) resource.site = std::to_string(site);
    elements.push_back(std::make_shared<ResourceStore::CElement>(static_cast<unsigned>(NumberOf(entry, "ID", -1)), type,
                                                                 resource.name, static_cast<unsigned>(site)));
  });
  ResourceStore::CElementManager::Instance().PutElements(elements);
  ForEach("Areas", "AreaList", "Area",
          [&](const rapidjson::Value& entry) { resources.push_back(Known(kArea, entry)); });
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

void ResourceIndex::AddWindow(const drawing::Window& window, const Use& use) {
  const QString word = drawing::WordOf(window.type);
  if (window.kind == drawing::WindowKind::kEmpty) return;
  const bool isPage = window.kind == drawing::WindowKind::kWebPage && !window.text.isEmpty();
  // A map is called by its kind, whatever its name is.
  const QString name = window.kind == drawing::WindowKind::kMap ? QString() : window.name;
  AddUse(word, isPage ? window.text : window.id, isPage ? QString() : name, use);
  if (window.related) {
    AddUse(window.related->word, QString::number(window.related->id), window.related->name,
           {use.view, use.page, use.window, "related"});
  }
  if (!window.cycle) return;
  const QString goesThrough = window.cycle->type == 0 ? "camera" : window.cycle->type == 1 ? kArea : "resource";
  for (const auto& resource : window.cycle->resources) {
    AddUse(goesThrough, resource.id, resource.name, {use.view, use.page, use.window, "in its cycle"});
  }
}

void ResourceIndex::AddUse(const QString& kind, const QString& id, const QString& name, const Use& use) {
  if (id.isEmpty() || id == "-1" || id == "0") return;
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
