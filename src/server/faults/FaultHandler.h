// SPDX-License-Identifier: Apache-2.0
// Stands between the network and the API and lets exchanges and change streams go wrong as a fault plan says. All that
// goes wrong on purpose goes wrong here; each fault is told in one line on stderr.
#pragma once

#include <boost/asio/thread_pool.hpp>
#include <functional>
#include <string>

#include "server/faults/FaultPlan.h"
#include "server/http/HttpHandler.h"

namespace server {

class FaultHandler : public HttpHandler {
 public:
  // Gives a token of that user; empty where there is none.
  using OpenSession = std::function<std::string(const std::string& userName)>;

  // Throws std::runtime_error with one plain line when the plan cannot be used. `inner` must outlive it.
  FaultHandler(HttpHandler& inner, const std::string& planFile, OpenSession openSession);
  ~FaultHandler() override;

  HttpReply Handle(const HttpRequest& request) override;
  uint64_t BodyLimit(const HttpRequest& request) override { return m_inner.BodyLimit(request); }
  Lane LaneOf(const HttpRequest& request) override { return m_inner.LaneOf(request); }
  int32_t UserOf(const HttpRequest& request) override { return m_inner.UserOf(request); }
  HttpReply Refused(const Refusal& refusal) override { return m_inner.Refused(refusal); }

 private:
  class Events;
  void EditAsColleague(const FaultPlan::Hit& hit);

  HttpHandler& m_inner;
  FaultPlan m_plan;
  const OpenSession m_openSession;
  boost::asio::thread_pool m_timers{1};
};

}  // namespace server
