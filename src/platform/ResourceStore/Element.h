// SPDX-License-Identifier: Apache-2.0
// The elements that were downloaded, and the areas they stand in.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ResourceStore/ElementRecord.h"
#include "ResourceStore/Export.h"
#include "VantBase/Singleton.h"

namespace ResourceStore {
class CElementManager;
class CWorkStationManager;
}  // namespace ResourceStore
extern template class RESOURCESTORE_TEMPLATE_API Vant::Base::CSingleton<ResourceStore::CElementManager>;
extern template class RESOURCESTORE_TEMPLATE_API Vant::Base::CSingleton<ResourceStore::CWorkStationManager>;

namespace ResourceStore {

// The elements and areas that were downloaded so far. Any thread. Look-ups answer an empty pointer or an empty text
// for what is not there; they never ask the server.
class RESOURCESTORE_API CElementManager : public Vant::Base::CSingleton<CElementManager> {
 public:
  ~CElementManager();

  std::shared_ptr<CElement> FindCameraElementByID(unsigned int id) const;
  std::shared_ptr<CElement> FindRadarElementByID(unsigned int id) const;
  // An element that is no camera, door, elevator or radar.
  std::shared_ptr<CElement> FindOtherElementByID(unsigned int id) const;
  std::string GetCameraElementName(unsigned int id) const;
  std::string GetDoorElementName(unsigned int id) const;
  std::string GetElevatorElementName(unsigned int id) const;
  std::string GetAreaNameByID(unsigned int id) const;

  // Filled by the downloads, and by tests. An element replaces one of the same type and id.
  void PutElements(const std::vector<std::shared_ptr<CElement>>& elements);
  void PutArea(unsigned int id, const std::string& name);
  bool HasElement(int type, unsigned int id) const;
  void Clear();

 private:
  template <class T>
  friend struct Vant::Base::SingletonStorage;
  CElementManager();
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

// Look-ups of the same elements, under a second name. Any thread.
class RESOURCESTORE_API CWorkStationManager : public Vant::Base::CSingleton<CWorkStationManager> {
 public:
  ~CWorkStationManager();

  std::shared_ptr<CElement> FindCameraElementByID(unsigned int id) const;
  std::shared_ptr<CElement> FindDoorElementByID(unsigned int id) const;
  std::shared_ptr<CElement> FindRadarElementByID(unsigned int id) const;
  std::shared_ptr<CElement> FindElevatorElementByID(unsigned int id) const;

 private:
  template <class T>
  friend struct Vant::Base::SingletonStorage;
  CWorkStationManager();
};

}  // namespace ResourceStore
