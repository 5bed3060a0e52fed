// SPDX-License-Identifier: Apache-2.0
#include "server/http/Connection.h"

#include <algorithm>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/read.hpp>
#include <string_view>

namespace server {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;

namespace {

constexpr uint32_t kMaxHead = 64 << 10;

std::string BearerToken(const http::request<http::string_body>& message) {
  const std::string_view value = message[http::field::authorization];
  constexpr std::string_view kScheme = "bearer ";
  if (value.size() < kScheme.size() || !beast::iequals(value.substr(0, kScheme.size()), kScheme)) return {};
  return std::string(value.substr(kScheme.size()));
}

}  // namespace

void StartConnection(Connections& connections, asio::ip::tcp::socket&& socket, asio::ssl::context* tls) {
  std::make_shared<Connection>(connections, std::move(socket), tls)->Start();
}

Connection::Connection(Connections& connections, asio::ip::tcp::socket&& socket, asio::ssl::context* tls)
    : m_connections(connections), m_stream(std::move(socket), tls), m_timer(m_stream.get_executor()) {
  ++m_connections.count;
}

Connection::~Connection() {
  --m_connections.count;
  Release();
}

void Connection::Start() {
  asio::ip::tcp::socket& socket = m_stream.Tcp().socket();
  error_code ignored;
  m_peer = socket.remote_endpoint(ignored).address().to_string();
  socket.set_option(asio::ip::tcp::no_delay(true), ignored);
  if (m_stream.IsTls()) {
    m_stream.Tcp().expires_after(m_connections.settings.readTimeout);
    m_stream.AsyncHandshake([self = shared_from_this()](error_code error) {
      if (!error) self->AwaitRequest();
    });
  } else {
    asio::dispatch(m_stream.get_executor(), [self = shared_from_this()] { self->AwaitRequest(); });
  }
}

void Connection::AwaitRequest() {
  m_request = {};
  m_parser.emplace();
  m_parser->header_limit(kMaxHead);
  m_parser->body_limit(boost::none);  // set once the head tells who asks
  if (m_buffer.size() > 0) return ReadHead();
  const HttpSettings& settings = m_connections.settings;
  m_stream.Tcp().expires_after(m_isFirst ? settings.readTimeout : settings.idleTimeout);
  m_stream.async_read_some(m_buffer.prepare(4096), [self = shared_from_this()](error_code error, size_t bytes) {
    if (error) return;
    self->m_buffer.commit(bytes);
    self->ReadHead();
  });
}

void Connection::ReadHead() {
  m_stream.Tcp().expires_after(m_connections.settings.readTimeout);
  http::async_read_header(m_stream, m_buffer, *m_parser,
                          [self = shared_from_this()](error_code error, size_t) { self->OnHead(error); });
}

void Connection::OnHead(error_code error) {
  if (error) return OnReadError(error);
  m_isFirst = false;
  TakeHead();
  if (!Claim()) return Refuse(m_connections.handler.Refused(Refusal::TooManyConnections()));
  if (m_parser->is_done()) return OnRequest();

  const auto length = m_parser->content_length();
  uint64_t limit = kUsualBody;
  try {
    if (!length || *length > limit) {
      const uint64_t allowed = m_connections.handler.BodyLimit(m_request);
      if (length && allowed == 0) return Refuse(m_connections.handler.Handle(m_request));
      limit = std::max(limit, allowed);
      if (length && *length > limit) return Refuse(m_connections.handler.Refused(Refusal::TooLarge()));
    }
    m_parser->get().body().reserve(length.value_or(0));
  } catch (const std::exception&) {
    return Refuse(m_connections.handler.Refused(Refusal::NoMemory()));
  }
  m_parser->body_limit(limit);
  // For all of it, or a client could keep its connection by sending a byte now and then.
  m_bodyTime = m_connections.settings.readTimeout + TimeFor(length.value_or(limit));
  if (beast::iequals(m_parser->get()[http::field::expect], "100-continue")) return SayContinue();
  StartBody();
}

void Connection::TakeHead() {
  const auto& message = m_parser->get();
  const std::string_view target = message.target();
  const size_t question = target.find('?');
  m_request.method = std::string(message.method_string());
  m_request.path = std::string(target.substr(0, question));
  if (question != std::string_view::npos) m_request.query = std::string(target.substr(question + 1));
  m_request.token = BearerToken(message);
  m_request.peer = m_peer;
}

bool Connection::Claim() {
  if (m_request.token.empty() || m_request.token == m_token) return true;
  Release();
  const int32_t user = m_connections.handler.UserOf(m_request);
  if (user == kNobody) return true;
  if (!m_connections.holders.Add(user, m_connections.settings.maxConnectionsPerUser)) return false;
  m_user = user;
  m_token = m_request.token;
  return true;
}

void Connection::Release() {
  if (m_user != kNobody) m_connections.holders.Remove(m_user);
  m_user = kNobody;
  m_token.clear();
}

void Connection::SayContinue() {
  static constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";
  asio::async_write(m_stream, asio::buffer(kContinue), [self = shared_from_this()](error_code error, size_t) {
    if (!error) self->StartBody();
  });
}

void Connection::StartBody() {
  m_stream.Tcp().expires_after(m_bodyTime);
  ReadBody();
}

void Connection::ReadBody() {
  http::async_read_some(m_stream, m_buffer, *m_parser, [self = shared_from_this()](error_code error, size_t) {
    if (error) return self->OnReadError(error);
    self->m_parser->is_done() ? self->OnRequest() : self->ReadBody();
  });
}

void Connection::OnReadError(error_code error) {
  if (error == http::error::body_limit || error == http::error::header_limit) {
    return Refuse(m_connections.handler.Refused(Refusal::TooLarge()));
  }
  if (error == http::error::bad_alloc) return Refuse(m_connections.handler.Refused(Refusal::NoMemory()));
  const bool isHttp = error.category() == make_error_code(http::error::end_of_stream).category();
  if (isHttp && error != http::error::end_of_stream && error != http::error::partial_message) {
    Refuse(m_connections.handler.Refused(Refusal::Malformed("not an HTTP request")));
  }
}

void Connection::OnRequest() {
  // Whoever asks for a head alone would take the body of our refusal for the next answer.
  const bool keepAlive = m_parser->get().keep_alive() && m_request.method != "HEAD";
  m_request.body = std::move(m_parser->get().body());
  m_parser.reset();
  m_stream.Tcp().expires_never();
  if (!m_connections.handler.IsSlow(m_request)) return Send(m_connections.handler.Handle(m_request), keepAlive);
  asio::post(m_connections.slow, [self = shared_from_this(), keepAlive] {
    try {
      auto reply = std::make_shared<HttpReply>(self->m_connections.handler.Handle(self->m_request));
      asio::post(self->m_stream.get_executor(), [self, reply, keepAlive] { self->Send(std::move(*reply), keepAlive); });
    } catch (const std::exception&) {
      // Want of memory: the connection ends with its last holder.
    }
  });
}

}  // namespace server
