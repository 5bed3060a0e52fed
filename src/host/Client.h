// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>
#include <memory>
#include <optional>

#include "host/Connection.h"
#include "host/Failure.h"
#include "host/Plugin.h"
#include "host/Translation.h"

namespace host {

enum class Texts {
  kTranslated,  // for people
  kAsKeys,      // as the plugin answers without a translator, for programs
};

// A host at work: the plugin loaded, a connection made, the download started. Observers handed to the plugin must
// outlive it.
class Client {
 public:
  // Throws Failure.
  Client(const GlobalOptions& options, Texts texts) : m_plugin(options.plugin), m_connection(options) { Begin(texts); }
  // Over a server that runs in this process.
  Client(const GlobalOptions& options, std::unique_ptr<server::ViewServer> server, Texts texts)
      : m_plugin(options.plugin), m_connection(std::move(server), options.user) {
    Begin(texts);
  }
  ~Client() {
    m_connection.StopDownload();
    m_plugin.Ask("UnInitEnvir");
    if (m_translation) QCoreApplication::removeTranslator(&*m_translation);
  }

  // Waits for the first load, 10 s at most. Throws Failure kNoConnection when it does not come.
  void Load() {
    if (!m_plugin.LoadViews(kLoadLimit)) {
      throw Failure(kNoConnection, "The server's views were not loaded within 10 seconds");
    }
  }

  const Plugin& Functions() const { return m_plugin; }
  Connection& Server() { return m_connection; }

  static constexpr std::chrono::seconds kLoadLimit{10};

 private:
  void Begin(Texts texts) {
    if (texts == Texts::kTranslated) QCoreApplication::installTranslator(&m_translation.emplace());
    m_plugin.Ask("InitEnvir");
  }

  Plugin m_plugin;
  Connection m_connection;
  std::optional<Translation> m_translation;
};

}  // namespace host
