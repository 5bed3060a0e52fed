// SPDX-License-Identifier: Apache-2.0
#include "server/ViewServer.h"

#include <SQLiteCpp/Exception.h>

#include <stdexcept>

#include "base/Mutex.h"
#include "server/api/Api.h"
#include "server/faults/FaultHandler.h"
#include "server/http/HttpServer.h"
#include "server/login/Secrets.h"
#include "server/site/SeedFile.h"
#include "server/site/Site.h"
#include "server/store/FileLock.h"

namespace server {

class ViewServer::Impl {
 public:
  explicit Impl(const ViewServerOptions& options)
      : m_options(Checked(options)),
        m_lock(options.dataFile),
        m_site(options.dataFile, options.keepChanges, SecondsNow),
        m_api(m_site) {
    if (!options.seedFile.empty()) m_site.Apply(ReadSeed(options.seedFile));
    if (!options.faultsFile.empty()) {
      m_faults = std::make_unique<FaultHandler>(m_api, options.faultsFile, [this](const std::string& userName) {
        const std::optional<User> user = m_site.FindUser(userName);
        return user ? m_site.OpenSession(user->id, "colleague") : std::string();
      });
    }
    if (!m_site.HasUsers()) {
      m_firstPassword = MakePassword();
      m_site.AddUser("admin", HashPassword(*m_firstPassword));
    }
  }

  static const ViewServerOptions& Checked(const ViewServerOptions& options) {
    InitSecrets();
    if (options.tlsCertFile.empty() != options.tlsKeyFile.empty()) {
      throw std::runtime_error("TLS needs both a certificate and a key");
    }
    return options;
  }

  const ViewServerOptions m_options;
  const FileLock m_lock;
  Site m_site;
  Api m_api;
  std::unique_ptr<FaultHandler> m_faults;  // between network and API, if there is a plan
  base::Mutex m_mutex;
  std::unique_ptr<HttpServer> m_http GUARDED_BY(m_mutex);
  std::optional<std::string> m_firstPassword GUARDED_BY(m_mutex);
};

ViewServer::ViewServer(const ViewServerOptions& options) try : m_impl(std::make_unique<Impl>(options)) {
} catch (const FileInUse& e) {
  throw StoreInUse(e.what());
} catch (const SQLite::Exception& e) {
  throw std::runtime_error("cannot use " + options.dataFile + ": " + e.what());
}

ViewServer::~ViewServer() {
  Stop();
}

void ViewServer::Start() {
  const base::MutexLock lock(m_impl->m_mutex);
  if (m_impl->m_http) return;
  HttpSettings settings;
  settings.host = m_impl->m_options.listenHost;
  settings.port = m_impl->m_options.listenPort;
  settings.certFile = m_impl->m_options.tlsCertFile;
  settings.keyFile = m_impl->m_options.tlsKeyFile;
  HttpHandler* handler = &m_impl->m_api;
  if (m_impl->m_faults) handler = m_impl->m_faults.get();
  m_impl->m_http = std::make_unique<HttpServer>(settings, *handler);
}

void ViewServer::Stop() {
  std::unique_ptr<HttpServer> ending;
  const base::MutexLock lock(m_impl->m_mutex);
  ending = std::move(m_impl->m_http);
}

std::string ViewServer::Url() const {
  const std::string& host = m_impl->m_options.listenHost;
  const bool isIpv6 = host.find(':') != std::string::npos;
  return std::string(m_impl->m_options.tlsCertFile.empty() ? "http" : "https") + "://" +
         (isIpv6 ? "[" + host + "]" : host) + ":" + std::to_string(Port());
}

uint16_t ViewServer::Port() const {
  const base::MutexLock lock(m_impl->m_mutex);
  return m_impl->m_http->Port();
}

std::optional<std::string> ViewServer::TakeFirstPassword() {
  const base::MutexLock lock(m_impl->m_mutex);
  return std::exchange(m_impl->m_firstPassword, std::nullopt);
}

bool ViewServer::AddUser(const std::string& name, const std::string& password, std::string& error) {
  error = WhyUnusable(name, password);
  if (error.empty() && !m_impl->m_site.AddUser(name, HashPassword(password))) error = "there is a user of that name";
  return error.empty();
}

bool ViewServer::SetPassword(const std::string& name, const std::string& password, std::string& error) {
  error = WhyUnusable(name, password);
  if (error.empty() && !m_impl->m_site.SetPassword(name, HashPassword(password))) error = "no such user";
  return error.empty();
}

std::optional<LocalSession> ViewServer::OpenLocalSession(const std::string& userName) {
  const std::optional<User> user = m_impl->m_site.FindUser(userName);
  if (!user) return std::nullopt;
  return LocalSession{m_impl->m_site.OpenSession(user->id, "local"), user->id, user->name};
}

}  // namespace server
