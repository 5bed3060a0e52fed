// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/Options.h"
#include "server/ViewServer.h"

namespace host {

// A running server inside this process. The password made for the user `admin` of a new store goes to `tellPassword`,
// even where the server then cannot start: it is not to be had again. Throws Failure kNoConnection when the store, the
// seed or the address cannot be used.
std::unique_ptr<server::ViewServer> StartEmbeddedServer(
    const server::ViewServerOptions& options, const std::function<void(const std::string& password)>& tellPassword);

// The store's file in `dataDir` (empty: below the user's data directory), whose folder is made when it is not there.
// Throws Failure kUsage when it cannot be made.
std::string StoreFile(const std::string& dataDir);

// The platform of this process connected with a server and logged in. There can be one at a time, because the platform
// is one per process.
class Connection {
 public:
  // Connects as the options say, logs in and starts the download. Throws Failure: kUsage when no password was given or
  // it cannot be read, kNoConnection when there is no server or no login.
  explicit Connection(const GlobalOptions& options);
  // The same for a server that runs in this process, as `user`, without a password.
  Connection(std::unique_ptr<server::ViewServer> server, const std::string& user);
  // Logs out and ends the embedded server.
  ~Connection();

  // Ends the download: no change is called back any more once it returns. Harmless when repeated.
  void StopDownload();

  // What the download is waiting for at the moment, in words: "connection refused", "its views are still on their way".
  static std::string WhatIsAwaited();

  // Null when the server is not ours.
  server::ViewServer* EmbeddedServer() { return m_server.get(); }

 private:
  void Login(const GlobalOptions& options);
  void OpenLocally(const std::string& user);

  std::unique_ptr<server::ViewServer> m_server;
};

}  // namespace host
