// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/chunk_encode.hpp>
#include <boost/beast/http/status.hpp>
#include <memory>
#include <utility>

#include "server/http/Connection.h"

namespace server {

namespace asio = boost::asio;
namespace http = boost::beast::http;

namespace {

constexpr uint64_t kDrainBytes = uint64_t{256} << 20;
constexpr std::chrono::seconds kDrainTime{5};
constexpr std::chrono::milliseconds kPollReply{20};  // for replies of which memory did not suffice to tell
constexpr size_t kGather = 32;                       // buffers in one write

const char* Reason(int status) {
  return http::obsolete_reason(static_cast<http::status>(status)).data();
}

std::optional<uint64_t> LengthOf(const HttpReply& reply) {
  return reply.source ? reply.source->Length() : reply.body.size();
}

// HTTP/1.0 closes unless it is told that the connection is kept, HTTP/1.1 keeps it unless it is told of the end.
std::string ReplyHead(const HttpReply& reply, Coding coding, bool isCompressible, bool keepAlive, bool isHttp10) {
  std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " " + Reason(reply.status) + "\r\n";
  head += reply.events ? "Content-Type: text/event-stream\r\nCache-Control: no-store\r\nX-Accel-Buffering: no\r\n"
                       : "Content-Type: application/json; charset=utf-8\r\n";
  if (coding != Coding::kNone) head.append("Content-Encoding: ").append(NameOf(coding)) += "\r\n";
  if (!reply.events) {
    const std::optional<uint64_t> length = LengthOf(reply);
    head += length ? "Content-Length: " + std::to_string(*length) + "\r\n" : "Transfer-Encoding: chunked\r\n";
  }
  if (isCompressible && !reply.events) head += "Vary: Accept-Encoding\r\n";
  for (const auto& [name, value] : reply.headers) head.append(name).append(": ").append(value).append("\r\n");
  if (!keepAlive) head += "Connection: close\r\n";
  if (keepAlive && isHttp10) head += "Connection: keep-alive\r\n";
  return head + "\r\n";
}

}  // namespace

void Connection::Refuse(const Refusal& refusal) {
  Refuse(m_connections.handler.Refused(refusal));
}

void Connection::Refuse(HttpReply reply) {
  m_parser.reset();  // what has come of a body is not held while the rest is drained
  m_drain = true;
  Send(std::move(reply), false);
}

void Connection::Send(HttpReply reply, bool keepAlive) {
  if (reply.pending) return AwaitReply(std::move(reply.pending), keepAlive);
  m_owed.reset();  // nothing was changed, so that it may be asked again
  SendInTime(std::move(reply), keepAlive);
}

void Connection::SendInTime(HttpReply reply, bool keepAlive) {
  if (reply.delay.count() > 0) {
    m_timer.expires_after(std::exchange(reply.delay, std::chrono::milliseconds(0)));
    auto later = std::make_shared<HttpReply>(std::move(reply));
    m_timer.async_wait([self = shared_from_this(), later, keepAlive](error_code error) {
      if (!error) self->SendNow(std::move(*later), keepAlive);
    });
  } else {
    SendNow(std::move(reply), keepAlive);
  }
}

void Connection::SendNow(HttpReply reply, bool keepAlive) {
  m_keepAlive = keepAlive && !reply.events && !m_connections.answers.IsEnding();
  m_reply = std::move(reply);
  m_request.body = {};
  m_share.Release();
  if (m_reply.events || m_reply.source) m_reply.body.clear();
  const bool isCompressible = IsCompressible();
  const Codings codings = isCompressible ? m_codings : Codings();
  const Coding coding = m_reply.events ? codings.ofStream : codings.ofBody;
  m_packsEvents = m_reply.events && coding != Coding::kNone;
  if (!m_reply.events && coding != Coding::kNone) m_reply.source = CompressedBody(coding, m_reply);
  m_head = ReplyHead(m_reply, coding, isCompressible, m_keepAlive, m_isHttp10);
  if (m_isHead) {
    m_reply.events = nullptr;
    m_reply.source = nullptr;
    m_reply.body.clear();
  }
  StartEntry();
  if (m_reply.cut) return SendPart(*m_reply.cut);
  ExpireWrite(m_head.size() + m_reply.body.size());
  const std::array<asio::const_buffer, 2> buffers{asio::buffer(m_head), asio::buffer(m_reply.body)};
  asio::async_write(m_stream, buffers, [self = shared_from_this()](error_code error, size_t bytes) {
    self->Count(bytes);
    if (error) return;
    if (self->m_reply.events) return self->StartEvents();
    self->m_reply.source ? self->SendChunk() : self->OnSent();
  });
}

void Connection::AwaitReply(std::shared_ptr<PendingReply> pending, bool keepAlive) {
  m_request.body = {};  // its share stays until the reply, for the edit holds what it needs of it
  m_pending = std::move(pending);
  m_pending->OnReady([weak = weak_from_this(), gate = m_connections.wakeGate] {
    gate->Pass([&weak] {
      if (const auto self = weak.lock()) self->WakeForReply();
    });
  });
  PollReply(keepAlive);
}

void Connection::PollReply(bool keepAlive) {
  if (std::optional<HttpReply> reply = m_pending->Take()) {
    m_pending.reset();
    return SendInTime(std::move(*reply), keepAlive);
  }
  m_timer.expires_after(kPollReply);
  m_timer.async_wait([self = shared_from_this(), keepAlive](error_code) { self->PollReply(keepAlive); });
}

void Connection::WakeForReply() {
  try {
    asio::post(m_stream.get_executor(), [self = shared_from_this()] {
      if (self->m_pending) self->m_timer.cancel();
    });
  } catch (const std::exception&) {
    // Want of memory: the timer will see the reply.
  }
}

// Edits' replies are short, and a log-in's holds a secret: how short it gets beside what somebody else has chosen would
// tell of it. What is cut is cut where it stands.
bool Connection::IsCompressible() const {
  return m_connections.settings.compresses && m_request.method == "GET" && !m_reply.cut &&
         (m_reply.events || LengthOf(m_reply) >= kLeastCompressed);
}

void Connection::SendPart(uint64_t bytes) {
  m_chunk = (m_head + m_reply.body).substr(0, bytes);
  ExpireWrite(m_chunk.size());
  asio::async_write(m_stream, asio::buffer(m_chunk), [self = shared_from_this()](error_code, size_t sent) {
    self->Count(sent);
    self->m_stream.Tcp().close();
  });
}

void Connection::SendChunk() {
  const bool isLengthKnown = m_reply.source->Length().has_value();
  const bool isMore = m_reply.source->Next(m_chunk);
  if (!isMore && isLengthKnown) return OnSent();
  ExpireWrite(m_chunk.size());
  auto then = [self = shared_from_this(), isMore](error_code error, size_t bytes) {
    self->Count(bytes);
    if (!error) isMore ? self->SendChunk() : self->OnSent();
  };
  if (isLengthKnown) {
    asio::async_write(m_stream, asio::buffer(m_chunk), std::move(then));
  } else if (isMore) {
    asio::async_write(m_stream, http::make_chunk(asio::buffer(m_chunk)), std::move(then));
  } else {
    asio::async_write(m_stream, http::make_chunk_last(), std::move(then));
  }
}

void Connection::OnSent() {
  Log();
  m_owed.reset();
  m_reply = {};
  m_chunk = {};
  if (m_keepAlive) return AwaitRequest();
  m_stream.Tcp().expires_after(kDrainTime);
  if (m_stream.IsTls()) {
    if (m_drain) return Drain();
    m_stream.AsyncShutdown([self = shared_from_this()](error_code) {});
  } else {
    error_code ignored;
    m_stream.Tcp().socket().shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
    if (m_drain) Drain();
  }
}

void Connection::StartEntry() {
  if (!m_connections.accessLog) return;
  if (!m_entry) {  // what came was no request
    m_entry.emplace();
    m_entry->peer = m_peer.to_string();
    m_entry->time = std::chrono::system_clock::now();
  }
  m_entry->user = IsOfItsUser() ? std::to_string(m_user) : "-";
  m_entry->status = m_reply.status;
  m_unsentHead = m_head.size();
}

void Connection::Count(size_t bytes) {
  if (!m_entry) return;
  const uint64_t ofHead = std::min<uint64_t>(bytes, m_unsentHead);
  m_unsentHead -= ofHead;
  m_entry->bytes += bytes - ofHead;
}

void Connection::Log() noexcept {
  if (m_entry && m_entry->status != 0) m_connections.accessLog->Add(*m_entry);
  m_entry.reset();
}

void Connection::Drain() {
  m_chunk.resize(64 << 10);
  m_stream.async_read_some(asio::buffer(m_chunk), [self = shared_from_this()](error_code error, size_t bytes) {
    self->m_drained += bytes;
    if (!error && self->m_drained < kDrainBytes) self->Drain();
  });
}

void Connection::ExpireWrite(size_t bytes) {
  m_stream.Tcp().expires_after(m_connections.settings.writeTimeout + TimeFor(bytes));
}

void Connection::StartEvents() {
  m_stream.Tcp().expires_never();
  m_reply.events->OnReady([weak = weak_from_this(), gate = m_connections.wakeGate] {
    gate->Pass([&weak] {
      if (const auto self = weak.lock()) self->Wake();
    });
  });
  m_chunk.resize(512);
  OrEnd([this] {
    if (m_packsEvents) m_events.push_back(PackedEvents::Begin());
    WatchForEnd();
    StartHeartbeat();
  });
  PumpEvents();
}

void Connection::Wake() {
  if (m_wakeUnderway.exchange(true)) return;
  try {
    asio::post(m_stream.get_executor(), [self = shared_from_this()] {
      self->m_wakeUnderway = false;
      self->PumpEvents();
    });
  } catch (const std::exception&) {
    m_wakeUnderway = false;  // want of memory: the next sign of life brings what there is
  }
}

// What an operation of a stream holds of it. Where memory runs out between its start and its end, it is dropped without
// a word: the others would keep a stream that says nothing any more.
class Connection::Held {
 public:
  explicit Held(std::shared_ptr<Connection> self) : m_self(std::move(self)) {}
  Held(Held&& other) noexcept = default;
  Held& operator=(Held&&) = delete;
  ~Held() {
    if (m_self) m_self->EndEvents();
  }
  std::shared_ptr<Connection> Take() { return std::move(m_self); }

