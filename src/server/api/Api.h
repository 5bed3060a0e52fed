// SPDX-License-Identifier: Apache-2.0
// The paths of the server: which request is which operation of the site, and how its outcome is written.
#pragma once

#include <functional>
#include <string_view>

#include "server/http/HttpHandler.h"
#include "server/login/LoginGuard.h"
#include "server/site/Site.h"

namespace server {

constexpr std::string_view kRoot = "/NXAPI/Vantorel/Platform/";  // of all paths
constexpr uint64_t kMaxBody = uint64_t{64} << 20;

class Api : public HttpHandler {
 public:
  explicit Api(Site& site) : m_site(site) {}

  HttpReply Handle(const HttpRequest& request) override;
  uint64_t BodyLimit(const HttpRequest& request) override;
  Lane LaneOf(const HttpRequest& request) override;
  int32_t UserOf(const HttpRequest& request) override;
  HttpReply Refused(const Refusal& refusal) override;

 private:
  HttpReply Answer(const HttpRequest& request);

  Site& m_site;
  LoginGuard m_guard;
};

}  // namespace server
