// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/ElementRecord.h"

namespace ResourceStore {

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

}  // namespace ResourceStore
