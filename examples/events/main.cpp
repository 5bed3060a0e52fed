// SPDX-License-Identifier: Apache-2.0
// A host with an event loop: what it hears, of the download and of changes, reaches the thread of its interface.
//     events SERVER USER      (the password in VIEWS_PASSWORD)
#include <QCoreApplication>
#include <QLibrary>
#include <QTimer>
#include <iostream>

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "ErrorText/ErrorText.h"
#include "QorviViewPlugin/Functions.h"
#include "ResourceStore/ViewGroupManager.h"

using ResourceStore::CViewGroupManager;
using ResourceStore::DownloadStatus;

class Window : public QObject, private ResourceData::IResourceObserver {
 public:
  explicit Window(const QorviViewPlugin::Functions& views) : m_views(views) {}
  ~Window() override {
    CViewGroupManager::Instance().Stop();  // nothing is called back from here on
    CViewGroupManager::Instance().SetDownloadStatusCallback({});
    BizShared::CUserCommonManager::Instance().Logout();
  }

  bool LogIn(const QStringList& arguments) {
    Vant::Base::Error::ErrorCode error;
    const std::string password = qgetenv("VIEWS_PASSWORD").toStdString();
    BizShared::CNetCommManager::Instance().SetServer(arguments.value(1).toStdString());
    if (!BizShared::CUserCommonManager::Instance().Login(arguments.value(2).toStdString(), password, "events", error)) {
      std::cerr << "No login: " << ErrorText::GetErrorInfoByErrorCode(error) << std::endl;
      return false;
    }
    CViewGroupManager::Instance().SetDownloadStatusCallback([this](const DownloadStatus& status) {
      QMetaObject::invokeMethod(
          this, [this, status] { OnStatus(status); }, Qt::QueuedConnection);
    });
    CViewGroupManager::Instance().Start();
    return true;
  }

 private:
  void OnStatus(const DownloadStatus& status) {
    if (status.state == ResourceStore::DownloadState::Failing)
      std::cout << "Waiting: " << ErrorText::GetErrorInfoByErrorCode(status.error) << std::endl;
    if (status.state != ResourceStore::DownloadState::Ready || m_isLoaded) return;
    std::string response;
    m_isLoaded = m_views.IsInitViewGroupFinish("", response) && m_views.IsInitViewFinish("", response);
    if (m_isLoaded) OnLoaded();
  }

  void OnLoaded() {
    std::string response;
    m_views.GetPlansInGroup(R"({"GroupID":"-1","Type":0})", response);
    std::cout << "Views " << response << std::endl;
    m_views.ViewRegisterResourceUpdate(this, R"({"ResourceType":16001,"ID":"-1","IsRegister":true})");
    std::cout << "Waiting for a change" << std::endl;
  }

  // On a thread of the platform's: the notice is copied and goes on in the loop, where everything may be called.
  void UpdateResourceInfos(const Param& notice) override {
    QMetaObject::invokeMethod(
        this, [this, notice] { OnNotice(notice); }, Qt::QueuedConnection);
  }

  void OnNotice(const Param& notice) {
    std::string response;
    m_views.GetPlanGroups(R"({"ParentID":"-1","GroupType":0})", response);
    std::cout << "Heard of " << notice.child_id << ", now " << response << std::endl;
    QCoreApplication::quit();
  }

  const QorviViewPlugin::Functions& m_views;
  bool m_isLoaded = false;
};

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  QLibrary library(QCoreApplication::applicationDirPath() + "/QorviViewPlugin");
  if (!library.load()) library.setFileName("QorviViewPlugin");
  QorviViewPlugin::Functions views;
  if (const char* missing = views.Load([&](const char* name) { return library.resolve(name); })) {
    std::cerr << library.errorString().toStdString() << " (no function " << missing << ")" << std::endl;
    return 1;
  }
  Window window(views);
  QTimer::singleShot(60000, &application, [] { QCoreApplication::exit(1); });
  return window.LogIn(application.arguments()) ? application.exec() : 1;
}
