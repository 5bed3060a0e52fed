// SPDX-License-Identifier: Apache-2.0
#include "server/ViewServer.h"

#include <SQLiteCpp/Exception.h>

#include <cstdio>
#include <stdexcept>

#include "base/Mutex.h"
#include "server/api/Api.h"
#include "server/faults/FaultHandler.h"
#include "server/http/HttpServer.h"
#include "server/login/Secrets.h"
#include "server/site/SeedFile.h"
#include "server/site/Site.h"
#include "server/site/SiteWatch.h"
#include "server/store/FileLock.h"

namespace server {

class ViewServer::Impl {
 public:
  explicit Impl(const ViewServerOptions& options)
      : m_options(Checked(options)),
        m_lock(options.dataFile),
        m_site(options.dataFile, {options.keepChanges, options.keepChangeBytes}, SecondsNow, options.editPatience),
        m_api(m_site) {
    Tell(m_site.FoundAtStart());
    m_site.FollowAccounts();  // before a seed may give the number of a deleted user again
    if (!options.seedFile.empty()) m_site.Apply(ReadSeed(options.seedFile));
    if (!options.faultsFile.empty()) {
      m_faults = std::make_unique<FaultHandler>(m_api, options.faultsFile, [this](const std::string& userName) {
        const std::optional<User> user = m_site.FindUser(userName);
        return user ? OpenSession(*user, "colleague") : std::string();
      });
    }
    if (!m_site.HasUsers()) {
      m_firstPassword = MakePassword();
      Make([hash = HashPassword(*m_firstPassword)](Editor& editor) { editor.AddUser("admin", hash); });
    }
  }

  static const ViewServerOptions& Checked(const ViewServerOptions& options) {
    InitSecrets();
    if (options.tlsCertFile.empty() != options.tlsKeyFile.empty()) {
      throw std::runtime_error("TLS needs both a certificate and a key");
    }
    return options;
  }

  // Each on a line of stderr, which is the log.
  void Tell(const Findings& findings) const {
    const char* const file = m_options.dataFile.c_str();
    for (const std::string& line : findings.Lines()) std::fprintf(stderr, "viewserver: %s: %s\n", file, line.c_str());
    const size_t rest = findings.Count() - findings.Lines().size();
    if (rest > 0) std::fprintf(stderr, "viewserver: %s: and %zu more; `viewserver check` tells all\n", file, rest);
  }

  // Throws std::runtime_error where the store cannot be written.
  void Make(const std::function<void(Editor&)>& edit) {
    try {
      m_site.Make(edit);
    } catch (const Refusal& refusal) {
      throw std::runtime_error(refusal.detail);
    }
  }

  std::string OpenSession(const User& user, const std::string& client) {
    std::string token;
    Make([&](Editor& editor) { token = editor.OpenSession(user.id, client); });
    return token;
  }

  // Why a user could not be added or changed; `edit` answers false for `why`.
  std::string TryUser(const char* why, const std::function<bool(Editor&)>& edit) {
    try {
      bool isDone = false;
      m_site.Make([&](Editor& editor) { isDone = edit(editor); });
      return isDone ? "" : why;
    } catch (const Refusal& refusal) {
      return refusal.detail;
    }
  }

  const ViewServerOptions m_options;
  const FileLock m_lock;
  Site m_site;
  Api m_api;
  std::unique_ptr<FaultHandler> m_faults;  // between network and API, if there is a plan
  base::Mutex m_mutex;
  std::unique_ptr<SiteWatch> m_watch GUARDED_BY(m_mutex);
  std::unique_ptr<HttpServer> m_http GUARDED_BY(m_mutex);
  std::optional<std::string> m_firstPassword GUARDED_BY(m_mutex);
};

ViewServer::ViewServer(const ViewServerOptions& options) try : m_impl(std::make_unique<Impl>(options)) {
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
  static_cast<HttpLimits&>(settings) = m_impl->m_options.limits;
  settings.trustedProxies = m_impl->m_options.trustedProxies;
  settings.accessLog = m_impl->m_options.accessLog;
  settings.host = m_impl->m_options.listenHost;
  settings.port = m_impl->m_options.listenPort;
  settings.certFile = m_impl->m_options.tlsCertFile;
  settings.keyFile = m_impl->m_options.tlsKeyFile;
  HttpHandler* handler = &m_impl->m_api;
  if (m_impl->m_faults) handler = m_impl->m_faults.get();
  auto http = std::make_unique<HttpServer>(settings, *handler);
  m_impl->m_watch = std::make_unique<SiteWatch>(m_impl->m_site);
  m_impl->m_http = std::move(http);
}

void ViewServer::Stop() {
  std::unique_ptr<HttpServer> ending;
  const base::MutexLock lock(m_impl->m_mutex);
  m_impl->m_watch.reset();
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
  if (!error.empty()) return false;
  const std::string hash = HashPassword(password);
  error = m_impl->TryUser("there is a user of that name", [&](Editor& editor) { return editor.AddUser(name, hash); });
  return error.empty();
}

bool ViewServer::SetPassword(const std::string& name, const std::string& password, std::string& error) {
  error = WhyUnusable(name, password);
  if (!error.empty()) return false;
  const std::string hash = HashPassword(password);
  error = m_impl->TryUser("no such user", [&](Editor& editor) { return editor.SetPassword(name, hash); });
  return error.empty();
}

std::optional<LocalSession> ViewServer::OpenLocalSession(const std::string& userName) {
  const std::optional<User> user = m_impl->m_site.FindUser(userName);
  if (!user) return std::nullopt;
  return LocalSession{m_impl->OpenSession(*user, "local"), user->id, user->name};
}

}  // namespace server
