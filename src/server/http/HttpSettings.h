// SPDX-License-Identifier: Apache-2.0
// How the server of HTTP requests is set up, and what it grants its clients.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace server {

// What a site may want otherwise. A "stranger" is a connection over which no session has been used yet. Strangers are
// counted by address, an IPv6 one by its first 64 bits; those of a trusted proxy together only.
struct HttpLimits {
  size_t maxConnections = 8192;  // each takes a file descriptor; strangers may have three quarters of them
  size_t maxConnectionsPerUser = 256;
  size_t maxStrangersPerAddress = 1024;
  // Heads and bodies that are being received or worked on. Nobody may hold more of it than they leave free.
  uint64_t maxBodyBytes = uint64_t{144} << 20;
  // Of an address there may be as many as a site starts at once behind one proxy.
  size_t maxWaitingLogins = 4096, maxWaitingLoginsPerAddress = 256;
  // Those above the lane's size. A user may be several programs, each of which sends some at once.
  size_t maxWaitingBodies = 128, maxWaitingBodiesPerUser = 32;
  bool compresses = true;  // what clients read, where they ask for that
};

struct HttpSettings : HttpLimits {
  std::string host;
  uint16_t port = 0;
  std::string certFile, keyFile;            // both empty: plain HTTP
  std::vector<std::string> trustedProxies;  // addresses whose X-Forwarded-For counts
  std::string accessLog;                    // a file, "-" for stderr; empty: none
  int threads = 2;
  int loginThreads = 2;
  int bodyThreads = 1;
  // Each of four: the TLS handshake, the first byte of a connection, a request's head, a request's body. The body gets
  // a second more for each 100 KiB of it that have come.
  std::chrono::seconds readTimeout{30};
  std::chrono::seconds idleTimeout{120};       // between requests
  std::chrono::seconds writeTimeout{30};       // for a piece of a reply, plus a second for each 100 KiB of it
  std::chrono::milliseconds heartbeat{15000};  // of an event stream
  std::chrono::seconds lastAnswers{10};        // to edits that were taken before the server ends
};

}  // namespace server
