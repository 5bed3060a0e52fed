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
  // For the first byte of a connection, for the head of a request and for its body, for the latter plus a second for
  // each 100 KiB of it.
  std::chrono::seconds readTimeout{30};
  std::chrono::seconds idleTimeout{120};       // between requests
  std::chrono::seconds writeTimeout{30};       // for a piece of a reply, plus a second for each 100 KiB of it
  std::chrono::milliseconds heartbeat{15000};  // of an event stream
};

}  // namespace server
