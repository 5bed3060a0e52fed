// SPDX-License-Identifier: Apache-2.0
// Elements: what a window can show (cameras, doors, ...).
#pragma once

#include <string>

#include "ResourceStore/Export.h"

namespace comm_method {

// Kinds of element, by the server's number; others occur.
enum ResourceType : int {
  ResourceTypeCamera = 1001,
  ResourceTypeDoor = 1002,
  ResourceTypeElevator = 1005,
  ResourceTypeRadar = 1006,
  ResourceTypeElement1027 = 1027,
  ResourceTypeElement2004 = 2004,
};

}  // namespace comm_method

namespace ResourceStore {

// One element; immutable once made.
class RESOURCESTORE_API CElement {
 public:
  CElement(unsigned int id, int type, const std::string& name, unsigned int workStationId);
  ~CElement();

  unsigned int GetID() const;
  int GetType() const;  // a comm_method::ResourceType
  std::string GetName() const;
  unsigned int GetWorkStationID() const;

 private:
  unsigned int m_id;
  int m_type;
  std::string m_name;
  unsigned int m_workStationId;
};

}  // namespace ResourceStore
