// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>
#include <memory>
#include <optional>

#include "host/Connection.h"
#include "host/Failure.h"
#include "host/Plugin.h"
#include "host/Terminal.h"
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
  Client(const GlobalOptions& options, Texts texts)
      : m_plugin(options.plugin), m_connection(options), m_limit(options.timeout) {
    Begin(texts);
  }
  // Over a server that runs in this process.
  Client(const GlobalOptions& options, std::unique_ptr<server::ViewServer> server, Texts texts)
      : m_plugin(options.plugin), m_connection(std::move(server), options.user), m_limit(options.timeout) {
    Begin(texts);
  }
  ~Client() {
    m_connection.StopDownload();
    m_plugin.Ask("UnInitEnvir");
    if (m_translation) QCoreApplication::removeTranslator(&*m_translation);
  }

  // Waits for the first load, as long as the options say. Answers whether it came.
  bool TryLoad() const { return m_plugin.LoadViews(m_limit); }
  // The same; throws Failure kNoConnection, which says what it was waiting for, when the load does not come.
  void Load() const {
    if (TryLoad()) return;
    throw Failure(kNoConnection, "Waiting for the server: " + Connection::WhatIsAwaited() + " (given up after " +
                                     Counted(static_cast<size_t>(m_limit.count()), "second") + ")");
  }

  const Plugin& Functions() const { return m_plugin; }
  Connection& Server() { return m_connection; }

 private:
  void Begin(Texts texts) {
    if (texts == Texts::kTranslated) QCoreApplication::installTranslator(&m_translation.emplace());
    m_plugin.Ask("InitEnvir");
  }

  Plugin m_plugin;
  Connection m_connection;
  const std::chrono::seconds m_limit;
  std::optional<Translation> m_translation;
};

}  // namespace host
