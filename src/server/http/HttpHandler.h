// SPDX-License-Identifier: Apache-2.0
// What a request and a reply are to whoever answers them.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Mutex.h"
#include "server/model/Model.h"
#include "server/model/Refusal.h"

namespace server {

struct HttpRequest {
  std::string method;
  std::string path;     // as it came, without the query
  std::string query;    // as it came, without the "?"
  std::string token;    // of `Authorization: Bearer`, else empty
  std::string peer;     // the address it came from, as a trusted proxy tells it
  std::string network;  // what limits count by: that address, or its first 64 bits where it is an IPv6 one
  std::string body;
};

// A body that is made while it is sent. Used by one thread at a time.
class BodySource {
 public:
  virtual ~BodySource() = default;
  // The bytes of all pieces together. Nothing where only the last piece tells: none of them is empty then.
  virtual std::optional<uint64_t> Length() const = 0;
  // Replaces `chunk` by the next piece; false when there was none left.
  virtual bool Next(std::string& chunk) = 0;
};

// What one listener of an event stream hears. Take and KeepAlive are called by one thread at a time and must not throw.
class EventSource {
 public:
  virtual ~EventSource() = default;
  // Appends the events to send now, maybe none. False: the stream ends.
  virtual bool Take(std::vector<Text>& events) = 0;
  // Whether the last Take left something, so that others might run first.
  virtual bool HasMore() const { return false; }
  // Called whenever a sign of life is sent. False: the stream ends.
  virtual bool KeepAlive() = 0;
  // True: not even signs of life are sent.
  virtual bool IsSilent() const { return false; }
  // `wake` is called, from any thread and with no lock held, when Take would give something new. It does not throw. Set
  // once, before the first Take.
  virtual void OnReady(std::function<void()> wake) = 0;
};

class PendingReply;

struct HttpReply {
  int status = 200;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;                     // JSON; unused where one of the next two is given
  std::shared_ptr<BodySource> source;   // JSON as well
  std::shared_ptr<EventSource> events;  // a stream of events, kept open
  std::chrono::milliseconds delay{0};   // to wait before answering
  std::optional<uint64_t> cut;          // so many bytes are sent, the head's included, and the connection is closed
  std::shared_ptr<PendingReply> pending = nullptr;  // the reply itself, once it is there; all else is unused
};

// A reply that another thread will give. Any thread.
class PendingReply {
 public:
  // The reply once it is there, and never again.
  std::optional<HttpReply> Take();
  HttpReply Wait();
  // `wake` is called when the reply is there, at once where it is there already, as an EventSource's is.
  void OnReady(std::function<void()> wake);
  // What is to be done to the reply before it is taken.
  void Change(std::function<void(HttpReply&)> change);
  void Give(HttpReply reply) noexcept;

 private:
  base::Mutex m_mutex;  // leaf
  base::Condition m_given;
  std::optional<HttpReply> m_reply GUARDED_BY(m_mutex);
  std::function<void()> m_wake GUARDED_BY(m_mutex);
  std::function<void(HttpReply&)> m_change GUARDED_BY(m_mutex);
};

constexpr uint64_t kUsualBody = 64 << 10;

// Who answers a request: the thread of its connection, or one of those that are there for what takes long.
enum class Lane { kQuick, kLogin, kLargeBody };

// Called from several threads at once. Must not throw, but for std::bad_alloc, which costs the connection.
class HttpHandler {
 public:
  virtual ~HttpHandler() = default;
  virtual HttpReply Handle(const HttpRequest& request) = 0;
  // The largest body allowed. Asked before a body is read that is larger than kUsualBody or does not say its length;
  // `request` has none yet. 0: a larger body is refused, and Handle says why. May throw where it cannot tell.
  virtual uint64_t BodyLimit(const HttpRequest& request) = 0;
  // Not kQuick when Handle may take so long that other connections should not wait for it.
  virtual Lane LaneOf(const HttpRequest& request) = 0;
  // Who holds the connection that this came over, kNobody where that is not known. Asked before the body is read.
  virtual int32_t UserOf(const HttpRequest&) { return kNobody; }
  // The answer to a request that is not read to its end.
  virtual HttpReply Refused(const Refusal& refusal) = 0;
};

}  // namespace server
