// SPDX-License-Identifier: Apache-2.0
#include "server/http/Connection.h"

#include <algorithm>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/read.hpp>
#include <string_view>
#include <utility>

#include "base/system/Sockets.h"
#include "server/http/RequestHead.h"

namespace server {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;

namespace {

constexpr uint32_t kMaxHead = 64 << 10;
constexpr size_t kPiece = 4096;  // so much of a head, or more, is read at a time; it needs no share of the memory

}  // namespace

void StartConnection(Connections& connections, asio::ip::tcp::socket&& socket, asio::ssl::context* tls) {
  std::make_shared<Connection>(connections, std::move(socket), tls)->Start();
}

Connection::Connection(Connections& connections, asio::ip::tcp::socket&& socket, asio::ssl::context* tls)
    : m_connections(connections),
      m_stream(std::move(socket), tls),
      m_timer(m_stream.get_executor()),
      m_share(connections.bodies) {
  ++m_connections.count;
}

Connection::~Connection() {
  --m_connections.count;
  m_connections.strangers.Leave(*this);
  Release();
  Log();
}

void Connection::Start() {
  asio::ip::tcp::socket& socket = m_stream.Tcp().socket();
  error_code ignored;
  m_peer = Plain(socket.remote_endpoint(ignored).address());
  if (!BecomeStranger()) return;
  socket.set_option(asio::ip::tcp::no_delay(true), ignored);
  base::FindDeadPeer(static_cast<std::intptr_t>(socket.native_handle()));
  if (m_stream.IsTls()) {
    m_stream.Tcp().expires_after(m_connections.settings.readTimeout);
    m_stream.AsyncHandshake([self = shared_from_this()](error_code error) {
      if (!error) self->AwaitRequest();
    });
  } else {
    asio::dispatch(m_stream.get_executor(), [self = shared_from_this()] { self->AwaitRequest(); });
  }
}

void Connection::Dismiss() {
  try {
    asio::post(m_stream.get_executor(), [self = shared_from_this()] {
      if (self->m_user == kNobody) self->m_stream.Tcp().close();  // else it was used just now
    });
  } catch (const std::exception&) {
    // Want of memory: it goes when its time is over.
  }
}

void Connection::AwaitRequest() {
  m_connections.strangers.SetBusy(*this, false);
  m_request = {};
  m_isHead = m_isHttp10 = false;  // for what is no request, either
  m_codings = {};
  m_parser.emplace();
  m_parser->header_limit(kMaxHead);
  m_parser->body_limit(boost::none);  // set once the head tells who asks
  m_parser->eager(false);
  if (m_buffer.size() > 0) {
    m_stream.Tcp().expires_after(m_connections.settings.readTimeout);
    return ReadHead();
  }
  if (m_buffer.capacity() > kPiece) m_buffer = beast::flat_buffer();
  const HttpSettings& settings = m_connections.settings;
  m_stream.Tcp().expires_after(m_isFirst ? settings.readTimeout : settings.idleTimeout);
  m_stream.async_read_some(m_buffer.prepare(kPiece), [self = shared_from_this()](error_code error, size_t bytes) {
    if (error) return;
    self->m_buffer.commit(bytes);
    self->m_stream.Tcp().expires_after(self->m_connections.settings.readTimeout);
    self->ReadHead();
  });
}

void Connection::ReadHead() {
  error_code error;
  while (!error && !m_parser->is_header_done()) m_buffer.consume(m_parser->put(m_buffer.data(), error));
  if (error == http::error::need_more) return ReadMoreOfHead();
  error ? OnReadError(error) : OnHead();
}

void Connection::ReadMoreOfHead() {
  const size_t space = std::max(kPiece, m_buffer.size());
  if (m_buffer.size() > 0 && !m_share.Cover(Holder(), m_buffer.size() + space)) {
    return Refuse(Refusal::Busy());
  }
  m_stream.async_read_some(m_buffer.prepare(space), [self = shared_from_this()](error_code error, size_t bytes) {
    if (error) return;
    self->m_buffer.commit(bytes);
    self->ReadHead();
  });
}

void Connection::OnHead() {
  m_isFirst = false;
  m_share.Release();
  TakeHead();
  if (const auto fault = FaultOf(m_parser->get())) return Refuse(*fault);
  if (!Claim()) return Refuse(Refusal::TooManyConnections());
  if (m_parser->is_done()) return OnRequest();
  const auto limit = LimitBody();
  if (!limit) return;
  m_parser->body_limit(*limit);
  WantsContinue(m_parser->get()) ? SayContinue() : StartBody();
}

void Connection::TakeHead() {
  const RequestMessage& message = m_parser->get();
  m_isHead = message.method() == http::verb::head;
  m_isHttp10 = message.version() < 11;
  server::ReadHead(message, m_request);
  // HTTP/1.0 has no chunks, and so no body whose length shows at its end.
  if (!m_isHttp10) m_codings = WantedCodings(Joined(message, "Accept-Encoding"));
  const Address client = m_connections.proxies.Client(m_peer, Joined(message, "X-Forwarded-For"));
  m_request.peer = client.to_string();
  m_request.network = NetworkOf(client);
  if (!m_connections.accessLog) return;
  m_entry.emplace();
  m_entry->peer = m_request.peer;
  m_entry->time = std::chrono::system_clock::now();
  m_entry->request = std::string(message.method_string()) + ' ' + WithoutValues(m_request.path, m_request.query) +
                     (m_isHttp10 ? " HTTP/1.0" : " HTTP/1.1");
  m_entry->referer = WithoutSecrets(std::string(message[http::field::referer]));
  m_entry->agent = std::string(message[http::field::user_agent]);
}

bool Connection::Claim() {
  if (m_request.token.empty() || m_request.token == m_token) return true;
  const int32_t user = m_connections.handler.UserOf(m_request);
  const bool wasUser = m_user != kNobody;
  Release();
  if (user == kNobody) return !wasUser || BecomeStranger();
  if (!m_connections.holders.Add(user, m_connections.settings.maxConnectionsPerUser)) {
    if (wasUser) BecomeStranger();
    return false;
  }
  m_connections.strangers.Leave(*this);
  m_user = user;
  m_token = m_request.token;
  return true;
}

bool Connection::BecomeStranger() {
  const bool isCrowded = m_connections.count > m_connections.settings.maxConnections;
  return m_connections.strangers.Enter(*this, m_connections.proxies.Has(m_peer) ? "" : NetworkOf(m_peer), isCrowded);
}

void Connection::Release() {
  if (m_user != kNobody) m_connections.holders.Remove(m_user);
  m_user = kNobody;
  m_token.clear();
}

// A proxy's connection carries now the one's requests, now the other's.
bool Connection::IsOfItsUser() const {
  return m_user != kNobody && m_request.token == m_token;
}

std::string Connection::Holder() const {
  if (IsOfItsUser()) return "user " + std::to_string(m_user);
  return m_request.network.empty() ? NetworkOf(m_peer) : m_request.network;
}

std::optional<uint64_t> Connection::LimitBody() {
  HttpHandler& handler = m_connections.handler;
  const auto length = m_parser->content_length();
  uint64_t limit = kUsualBody;
  try {
    if (!length || *length > limit) {
      const uint64_t allowed = handler.BodyLimit(m_request);
      if (length && allowed == 0) return Refuse(handler.Handle(m_request)), std::nullopt;
      limit = std::max(limit, allowed);
      if (length && *length > limit) return Refuse(Refusal::TooLarge()), std::nullopt;
    }
    if (!m_share.Cover(Holder(), length.value_or(0))) return Refuse(Refusal::Busy()), std::nullopt;
    m_parser->get().body().reserve(length.value_or(0));
  } catch (const std::exception&) {
    return Refuse(Refusal::NoMemory()), std::nullopt;
  }
  return limit;
}

void Connection::SayContinue() {
  static constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";
  asio::async_write(m_stream, asio::buffer(kContinue), [self = shared_from_this()](error_code error, size_t) {
    if (!error) self->StartBody();
  });
}

void Connection::StartBody() {
  m_bodyBegan = Clock::now();
  ReadBody();
}

void Connection::ReadBody() {
  if (!CoverBody()) return Refuse(Refusal::Busy());
  // So much time for so much that has come, or a client could keep its connection by sending a byte now and then.
  m_stream.Tcp().expires_at(m_bodyBegan + m_connections.settings.readTimeout + TimeFor(m_parser->get().body().size()));
  http::async_read_some(m_stream, m_buffer, *m_parser, [self = shared_from_this()](error_code error, size_t) {
    if (error) return self->OnReadError(error);
    self->m_parser->is_done() ? self->OnRequest() : self->ReadBody();
  });
}

bool Connection::CoverBody() {
  if (m_parser->content_length()) return true;
  const std::string& body = m_parser->get().body();
  return m_share.Cover(Holder(), std::max(body.capacity(), body.size() + kUsualBody));
}

void Connection::OnReadError(error_code error) {
  if (error == http::error::body_limit || error == http::error::header_limit) {
    return Refuse(Refusal::TooLarge());
  }
  if (error == http::error::bad_alloc) return Refuse(Refusal::NoMemory());
  const bool isHttp = error.category() == make_error_code(http::error::end_of_stream).category();
  if (isHttp && error != http::error::end_of_stream && error != http::error::partial_message) {
    Refuse(NotHttp());
  }
}

void Connection::OnRequest() {
  const bool keepAlive = m_parser->get().keep_alive();
  m_request.body = std::move(m_parser->get().body());
  m_parser.reset();
  m_stream.Tcp().expires_never();
  m_connections.strangers.SetBusy(*this, true);
  bool isTaken = true;
  switch (m_connections.handler.LaneOf(m_request)) {
    case Lane::kQuick:
      return Send(Answer(), keepAlive);
    case Lane::kLogin:  // by address: a token says nothing of who logs in
      isTaken = AnswerInLane(m_connections.logins, m_request.network, keepAlive);
      break;
    case Lane::kLargeBody:
      isTaken = AnswerInLane(m_connections.largeBodies, Holder(), keepAlive);
      break;
  }
  if (!isTaken) Send(m_connections.handler.Refused(Refusal::Busy()), keepAlive);
}

HttpReply Connection::Answer() {
  HttpHandler& handler = m_connections.handler;
  m_owed.emplace(m_connections.answers);
  return m_owed->IsWelcome() ? handler.Handle(m_request) : handler.Refused(Refusal::Busy());
}

bool Connection::AnswerInLane(WorkLane& lane, const std::string& holder, bool keepAlive) {
  return lane.Add(holder, [self = shared_from_this(), keepAlive] {
    try {
      auto reply = std::make_shared<HttpReply>(self->Answer());
      asio::post(self->m_stream.get_executor(), [self, reply, keepAlive] { self->Send(std::move(*reply), keepAlive); });
    } catch (const std::exception&) {
      // Want of memory: the connection ends with its last holder.
    }
  });
}

}  // namespace server
