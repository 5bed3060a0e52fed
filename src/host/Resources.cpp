// SPDX-License-Identifier: Apache-2.0
#include "host/Resources.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <string_view>

#include "ErrorText/ErrorText.h"
#include "ResourceStore/DownloadResource.h"
#include "ResourceStore/Element.h"
#include "host/Failure.h"
#include "host/Ids.h"
#include "json/Numbers.h"

namespace host {
namespace {

using ResourceStore::CElementManager;

struct Kind {
  ResourceType type;
  const char* word;
  bool isElement;
};

constexpr std::array kKinds = {Kind{1001, "camera", true},    Kind{1002, "door", true}, Kind{1005, "elevator", true},
                               Kind{1006, "radar", true},     Kind{7001, "map", false}, Kind{25001, "web-page", false},
                               Kind{kAreaType, "area", false}};
constexpr std::string_view kType = "type ";
constexpr std::array kOtherElements = {1027, 2004};
constexpr std::pair<int, ResourceType> kRelated[] = {{0, 1001}, {1, 7001}, {4, 1002}};

bool IsElement(ResourceType type) {
  const auto kind = std::ranges::find(kKinds, type, &Kind::type);
  return (kind != kKinds.end() && kind->isElement) || std::ranges::find(kOtherElements, type) != kOtherElements.end();
}

unsigned NumberOf(const Resource& resource) {
  return json::WholeNumber<uint32_t>(resource.id).value_or(0);
}

std::shared_ptr<ResourceStore::CElement> ElementOf(const Resource& resource) {
  const unsigned id = NumberOf(resource);
  const auto& stations = ResourceStore::CWorkStationManager::Instance();
  switch (resource.type) {
    case 1001:
      return stations.FindCameraElementByID(id);
    case 1002:
      return stations.FindDoorElementByID(id);
    case 1005:
      return stations.FindElevatorElementByID(id);
    case 1006:
      return stations.FindRadarElementByID(id);
    default:
      return CElementManager::Instance().FindOtherElementByID(id);
  }
}

void Fetch(ResourceType type, const std::set<unsigned>& ids) {
  auto request = std::make_shared<ResourceStore::CDownloadLogicalResource>();
  request->SetVal_extra_ids(ids);
  request->SetVal_source_type({comm_method::ResourceType{type}});
  Vant::Base::Error::ErrorCode error;
  auto& store = ResourceStore::CDownloadResourceStore::Instance();
  if (store.SynIncrementalDownloadLogicalResource(error, request)) return;
  throw Failure(kRefused, "The server's names of resources were not loaded: " +
                              ErrorText::GetErrorInfoByErrorCode(error) + "; try again");
}

}  // namespace

std::string KindWord(ResourceType type) {
  const auto kind = std::ranges::find(kKinds, type, &Kind::type);
  return kind == kKinds.end() ? std::string(kType) + std::to_string(type) : kind->word;
}

ResourceType KindOfWord(const std::string& word) {
  const auto kind = std::ranges::find_if(kKinds, [&](const Kind& known) { return known.word == word; });
  if (kind != kKinds.end()) return kind->type;
  const std::string number = word.starts_with(kType) ? word.substr(kType.size()) : word;
  if (const auto type = json::WholeNumber<int32_t>(number); type && IsId(number)) return *type;
  std::string words;
  for (const Kind& known : kKinds) words += std::string(known.word) + ", ";
  throw Failure(kUsage, "\"" + word + "\" is no kind of resource: say one of " + words + "or the number of a type");
}

ResourceType TypeOfRelated(int relatedType) {
  for (const auto& [number, type] : kRelated) {
    if (number == relatedType) return type;
  }
  return relatedType;
}

bool CanBeFetched(ResourceType type) {
  return type == kAreaType || IsElement(type);
}

void FetchResources(const std::set<Resource>& resources) {
  std::map<ResourceType, std::set<unsigned>> ids;
  for (const Resource& resource : resources) {
    if (IsElement(resource.type) && IsId(resource.id)) ids[resource.type].insert(NumberOf(resource));
  }
  for (const auto& [type, numbers] : ids) Fetch(type, numbers);
}

bool HasResource(const Resource& resource) {
  if (resource.type == kAreaType) return !NameOfResource(resource).empty();
  return CElementManager::Instance().HasElement(resource.type, NumberOf(resource));
}

std::string NameOfResource(const Resource& resource) {
  if (resource.type == kAreaType) return CElementManager::Instance().GetAreaNameByID(NumberOf(resource));
  if (!IsElement(resource.type)) return {};
  const auto element = ElementOf(resource);
  return element ? element->GetName() : "";
}

std::string SiteOfResource(const Resource& resource) {
  const auto element = IsElement(resource.type) ? ElementOf(resource) : nullptr;
  return element ? std::to_string(static_cast<int>(element->GetWorkStationID())) : "";
}

void RequireOnServer(const std::set<Resource>& resources) {
  std::set<Resource> fetched;
  for (const Resource& resource : resources) {
    if (CanBeFetched(resource.type)) fetched.insert(resource);
  }
  if (fetched.empty()) return;
  FetchResources(fetched);
  for (const Resource& resource : fetched) {
    if (HasResource(resource)) continue;
    throw Failure(kRefused, "The server has no " + KindWord(resource.type) + " " + resource.id +
                                ", so nothing was changed; viewctl resources lists what it has");
  }
}

}  // namespace host
