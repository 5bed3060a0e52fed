// SPDX-License-Identifier: Apache-2.0
// A host that links the library: the functions by their names, and the classes of the view model.
//     linked SERVER USER VIEW      (the password in VIEWS_PASSWORD)
#include <QCoreApplication>
#include <chrono>
#include <iostream>
#include <thread>

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "ErrorText/ErrorText.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewExport.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"
#include "ResourceStore/ViewGroupManager.h"

namespace {

bool IsLoaded() {
  std::string response;
  return IsInitViewGroupFinish("", response) && IsInitViewFinish("", response);
}

bool WaitForViews(std::chrono::seconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!IsLoaded()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

struct Observer : ResourceData::IResourceObserver {
  void UpdateResourceInfos(const Param& param) override { std::cout << "Heard of " << param.id << std::endl; }
};

void UseTheModel(unsigned int view) {
  using namespace QorviViewPlugin;
  std::cout << "View " << view << (FindViewByID(view) ? " is there" : " is not there") << std::endl;

  CCameraGridStruct window;
  window.SetVal_id_element_(2031);
  window.SetVal_struRect(std::make_shared<CRectangle>(Rectangle{0.25f, 0.25f, 0.75f, 0.75f}));
  std::cout << "Zoomed to " << window.GetVal_struRect()->GetVal_fXBottom() << std::endl;
}

// The registry behind ViewRegisterResourceUpdate: many observers at once.
void WatchBoth(Observer& one, Observer& other) {
  auto& registry = Vant::Base::CSingleton<QorviViewPlugin::CViewResourceUpdateManager>::Instance();
  registry.RegisterMultResourceUpdate({{"101", &one}, {"102", &other}}, R"({"ResourceType":16000,"IsRegister":true})");
  registry.UpdateResourceInfo({"102", 7}, ResourceData::ResourceTypeView);
  registry.UninitManager();
}

int Use(unsigned int view) {
  if (!WaitForViews(std::chrono::seconds(60))) return 1;
  UseTheModel(view);
  Observer one, other;
  WatchBoth(one, other);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  if (argc != 4) return 2;
  Vant::Base::Error::ErrorCode error;
  BizShared::CNetCommManager::Instance().SetServer(argv[1]);
  const std::string password = qgetenv("VIEWS_PASSWORD").toStdString();
  if (!BizShared::CUserCommonManager::Instance().Login(argv[2], password, "linked", error)) {
    std::cerr << "No login: " << ErrorText::GetErrorInfoByErrorCode(error) << std::endl;
    return 1;
  }
  ResourceStore::CViewGroupManager::Instance().Start();
  const int status = Use(static_cast<unsigned int>(std::stoul(argv[3])));
  ResourceStore::CViewGroupManager::Instance().Stop();
  BizShared::CUserCommonManager::Instance().Logout();
  return status;
}
