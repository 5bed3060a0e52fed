// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/Element.h"

#include "ResourceStore/ElementStore.h"
#include "VantBase/SingletonImpl.h"

template class QORVI_EXPORT_DEFINED Vant::Base::CSingleton<ResourceStore::CElementManager>;
template class QORVI_EXPORT_DEFINED Vant::Base::CSingleton<ResourceStore::CWorkStationManager>;

namespace ResourceStore {

namespace {

using comm_method::ResourceTypeCamera;
using comm_method::ResourceTypeDoor;
using comm_method::ResourceTypeElevator;
using comm_method::ResourceTypeRadar;

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
