// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/Element.h"

#include "ResourceStore/DownloadResource.h"
#include "ResourceStore/ElementStore.h"
#include "VantBase/SingletonImpl.h"

template class Vant::Base::CSingleton<ResourceStore::CElementManager>;
template class Vant::Base::CSingleton<ResourceStore::CWorkStationManager>;

namespace ResourceStore {

namespace {

using comm_method::ResourceTypeCamera;
using comm_method::ResourceTypeDoor;
using comm_method::ResourceTypeElevator;
using comm_method::ResourceTypeRadar;

bool IsNamedType(int type) {
  return type == ResourceTypeCamera || type == ResourceTypeDoor || type == ResourceTypeElevator ||
         type == ResourceTypeRadar;
}

std::string NameOf(const std::shared_ptr<CElement>& element) {
  return element ? element->GetName() : std::string();
}

}  // namespace

CElement::CElement(unsigned int id, int type, const std::string& name, unsigned int workStationId)
    : m_id(id), m_type(type), m_name(name), m_workStationId(workStationId) {}
CElement::~CElement() = default;

unsigned int CElement::GetID() const {
  return m_id;
}
int CElement::GetType() const {
  return m_type;
}
std::string CElement::GetName() const {
  return m_name;
}
unsigned int CElement::GetWorkStationID() const {
  return m_workStationId;
}

std::shared_ptr<ElementStore> ElementStore::Shared() {
  static const std::shared_ptr<ElementStore> store = std::make_shared<ElementStore>();
  return store;
}

std::shared_ptr<CElement> ElementStore::Find(int type, unsigned int id) const {
  std::lock_guard<std::mutex> lock(m_mutex);
  auto ofType = m_elements.find(type);
  if (ofType == m_elements.end()) return nullptr;
  auto element = ofType->second.find(id);
  return element == ofType->second.end() ? nullptr : element->second;
}

std::shared_ptr<CElement> ElementStore::FindOther(unsigned int id) const {
  std::lock_guard<std::mutex> lock(m_mutex);
  for (const auto& [type, elements] : m_elements) {
    if (IsNamedType(type)) continue;
    auto element = elements.find(id);
    if (element != elements.end()) return element->second;
  }
  return nullptr;
}

std::string ElementStore::AreaName(unsigned int id) const {
  std::lock_guard<std::mutex> lock(m_mutex);
  auto area = m_areas.find(id);
  return area == m_areas.end() ? std::string() : area->second;
}

void ElementStore::Put(const std::vector<std::shared_ptr<CElement>>& elements) {
  std::lock_guard<std::mutex> lock(m_mutex);
  for (const auto& element : elements) {
    if (element) m_elements[element->GetType()][element->GetID()] = element;
  }
}

void ElementStore::PutArea(unsigned int id, const std::string& name) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_areas[id] = name;
}

void ElementStore::Clear() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_elements.clear();
  m_areas.clear();
}

class CElementManager::Impl {
 public:
  const std::shared_ptr<ElementStore> store = ElementStore::Shared();
};

CElementManager::CElementManager() : m_impl(std::make_unique<Impl>()) {}
CElementManager::~CElementManager() = default;

std::shared_ptr<CElement> CElementManager::FindCameraElementByID(unsigned int id) const {
  return m_impl->store->Find(ResourceTypeCamera, id);
}
std::shared_ptr<CElement> CElementManager::FindRadarElementByID(unsigned int id) const {
  return m_impl->store->Find(ResourceTypeRadar, id);
}
std::shared_ptr<CElement> CElementManager::FindOtherElementByID(unsigned int id) const {
  return m_impl->store->FindOther(id);
}
std::string CElementManager::GetCameraElementName(unsigned int id) const {
  return NameOf(m_impl->store->Find(ResourceTypeCamera, id));
}
std::string CElementManager::GetDoorElementName(unsigned int id) const {
  return NameOf(m_impl->store->Find(ResourceTypeDoor, id));
}
std::string CElementManager::GetElevatorElementName(unsigned int id) const {
  return NameOf(m_impl->store->Find(ResourceTypeElevator, id));
}
std::string CElementManager::GetAreaNameByID(unsigned int id) const {
  return m_impl->store->AreaName(id);
}
void CElementManager::PutElements(const std::vector<std::shared_ptr<CElement>>& elements) {
  m_impl->store->Put(elements);
}
void CElementManager::PutArea(unsigned int id, const std::string& name) {
  m_impl->store->PutArea(id, name);
}
bool CElementManager::HasElement(int type, unsigned int id) const {
  return m_impl->store->Find(type, id) != nullptr;
}
void CElementManager::Clear() {
  m_impl->store->Clear();
}

CWorkStationManager::CWorkStationManager() = default;
CWorkStationManager::~CWorkStationManager() = default;

std::shared_ptr<CElement> CWorkStationManager::FindCameraElementByID(unsigned int id) const {
  return ElementStore::Shared()->Find(ResourceTypeCamera, id);
}
std::shared_ptr<CElement> CWorkStationManager::FindDoorElementByID(unsigned int id) const {
  return ElementStore::Shared()->Find(ResourceTypeDoor, id);
}
std::shared_ptr<CElement> CWorkStationManager::FindRadarElementByID(unsigned int id) const {
  return ElementStore::Shared()->Find(ResourceTypeRadar, id);
}
std::shared_ptr<CElement> CWorkStationManager::FindElevatorElementByID(unsigned int id) const {
  return ElementStore::Shared()->Find(ResourceTypeElevator, id);
}

}  // namespace ResourceStore
