// SPDX-License-Identifier: Apache-2.0
#include "host/Connection.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <cerrno>
#include <fstream>

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "ErrorText/ErrorText.h"
#include "ResourceStore/ViewGroupManager.h"
#include "host/Failure.h"
#include "host/Terminal.h"

namespace host {
namespace {

std::string FirstLine(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string line;
  if (!stream || (!std::getline(stream, line) && stream.bad())) {
    throw Failure(kUsage, "The password file " + file + " cannot be read");
  }
  while (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

std::string Password(const GlobalOptions& options) {
  if (!options.passwordFile.empty()) return FirstLine(options.passwordFile);
  if (!qEnvironmentVariableIsSet("VIEWCTL_PASSWORD")) {
    throw Failure(kUsage, "The server wants a password: set VIEWCTL_PASSWORD or give --password-file FILE");
  }
  return qgetenv("VIEWCTL_PASSWORD").toStdString();
}

}  // namespace

std::string StoreFile(const std::string& dataDir) {
  const QString folder = dataDir.empty() ? QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation)
                                         : QString::fromStdString(dataDir);
  const QDir dir(folder);
  if (!dir.exists()) {
    if (!dir.mkpath(".")) throw Failure(kUsage, "The folder " + folder.toStdString() + " cannot be made");
    // The store holds password hashes and session tokens.
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  }
  return dir.filePath("views.db").toStdString();
}

std::unique_ptr<server::ViewServer> StartEmbeddedServer(
    const server::ViewServerOptions& options, const std::function<void(const std::string& password)>& tellPassword) {
  try {
    auto server = std::make_unique<server::ViewServer>(options);
    if (const auto password = server->TakeFirstPassword()) tellPassword(*password);
    server->Start();
    return server;
  } catch (const std::runtime_error& error) {
    throw Failure(kNoConnection, error.what());
  }
}

Connection::Connection(const GlobalOptions& options) {
  if (options.server.empty()) {
    server::ViewServerOptions embedded;
    embedded.dataFile = StoreFile(options.dataDir);
    m_server = StartEmbeddedServer(embedded, [](const std::string& password) {
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
  if (status.systemError == ECONNREFUSED) return "connection refused";
  return ErrorText::GetErrorInfoByErrorCode(status.error);
}

void Connection::Login(const GlobalOptions& options) {
  const std::string password = Password(options);
  BizShared::CNetCommManager::Instance().SetServer(options.server, options.caFile);
  Vant::Base::Error::ErrorCode error;
  if (!BizShared::CUserCommonManager::Instance().Login(options.user, password, "viewctl", error)) {
    const std::string reason = ErrorText::GetErrorInfoByErrorCode(error);
    throw Failure(kNoConnection, "No login as " + options.user + " at " + options.server + ": " + reason);
  }
}

void Connection::OpenLocally(const std::string& user) {
  const auto session = m_server->OpenLocalSession(user);
  if (!session) throw Failure(kNoConnection, "The embedded server has no user " + user);
  BizShared::CNetCommManager::Instance().SetServer(m_server->Url());
  BizShared::CNetCommManager::Instance().SetToken(session->token);
  BizShared::CUserCommonManager::Instance().SetUser(session->userId, session->userName);
}

}  // namespace host
