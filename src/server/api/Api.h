// SPDX-License-Identifier: Apache-2.0
// The paths of the server: which request is which operation of the site, and how its outcome is written.
#pragma once

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
  HttpReply AnswerMalformed() override;
  HttpReply AnswerUnknownCoding() override;
  HttpReply AnswerTooLarge() override;
  HttpReply AnswerTooMany() override;
  HttpReply AnswerBusy() override;
  HttpReply AnswerNoMemory() override;

 private:
  struct Exchange;  // one request on its way: who asks, and the id in its path
  struct Route;
  static const Route kRoutes[];
  const Route& FindRoute(const HttpRequest& request, Exchange& exchange) const;
  HttpReply Answer(const HttpRequest& request);

  HttpReply Login(const Exchange& exchange);
  HttpReply Logout(const Exchange& exchange);
  HttpReply ListViews(const Exchange& exchange);
  HttpReply ListGroups(const Exchange& exchange);
  HttpReply Changes(const Exchange& exchange);
  HttpReply AddView(const Exchange& exchange);
  HttpReply ReplaceView(const Exchange& exchange);
  HttpReply DeleteView(const Exchange& exchange);
  HttpReply MoveViews(const Exchange& exchange);
  HttpReply ShareView(const Exchange& exchange);
  HttpReply AddGroup(const Exchange& exchange);
  HttpReply ReplaceGroup(const Exchange& exchange);
  HttpReply DeleteGroup(const Exchange& exchange);
  HttpReply MoveGroups(const Exchange& exchange);
  HttpReply GetDefaultView(const Exchange& exchange);
  HttpReply SetDefaultView(const Exchange& exchange);
  HttpReply ListUsers(const Exchange& exchange);
  HttpReply ListElements(const Exchange& exchange);
  HttpReply ListAreas(const Exchange& exchange);

  Site& m_site;
  LoginGuard m_guard;
};

}  // namespace server
