// SPDX-License-Identifier: Apache-2.0
// How the server of HTTP requests is set up, and what it grants its clients.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace server {

struct HttpSettings {
  std::string host;
  uint16_t port = 0;
  std::string certFile, keyFile;  // both empty: plain HTTP
  int threads = 2;
  int slowThreads = 2;
  size_t maxConnections = 8192;
  size_t maxConnectionsPerUser = 256;
  // Each of four: the TLS handshake, the first byte of a connection, a request's head, a request's body. The body gets
  // a second more for each 100 KiB.
  std::chrono::seconds readTimeout{30};
  std::chrono::seconds idleTimeout{120};       // between requests
  std::chrono::seconds writeTimeout{30};       // for a piece of a reply, plus a second for each 100 KiB of it
  std::chrono::milliseconds heartbeat{15000};  // of an event stream
};

}  // namespace server
