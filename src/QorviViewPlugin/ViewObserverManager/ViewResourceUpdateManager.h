// SPDX-License-Identifier: Apache-2.0
// The registry of observers that want to hear of changes to views and view groups. What they are told is decided in
// ViewDataManager/.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "QorviViewPlugin/base/Export.h"
#include "ResourceStore/ResourceObserver.h"
#include "VantBase/Singleton.h"

namespace QorviViewPlugin {
class CViewResourceUpdateManager;
}
extern template class QORVIVIEWPLUGIN_TEMPLATE_API Vant::Base::CSingleton<QorviViewPlugin::CViewResourceUpdateManager>;

namespace QorviViewPlugin {

struct CViewResourceUpdateManagerData;

// Any thread. Observers are not owned; each is called on the thread that made the change and with no lock of this class
// held; but the notice that a group went (enum_state 4, child_type 16001) is given under the lock of the group table,
// so that an observer must not call into the library from it. A notice goes to the observers registered when it began:
// one that is withdrawn meanwhile on another thread may still be called once.
//
// Requests are JSON texts: "ResourceType" 16000 (view) or 16001 (view group), "ID" the decimal id as a text,
// "IsRegister" true or false. Anything else is ignored; an "ID" that is no number counts as 0.
class QORVIVIEWPLUGIN_API CViewResourceUpdateManager : public Vant::Base::CSingleton<CViewResourceUpdateManager> {
 public:
  virtual ~CViewResourceUpdateManager();

  // Registers one observer for one id, as often as it is asked to; withdrawing takes out all its registrations for the
  // id. A null observer is ignored.
  void RegisterResourceUpdate(ResourceData::IResourceObserver* observer, std::string request);
  // The same for many observers, each under the id that its key is the text of; the request's "ID" is not read.
  void RegisterMultResourceUpdate(const std::map<std::string, ResourceData::IResourceObserver*>& observers,
                                  std::string request);
  // Calls the observers of `param.id` among those of that type, in the order of their registration. What one of them
  // throws ends there.
  void UpdateResourceInfo(const ResourceData::IResourceObserver::Param& param, ResourceData::ResourceType type);
  // Forgets all observers.
  void UninitManager();

 private:
  template <class T>
  friend struct Vant::Base::SingletonStorage;
  CViewResourceUpdateManager();

  std::shared_ptr<CViewResourceUpdateManagerData> m_data;
};

}  // namespace QorviViewPlugin
