// SPDX-License-Identifier: Apache-2.0
// The HTTP side alone, with a handler of the tests' own.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "../Gate.h"
#include "TestClient.h"
#include "base/Mutex.h"
#include "server/http/HttpHandler.h"
#include "server/http/HttpServer.h"

namespace server::test {

class Endless : public BodySource {
 public:
  std::optional<uint64_t> Length() const override { return uint64_t{1} << 40; }
  bool Next(std::string& chunk) override {
    chunk.assign(1 << 16, 'x');
    return true;
  }
};

class OneEvent : public EventSource {
 public:
  bool Take(std::vector<Text>& events) override {
    if (!m_given) events.push_back(std::make_shared<std::string>("data: first\n\n"));
    m_given = true;
    return true;
  }
  bool KeepAlive() override { return ++m_heartbeats < 3; }
  void OnReady(std::function<void()>) override {}

 private:
  bool m_given = false;
  int m_heartbeats = 0;
};

// Answers with what it was asked; some paths do something else.
class Echo : public HttpHandler {
 public:
  HttpReply Handle(const HttpRequest& request) override {
    HttpReply reply;
    reply.body = request.method + "|" + request.path + "|" + request.query + "|" + request.token + "|" +
                 (request.body.size() > 100 ? std::to_string(request.body.size()) : request.body);
    if (request.path == "/endless") reply.source = std::make_shared<Endless>();
    if (request.path == "/events") reply.events = std::make_shared<OneEvent>();
    if (request.path == "/slow") {
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
      ++slowAnswers;
    }
    if (request.path == "/late") reply.delay = std::chrono::milliseconds(200);
    if (request.path == "/peer") reply.body = request.peer;
    if (request.query == "hold") m_gate.Pass();
    if (request.path == "/login") NoteLogin(request.peer);
    return reply;
  }
  uint64_t BodyLimit(const HttpRequest& request) override { return request.token.empty() ? 0 : 1 << 20; }
  Lane LaneOf(const HttpRequest& request) override {
    return request.path == "/slow" || request.path == "/large" ? Lane::kLargeBody
           : request.path == "/login"                          ? Lane::kLogin
                                                               : Lane::kQuick;
  }
  HttpReply Refused(const Refusal& refusal) override {
    static const std::map<int, std::string> texts{
        {400, "malformed"}, {413, "too large"}, {429, "too many"}, {501, "unknown coding"}, {503, "no memory"}};
    const bool isBusy = refusal.retryAfter > 0;
    return {refusal.httpStatus, {}, isBusy ? "busy" : texts.at(refusal.httpStatus), nullptr, nullptr, {}, {}};
  }
  int32_t UserOf(const HttpRequest& request) override {
    return request.token.rfind("user", 0) == 0 ? std::stoi(request.token.substr(4)) : kNobody;
  }

  testing_support::Gate& Held() { return m_gate; }  // passed by the one request with "?hold"
  std::vector<std::string> Logins() {               // the peers, in the order of their answers
    const base::MutexLock lock(m_mutex);
    return m_logins;
  }

  std::atomic<int> slowAnswers{0};

 private:
  void NoteLogin(const std::string& peer) {
    const base::MutexLock lock(m_mutex);
    m_logins.push_back(peer);
  }

  testing_support::Gate m_gate;
  base::Mutex m_mutex;
  std::vector<std::string> m_logins GUARDED_BY(m_mutex);
};

// The field of who is a user for it.
inline std::string As(int user) {
  return Bearer("user" + std::to_string(user));
}

// In tables of texts they stand as "\r\n".
inline std::string WithLineEnds(std::string text) {
  for (size_t at = 0; (at = text.find("\\r\\n", at)) != std::string::npos;) text.replace(at, 4, "\r\n");
  return text;
}

template <class Handler>
class HttpSideTest : public ::testing::Test {
 protected:
  HttpSideTest() {
    settings.host = "127.0.0.1";
    settings.maxConnections = 20;
    settings.maxConnectionsPerUser = 3;
  }
  void Serve() { server = std::make_unique<HttpServer>(settings, handler); }

  HttpSettings settings;
  Handler handler;
  std::unique_ptr<HttpServer> server;
};

}  // namespace server::test
