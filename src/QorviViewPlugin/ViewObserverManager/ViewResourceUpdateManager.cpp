// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/base/Locks.h"
#include "QorviViewPlugin/base/LogLine.h"
#include "QorviViewPlugin/base/TextConversion.h"
#include "VantBase/SingletonImpl.h"

template class QORVI_EXPORT_DEFINED Vant::Base::CSingleton<QorviViewPlugin::CViewResourceUpdateManager>;

namespace QorviViewPlugin {
namespace {

using ResourceData::IResourceObserver;

// The observers of one kind of resource, by id.
class ObserverTable {
 public:
  void Apply(const std::vector<std::pair<unsigned int, IResourceObserver*>>& entries, bool isRegister)
      EXCLUDES(m_lock) {
    MutexLock lock(m_lock);
    for (const auto& [id, observer] : entries) {
      if (isRegister) {
        m_observers[id].push_back(observer);
      } else {
        Withdraw(id, observer);
      }
    }
  }

  // A copy, empty when the id has no entry.
  std::vector<IResourceObserver*> ObserversOf(unsigned int id) EXCLUDES(m_lock) {
    MutexLock lock(m_lock);
    const auto entry = m_observers.find(id);
    return entry == m_observers.end() ? std::vector<IResourceObserver*>() : entry->second;
  }

  void Clear() EXCLUDES(m_lock) {
    MutexLock lock(m_lock);
    m_observers.clear();
  }

 private:
  void Withdraw(unsigned int id, IResourceObserver* observer) REQUIRES(m_lock) {
    const auto entry = m_observers.find(id);
    if (entry == m_observers.end()) return;
    std::erase(entry->second, observer);
    if (entry->second.empty()) m_observers.erase(entry);
  }

  Mutex m_lock;
  std::unordered_map<unsigned int, std::vector<IResourceObserver*>> m_observers GUARDED_BY(m_lock);
};

struct Registration {
  int resourceType;
  std::string id;
  bool isRegister;
};

Registration ReadRegistration(const std::string& request) {
  NetLink::CRapidJsonProto document;
  document.set_str(request);
  return {document.get_int_v("/ResourceType", -1), document.get_v("/ID", ""),
          document.get_bool_v("/IsRegister", false)};
}

}  // namespace

struct CViewResourceUpdateManagerData {
  ObserverTable viewObservers;
  ObserverTable viewGroupObservers;

  // Null for every kind that nobody can watch.
  ObserverTable* TableOf(int resourceType) {
    switch (resourceType) {
      case ResourceData::ResourceTypeView:
        return &viewObservers;
      case ResourceData::ResourceTypeViewGroup:
        return &viewGroupObservers;
      default:
        return nullptr;
    }
  }
};

CViewResourceUpdateManager::CViewResourceUpdateManager() : m_data(std::make_shared<CViewResourceUpdateManagerData>()) {}

CViewResourceUpdateManager::~CViewResourceUpdateManager() = default;

void CViewResourceUpdateManager::RegisterResourceUpdate(IResourceObserver* observer, std::string request) {
  if (!observer) return;
  const Registration registration = ReadRegistration(request);
  if (ObserverTable* table = m_data->TableOf(registration.resourceType)) {
    table->Apply({{StringToUInt(registration.id), observer}}, registration.isRegister);
  }
}

void CViewResourceUpdateManager::RegisterMultResourceUpdate(const std::map<std::string, IResourceObserver*>& observers,
                                                            std::string request) {
  const Registration registration = ReadRegistration(request);
  ObserverTable* table = m_data->TableOf(registration.resourceType);
  if (!table) return;
  std::vector<std::pair<unsigned int, IResourceObserver*>> entries;
  for (const auto& [id, observer] : observers) {
    if (observer) entries.emplace_back(StringToUInt(id), observer);
  }
  table->Apply(entries, registration.isRegister);
}

void CViewResourceUpdateManager::UpdateResourceInfo(const IResourceObserver::Param& param,
                                                    ResourceData::ResourceType type) {
  static constexpr char kModule[] = "ClientResourceStoreWebsocket";
  static constexpr char kFunction[] = "QorviViewPlugin::CViewResourceUpdateManager::UpdateResourceInfo";

  ObserverTable* table = m_data->TableOf(type);
  if (!table) return;
  const std::vector<IResourceObserver*> observers = table->ObserversOf(StringToUInt(param.id));
  if (observers.empty()) return;

  // Texts kept letter for letter: programs compare the log.
  QORVI_LOG(3, kModule, kFunction, "if (map_observers.find(res_id) != map_observers.end())");
  for (IResourceObserver* observer : observers) {
    QORVI_LOG(3, kModule, kFunction,
              "for (auto it = map_observers[res_id].begin(); it < map_observers[res_id].end(); ++it)");
    QORVI_LOG(3, kModule, kFunction, "ptr_observer->UpdateResourceInfos(parma);parma.id:%s; parma.other_change_info:%s",
              param.id.c_str(), param.other_change_info.c_str());
    QORVI_LOG(3, kModule, kFunction, "UpdateResource(parma);type:%d; parma.enum_state:%d; parma.child_type:%d",
              static_cast<int>(type), param.enum_state, param.child_type);
    try {
      observer->UpdateResourceInfos(param);
    } catch (...) {
      // The observer's own: the others are told all the same.
    }
  }
}

void CViewResourceUpdateManager::UninitManager() {
  m_data->viewGroupObservers.Clear();
  m_data->viewObservers.Clear();
}

}  // namespace QorviViewPlugin
