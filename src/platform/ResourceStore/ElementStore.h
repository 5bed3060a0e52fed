// SPDX-License-Identifier: Apache-2.0
// Internal to the library.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "ResourceStore/ElementRecord.h"
#include "base/Mutex.h"

namespace ResourceStore {

// The elements and areas of the process. Shared by the managers that read and fill it, so that none of them depends on
// another one's life. Any thread.
class ElementStore {
 public:
  static std::shared_ptr<ElementStore> Shared();

  std::shared_ptr<CElement> Find(int type, unsigned int id) const;
  // An element of any other type than the named four.
  std::shared_ptr<CElement> FindOther(unsigned int id) const;
  std::string AreaName(unsigned int id) const;

  void Put(const std::vector<std::shared_ptr<CElement>>& elements);
  void PutArea(unsigned int id, const std::string& name);
  void Clear();

 private:
  mutable base::Mutex m_mutex;
  std::map<int, std::unordered_map<unsigned int, std::shared_ptr<CElement>>> m_elements
      GUARDED_BY(m_mutex);  // by type, by id
  std::unordered_map<unsigned int, std::string> m_areas GUARDED_BY(m_mutex);
};

}  // namespace ResourceStore
