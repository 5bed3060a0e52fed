// SPDX-License-Identifier: Apache-2.0
// A host in plain C++ loads the library by its name: plain SERVER USER, with the password in VIEWS_PASSWORD.
#include <QCoreApplication>
#include <QLibrary>
#include <QScopeGuard>
#include <chrono>
#include <future>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "ErrorText/ErrorText.h"
#include "QorviViewPlugin/Functions.h"
#include "ResourceStore/ViewGroupManager.h"

using ResourceStore::CViewGroupManager;
using Failure = std::runtime_error;

// Beside the program, or else wherever the system looks for libraries.
QorviViewPlugin::Functions Load(QLibrary& library) {
  library.setFileName(QCoreApplication::applicationDirPath() + "/QorviViewPlugin");
  if (!library.load()) {
    const QString reason = library.errorString();
    library.setFileName("QorviViewPlugin");
    if (!library.load()) throw Failure((reason + "; " + library.errorString()).toStdString());
  }
  QorviViewPlugin::Functions views;
  const char* missing = views.Load([&](const char* name) { return library.resolve(name); });
  if (missing) throw Failure(library.fileName().toStdString() + " has no function " + missing);
  return views;
}

// Server, login, download: once for the whole process.
void LogIn(const std::string& server, const std::string& user, const std::string& password) {
  Vant::Base::Error::ErrorCode error;
  BizShared::CNetCommManager::Instance().SetServer(server);
  if (!BizShared::CUserCommonManager::Instance().Login(user, password, "plain", error))
    throw Failure("No login: " + ErrorText::GetErrorInfoByErrorCode(error));
  CViewGroupManager::Instance().Start();
}

// Groups first, then views. The download tries again by itself, so this one decides how long that may go on.
void WaitForViews(const QorviViewPlugin::Functions& views, std::chrono::seconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  std::string response;
  for (auto load : {views.IsInitViewGroupFinish, views.IsInitViewFinish}) {
    while (!load("", response)) {
      const ResourceStore::DownloadStatus status = CViewGroupManager::Instance().GetDownloadStatus();
      if (status.state == ResourceStore::DownloadState::NotStarted || std::chrono::steady_clock::now() > end)
        throw Failure("No views: " + ErrorText::GetErrorInfoByErrorCode(status.error));
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
}

// Called on a thread of the platform's, sometimes under a lock of the library's: notes the change and returns.
struct Observer : ResourceData::IResourceObserver {
  void UpdateResourceInfos(const Param& param) override {
    std::call_once(once, [&] { first.set_value(param); });
  }
  std::once_flag once;
  std::promise<Param> first;
};

int main(int argc, char** argv) try {
  QCoreApplication application(argc, argv);
  if (argc != 3) throw Failure("usage: plain SERVER USER");
  Observer observer;  // outlives the library
  QLibrary library;
  const QorviViewPlugin::Functions views = Load(library);
  LogIn(argv[1], argv[2], qgetenv("VIEWS_PASSWORD").toStdString());
  const auto end = qScopeGuard([&] {
    CViewGroupManager::Instance().Stop();  // nothing is called back from here on,
    library.unload();                      // so that the library may go, with all that is registered
    BizShared::CUserCommonManager::Instance().Logout();
  });
  WaitForViews(views, std::chrono::seconds(60));
  std::string response;
  if (!views.GetPlanGroups(R"({"ParentID":"-1","GroupType":0})", response)) throw Failure(response);
  std::cout << "Groups " << response << std::endl;
  if (!views.AddPlanGroup(R"({"Name":"Made by a host","ParentID":"-1"})", response)) throw Failure(response);
  views.ViewRegisterResourceUpdate(&observer, R"({"ResourceType":16001,"ID":"-1","IsRegister":true})");
  std::cout << "Waiting for a change" << std::endl;
  auto heard = observer.first.get_future();
  if (heard.wait_for(std::chrono::seconds(60)) != std::future_status::ready) throw Failure("Nothing was heard");
  std::cout << "Heard of " << heard.get().child_id << std::endl;
} catch (const Failure& failure) {
  std::cerr << failure.what() << std::endl;
  return 1;
}
