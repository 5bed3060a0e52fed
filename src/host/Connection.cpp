// SPDX-License-Identifier: Apache-2.0
#include "host/Connection.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <cerrno>

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "ErrorText/ErrorText.h"
#include "ResourceStore/ViewGroupManager.h"
#include "host/Failure.h"
#include "host/LoginAdvice.h"
#include "host/Password.h"
#include "host/Terminal.h"

namespace host {
namespace {

QString StoreFolder(const std::string& dataDir) {
  return dataDir.empty() ? QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation)
                         : QString::fromStdString(dataDir);
}

// Where nothing may be made, a store that is not there is an empty one.
std::string StoreToOpen(const GlobalOptions& options) {
  const std::string path = StorePath(options.dataDir);
  if (options.makesNoStore && !QFile::exists(QString::fromStdString(path))) return ":memory:";
  return StoreFile(options.dataDir);
}

}  // namespace

std::string StorePath(const std::string& dataDir) {
  return QDir(StoreFolder(dataDir)).filePath("views.db").toStdString();
}

std::string StoreFile(const std::string& dataDir) {
  const QString folder = StoreFolder(dataDir);
  const QDir dir(folder);
  if (!dir.exists()) {
    if (!dir.mkpath(".")) {
      throw Failure(kUsage, "The folder " + folder.toStdString() + " cannot be made; name another one with --data");
    }
    // The store holds password hashes and session tokens.
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  }
  return StorePath(dataDir);
}

std::unique_ptr<server::ViewServer> StartEmbeddedServer(
    const server::ViewServerOptions& options, const std::function<void(const std::string& password)>& tellPassword) {
  try {
    auto server = std::make_unique<server::ViewServer>(options);
    if (const auto password = server->TakeFirstPassword()) tellPassword(*password);
    server->Start();
    return server;
  } catch (const server::StoreInUse&) {
    throw Failure(kNoConnection,
                  "The store " + options.dataFile +
                      " is being served by another program: give that one's address with --server, or end "
                      "it first");
  } catch (const std::runtime_error& error) {
    throw Failure(kNoConnection, error.what());
  }
}

Connection::Connection(const GlobalOptions& options) {
  if (options.server.empty()) {
    server::ViewServerOptions embedded;
    embedded.dataFile = StoreToOpen(options);
    m_server = StartEmbeddedServer(embedded, [&](const std::string& password) {
      if (embedded.dataFile == ":memory:") return;
      Say("A new store was made. User admin, password " + password + " (shown this once)");
    });
    OpenLocally(options.user);
  } else {
    Login(options);
  }
  ResourceStore::CViewGroupManager::Instance().Start();
}

Connection::Connection(std::unique_ptr<server::ViewServer> server, const std::string& user)
    : m_server(std::move(server)) {
  OpenLocally(user);
  ResourceStore::CViewGroupManager::Instance().Start();
}

Connection::~Connection() {
  StopDownload();
  BizShared::CUserCommonManager::Instance().Logout();
  BizShared::CNetCommManager::Instance().SetToken({});
}

void Connection::StopDownload() {
  ResourceStore::CViewGroupManager::Instance().Stop();
}

std::string Connection::WhatIsAwaited() {
  const auto status = ResourceStore::CViewGroupManager::Instance().GetDownloadStatus();
  switch (status.state) {
    case ResourceStore::DownloadState::NotStarted:
      return "the download was not started";
    case ResourceStore::DownloadState::Connecting:
      return "it has not answered yet";
    case ResourceStore::DownloadState::Downloading:
      return "its views are still on their way";
    case ResourceStore::DownloadState::Ready:
      return "its views are there and being loaded";
    case ResourceStore::DownloadState::Failing:
      break;
  }
  return ReasonOf(status);
}

std::string Connection::ReasonOf(const ResourceStore::DownloadStatus& status) {
  if (status.systemError == ECONNREFUSED) return "connection refused";
  return ErrorText::GetErrorInfoByErrorCode(status.error);
}

void Connection::Login(const GlobalOptions& options) {
  const std::string password = PasswordFor(options);
  BizShared::CNetCommManager::Instance().SetServer(options.server, options.caFile);
  Vant::Base::Error::ErrorCode error;
  if (!BizShared::CUserCommonManager::Instance().Login(options.user, password, "viewctl", error)) {
    const std::string reason = LoginAdvice(error, options);
    throw Failure(kNoConnection, "No login as " + options.user + " at " + options.server + ": " + reason);
  }
}

void Connection::OpenLocally(const std::string& user) {
  const auto session = m_server->OpenLocalSession(user);
  if (!session) {
    throw Failure(kNoConnection, "The own server has no user " + user + "; leave --user out to be its admin");
  }
  BizShared::CNetCommManager::Instance().SetServer(m_server->Url());
  BizShared::CNetCommManager::Instance().SetToken(session->token);
  BizShared::CUserCommonManager::Instance().SetUser(session->userId, session->userName);
}

}  // namespace host
