// SPDX-License-Identifier: Apache-2.0
// The reference management server, to run inside a process. `viewserver` is this class with a command line.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "server/http/HttpSettings.h"

namespace server {

struct ViewServerOptions {
  std::string dataFile;  // SQLite database, made when absent; ":memory:" keeps nothing
  std::string listenHost = "127.0.0.1";
  uint16_t listenPort = 0;                         // 0 lets the kernel pick
  std::string seedFile;                            // applied by ID at start; empty: none
  std::string tlsCertFile, tlsKeyFile;             // both empty: plain HTTP
  uint64_t keepChanges = 100000;                   // how many changes are kept for clients that reconnect
  uint64_t keepChangeBytes = uint64_t{256} << 20;  // and how many bytes of them
  std::string faultsFile;                          // a fault plan; empty: none
  // An edit waits so long for another process that holds the store, and is answered 503 then. The rest of two seconds
  // is for the way.
  std::chrono::milliseconds editPatience{1000};
  HttpLimits limits;
  std::vector<std::string> trustedProxies;  // addresses whose X-Forwarded-For says who asks
  std::string accessLog;                    // a file, "-" for stderr; empty: none
};

// A session made without a password, for the process that owns the server.
struct LocalSession {
  std::string token;
  int32_t userId = -1;
  std::string userName;
};

// All operations may be called from any thread; the server runs on threads of its own between Start and Stop.
class ViewServer {
 public:
  // Opens the store and applies the seed. Throws std::runtime_error with one plain line when the store, the seed or
  // the options are not usable.
  explicit ViewServer(const ViewServerOptions& options);
  ~ViewServer();  // stops

  // Listens and serves. Throws std::runtime_error when the address cannot be used.
  void Start();
  // Ends all connections and joins the threads; harmless when not started.
  void Stop();

  std::string Url() const;  // "http://HOST:PORT"; REQUIRES: started
  uint16_t Port() const;    // REQUIRES: started

  // The password made for `admin` when the store had no users, else nothing. Given once.
  std::optional<std::string> TakeFirstPassword();

  // Adds a user or sets the password of an existing one; false and `error` when the name or password is not usable
  // (name empty, over 256 code points or with control characters; password empty).
  bool AddUser(const std::string& name, const std::string& password, std::string& error);
  bool SetPassword(const std::string& name, const std::string& password, std::string& error);
  // A token for that user without a password; nothing when there is no such user. Throws std::runtime_error where the
  // store cannot be written.
  std::optional<LocalSession> OpenLocalSession(const std::string& userName);

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace server
