// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/ElementStore.h"

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

}  // namespace

std::shared_ptr<ElementStore> ElementStore::Shared() {
  static const std::shared_ptr<ElementStore> store = std::make_shared<ElementStore>();
  return store;
}

std::shared_ptr<CElement> ElementStore::Find(int type, unsigned int id) const {
  base::MutexLock lock(m_mutex);
  auto ofType = m_elements.find(type);
  if (ofType == m_elements.end()) return nullptr;
  auto element = ofType->second.find(id);
  return element == ofType->second.end() ? nullptr : element->second;
}

std::shared_ptr<CElement> ElementStore::FindOther(unsigned int id) const {
  base::MutexLock lock(m_mutex);
  for (const auto& [type, elements] : m_elements) {
    if (IsNamedType(type)) continue;
    auto element = elements.find(id);
    if (element != elements.end()) return element->second;
  }
  return nullptr;
}

std::string ElementStore::AreaName(unsigned int id) const {
  base::MutexLock lock(m_mutex);
  auto area = m_areas.find(id);
  return area == m_areas.end() ? std::string() : area->second;
}

void ElementStore::Put(const std::vector<std::shared_ptr<CElement>>& elements) {
  base::MutexLock lock(m_mutex);
  for (const auto& element : elements) {
    if (element) m_elements[element->GetType()][element->GetID()] = element;
  }
}

void ElementStore::PutArea(unsigned int id, const std::string& name) {
  base::MutexLock lock(m_mutex);
  m_areas[id] = name;
}

void ElementStore::Clear() {
  base::MutexLock lock(m_mutex);
  m_elements.clear();
  m_areas.clear();
}

}  // namespace ResourceStore
