// SPDX-License-Identifier: Apache-2.0
// The server of HTTP requests, whoever answers them.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "server/http/HttpHandler.h"

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

// Serves from its construction to its destruction, on threads of its own. The handler must outlive it. Where memory
// runs out, requests and connections may fail, but the server goes on.
class HttpServer {
 public:
  // Throws std::runtime_error with one plain line when address, certificate or key cannot be used.
  HttpServer(const HttpSettings& settings, HttpHandler& handler);
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  uint16_t Port() const;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace server
