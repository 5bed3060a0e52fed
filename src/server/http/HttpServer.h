// SPDX-License-Identifier: Apache-2.0
// The server of HTTP requests, whoever answers them.
#pragma once

#include <cstdint>
#include <memory>

#include "server/http/HttpHandler.h"
#include "server/http/HttpSettings.h"

namespace server {

// Serves from its construction to its destruction, on threads of its own. Its end waits for the answers to edits that
// it has taken. The handler must outlive it. Where memory runs out, requests and connections may fail, but the server
// goes on.
class HttpServer {
 public:
  // Throws std::runtime_error with one plain line when address, certificate or key cannot be used.
  HttpServer(const HttpSettings& settings, HttpHandler& handler);
  ~HttpServer();

  uint16_t Port() const;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace server