 private:
  std::shared_ptr<Connection> m_self;
};

template <class Action>
void Connection::OrEnd(const Action& action) {
  try {
    action();
  } catch (const std::exception&) {
    EndEvents();
  }
}

void Connection::WatchForEnd() {
  m_stream.async_read_some(asio::buffer(m_chunk), [held = Held(shared_from_this())](error_code error, size_t) mutable {
    const auto self = held.Take();
    error ? self->EndEvents() : self->OrEnd([&] { self->WatchForEnd(); });
  });
}

void Connection::StartHeartbeat() {
  m_timer.expires_after(m_connections.settings.heartbeat);
  m_timer.async_wait([held = Held(shared_from_this())](error_code error) mutable {
    const auto self = held.Take();
    if (error || self->m_ended) return;
    if (!self->m_reply.events->KeepAlive()) return self->EndEvents();
    self->m_commentDue = !self->m_reply.events->IsSilent();
    self->OrEnd([&] { self->StartHeartbeat(); });
    self->PumpEvents();
  });
}

void Connection::PumpEvents() {
  OrEnd([this] { SendEvents(); });
}

void Connection::SendEvents() {
  static const Text kComment = std::make_shared<std::string>(": still here\n\n");
  if (m_writing || m_ended) return;
  if (m_events.empty()) {
    m_sent = 0;
    if (!m_reply.events->Take(m_events)) return EndEvents();
    if (std::exchange(m_commentDue, false)) m_events.push_back(kComment);
    if (m_packsEvents) {
      for (Text& event : m_events) event = m_connections.packedEvents.Pack(event);
    }
    if (m_events.empty()) return m_reply.events->HasMore() ? Wake() : void();
  }
  std::vector<asio::const_buffer> buffers;
  const size_t end = std::min(m_events.size(), m_sent + kGather);
  size_t bytes = 0;
  for (size_t i = m_sent; i < end; ++i) {
    buffers.push_back(asio::buffer(*m_events[i]));
    bytes += m_events[i]->size();
  }
  m_writing = true;
  ExpireWrite(bytes);
  asio::async_write(m_stream, buffers, [held = Held(shared_from_this()), end](error_code error, size_t sent) mutable {
    const auto self = held.Take();
    self->m_writing = false;
    self->Count(sent);
    if (error) return self->EndEvents();
    self->m_sent = end;
    if (end == self->m_events.size()) self->m_events.clear();
    self->PumpEvents();
  });
}

void Connection::EndEvents() noexcept {
  if (std::exchange(m_ended, true)) return;
  m_timer.cancel();
  m_stream.Tcp().close();
}

}  // namespace server
