// SPDX-License-Identifier: Apache-2.0
// The only file that knows Beast, which reads requests; replies are written as they are. Each connection runs on one
// thread, whose I/O context no other thread runs: a strand would allocate where it cannot fail, so that want of memory
// ended the process.
#include <algorithm>
#include <atomic>
#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <cstdio>
#include <mutex>
#include <new>
#include <optional>
#include <shared_mutex>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <type_traits>
#include <unordered_map>

#include "server/Http.h"

namespace server {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using beast::error_code;
using PlainStream = beast::tcp_stream;
using TlsStream = asio::ssl::stream<beast::tcp_stream>;

constexpr uint32_t kMaxHead = 64 << 10;
constexpr uint64_t kDrainBytes = uint64_t{256} << 20;
constexpr std::chrono::seconds kDrainTime{5};
constexpr size_t kGather = 32;  // buffers in one write

// How many connections each user holds. Any thread.
class Holders {
 public:
  bool Add(int32_t user, size_t limit) {
    const std::lock_guard lock(m_mutex);
    size_t& count = m_counts[user];
    if (count >= limit) return false;
    ++count;
    return true;
  }
  void Remove(int32_t user) {
    const std::lock_guard lock(m_mutex);
    const auto it = m_counts.find(user);
    if (it != m_counts.end() && --it->second == 0) m_counts.erase(it);
  }

 private:
  std::mutex m_mutex;  // leaf; guards what follows
  std::unordered_map<int32_t, size_t> m_counts;
};

// Who wakes a connection from a thread of their own holds it for a moment, and must not be the last who does once the
// server has gone. Any thread.
class WakeGate {
 public:
  // Does nothing once the gate is closed.
  template <class Wake>
  void Pass(const Wake& wake) {
    const std::shared_lock lock(m_mutex);
    if (m_isOpen) wake();
  }
  // Returns when nobody is inside any more.
  void Close() {
    const std::unique_lock lock(m_mutex);
    m_isOpen = false;
  }

 private:
  std::shared_mutex m_mutex;
  bool m_isOpen = true;
};

std::chrono::seconds TimeFor(uint64_t bytes) {
  return std::chrono::seconds(bytes / (100 << 10));
}

// What all connections share. They die with the I/O context, so what they use stands before it.
struct Context {
  const HttpSettings settings;
  HttpHandler& handler;
  std::atomic<size_t> connections{0};
  Holders holders;
  const std::shared_ptr<WakeGate> wakeGate = std::make_shared<WakeGate>();
  std::vector<std::unique_ptr<asio::io_context>> ios;  // one for each thread
  asio::thread_pool slow;

  Context(const HttpSettings& how, HttpHandler& who)
      : settings(how), handler(who), slow(static_cast<size_t>(how.slowThreads)) {
    for (int i = 0; i < how.threads; ++i) ios.push_back(std::make_unique<asio::io_context>(1));
  }
};

const char* Reason(int status) {
  return http::obsolete_reason(static_cast<http::status>(status)).data();
}

std::string ReplyHead(const HttpReply& reply, bool keepAlive) {
  std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " " + Reason(reply.status) + "\r\n";
  if (reply.events) {
    head += "Content-Type: text/event-stream\r\nCache-Control: no-store\r\n";
  } else {
    const uint64_t length = reply.source ? reply.source->Length() : reply.body.size();
    head += "Content-Type: application/json; charset=utf-8\r\nContent-Length: " + std::to_string(length) + "\r\n";
  }
  for (const auto& [name, value] : reply.headers) head.append(name).append(": ").append(value).append("\r\n");
  if (!keepAlive) head += "Connection: close\r\n";
  return head + "\r\n";
}

std::string BearerToken(const http::request_parser<http::string_body>& parser) {
  const std::string_view value = parser.get()[http::field::authorization];
  constexpr std::string_view kScheme = "bearer ";
  if (value.size() < kScheme.size() || !beast::iequals(value.substr(0, kScheme.size()), kScheme)) return {};
  return std::string(value.substr(kScheme.size()));
}

template <class Stream>
class Connection : public std::enable_shared_from_this<Connection<Stream>> {
 public:
  template <class... Args>
  Connection(Context& context, tcp::socket&& socket, Args&... args)
      : m_context(context), m_stream(std::move(socket), args...), m_timer(m_stream.get_executor()) {
    ++m_context.connections;
  }

  ~Connection() {
    --m_context.connections;
    Release();
  }

  void Start() {
    error_code ignored;
    m_peer = Lowest().socket().remote_endpoint(ignored).address().to_string();
    Lowest().socket().set_option(tcp::no_delay(true), ignored);
    if constexpr (std::is_same_v<Stream, TlsStream>) {
      Lowest().expires_after(m_context.settings.readTimeout);
      m_stream.async_handshake(asio::ssl::stream_base::server, [self = this->shared_from_this()](error_code error) {
        if (!error) self->AwaitRequest();
      });
    } else {
      asio::dispatch(m_stream.get_executor(), [self = this->shared_from_this()] { self->AwaitRequest(); });
    }
  }

 private:
  using Parser = http::request_parser<http::string_body>;

  beast::tcp_stream& Lowest() { return beast::get_lowest_layer(m_stream); }

  // --- reading -------------------------------------------------------------------------------------------------------

  // Waits as long as a connection may lie idle for the first byte of a request, then less long for its head.
  void AwaitRequest() {
    m_request = {};
    m_parser.emplace();
    m_parser->header_limit(kMaxHead);
    m_parser->body_limit(boost::none);  // set once the head tells who asks
    if (m_buffer.size() > 0) return ReadHead();
    const HttpSettings& settings = m_context.settings;
    Lowest().expires_after(m_isFirst ? settings.readTimeout : settings.idleTimeout);
    m_stream.async_read_some(m_buffer.prepare(4096), [self = this->shared_from_this()](error_code error, size_t bytes) {
      if (error) return;
      self->m_buffer.commit(bytes);
      self->ReadHead();
    });
  }

  void ReadHead() {
    Lowest().expires_after(m_context.settings.readTimeout);
    http::async_read_header(m_stream, m_buffer, *m_parser,
                            [self = this->shared_from_this()](error_code error, size_t) { self->OnHead(error); });
  }

  void OnHead(error_code error) {
    if (error) return OnReadError(error);
    m_isFirst = false;
    const auto& message = m_parser->get();
    const std::string_view target = message.target();
    const size_t question = target.find('?');
    m_request.method = std::string(message.method_string());
    m_request.path = std::string(target.substr(0, question));
    if (question != std::string_view::npos) m_request.query = std::string(target.substr(question + 1));
    m_request.token = BearerToken(*m_parser);
    m_request.peer = m_peer;
    if (!Claim()) return Refuse(m_context.handler.AnswerTooMany());
    if (m_parser->is_done()) return OnRequest();

    const auto length = m_parser->content_length();
    uint64_t limit = kUsualBody;
    try {
      if (!length || *length > limit) {
        const uint64_t allowed = m_context.handler.BodyLimit(m_request);
        if (length && allowed == 0) return Refuse(m_context.handler.Handle(m_request));
        limit = std::max(limit, allowed);
        if (length && *length > limit) return Refuse(m_context.handler.AnswerTooLarge());
      }
      m_parser->get().body().reserve(length.value_or(0));
    } catch (const std::exception&) {
      return Refuse(m_context.handler.AnswerNoMemory());
    }
    m_parser->body_limit(limit);
    // For all of it, or a client could keep its connection by sending a byte now and then.
    m_bodyTime = m_context.settings.readTimeout + TimeFor(length.value_or(limit));
    if (beast::iequals(message[http::field::expect], "100-continue")) return SayContinue();
    StartBody();
  }

  // Counts the connection as its user's, asking once for each token. False: that user holds too many.
  bool Claim() {
    if (m_request.token.empty() || m_request.token == m_token) return true;
    Release();
    const int32_t user = m_context.handler.UserOf(m_request);
    if (user == kNobody) return true;
    if (!m_context.holders.Add(user, m_context.settings.maxConnectionsPerUser)) return false;
    m_user = user;
    m_token = m_request.token;
    return true;
  }

  void Release() {
    if (m_user != kNobody) m_context.holders.Remove(m_user);
    m_user = kNobody;
    m_token.clear();
  }

  void SayContinue() {
    static constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";
    asio::async_write(m_stream, asio::buffer(kContinue), [self = this->shared_from_this()](error_code error, size_t) {
      if (!error) self->StartBody();
    });
  }

  void StartBody() {
    Lowest().expires_after(m_bodyTime);
    ReadBody();
  }

  void ReadBody() {
    http::async_read_some(m_stream, m_buffer, *m_parser, [self = this->shared_from_this()](error_code error, size_t) {
      if (error) return self->OnReadError(error);
      self->m_parser->is_done() ? self->OnRequest() : self->ReadBody();
    });
  }

  void OnReadError(error_code error) {
    if (error == http::error::body_limit || error == http::error::header_limit) {
      return Refuse(m_context.handler.AnswerTooLarge());
    }
    if (error == http::error::bad_alloc) return Refuse(m_context.handler.AnswerNoMemory());
    const bool isHttp = error.category() == make_error_code(http::error::end_of_stream).category();
    if (isHttp && error != http::error::end_of_stream && error != http::error::partial_message) {
      Refuse(m_context.handler.AnswerMalformed());
    }
  }

  // --- answering -----------------------------------------------------------------------------------------------------

  void OnRequest() {
    // Whoever asks for a head alone would take the body of our refusal for the next answer.
    const bool keepAlive = m_parser->get().keep_alive() && m_request.method != "HEAD";
    m_request.body = std::move(m_parser->get().body());
    m_parser.reset();
    Lowest().expires_never();
    if (!m_context.handler.IsSlow(m_request)) return Send(m_context.handler.Handle(m_request), keepAlive);
    asio::post(m_context.slow, [self = this->shared_from_this(), keepAlive] {
      try {
        auto reply = std::make_shared<HttpReply>(self->m_context.handler.Handle(self->m_request));
        asio::post(self->m_stream.get_executor(),
                   [self, reply, keepAlive] { self->Send(std::move(*reply), keepAlive); });
      } catch (const std::exception&) {
        // Want of memory: the connection ends with its last holder.
      }
    });
  }

  // Answers a request whose rest is not wanted, and ends the connection.
  void Refuse(HttpReply reply) {
    m_drain = true;
    Send(std::move(reply), false);
  }

  void Send(HttpReply reply, bool keepAlive) {
    if (reply.delay.count() > 0) {
      m_timer.expires_after(std::exchange(reply.delay, std::chrono::milliseconds(0)));
      auto later = std::make_shared<HttpReply>(std::move(reply));
      m_timer.async_wait([self = this->shared_from_this(), later, keepAlive](error_code error) {
        if (!error) self->Send(std::move(*later), keepAlive);
      });
      return;
    }
    m_keepAlive = keepAlive && !reply.events;
    m_reply = std::move(reply);
    if (m_reply.events || m_reply.source) m_reply.body.clear();
    m_head = ReplyHead(m_reply, m_keepAlive);
    if (m_reply.cut) return SendPart(*m_reply.cut);
    ExpireWrite(m_head.size() + m_reply.body.size());
    const std::array<asio::const_buffer, 2> buffers{asio::buffer(m_head), asio::buffer(m_reply.body)};
    asio::async_write(m_stream, buffers, [self = this->shared_from_this()](error_code error, size_t) {
      if (error) return;
      if (self->m_reply.events) return self->StartEvents();
      self->m_reply.source ? self->SendChunk() : self->OnSent();
    });
  }

  void SendPart(uint64_t bytes) {
    m_chunk = (m_head + m_reply.body).substr(0, bytes);
    ExpireWrite(m_chunk.size());
    asio::async_write(m_stream, asio::buffer(m_chunk),
                      [self = this->shared_from_this()](error_code, size_t) { self->Lowest().close(); });
  }

  void SendChunk() {
    if (!m_reply.source->Next(m_chunk)) return OnSent();
    ExpireWrite(m_chunk.size());
    asio::async_write(m_stream, asio::buffer(m_chunk), [self = this->shared_from_this()](error_code error, size_t) {
      if (!error) self->SendChunk();
    });
  }

  void OnSent() {
    m_reply = {};
    m_chunk = {};
    if (m_keepAlive) return AwaitRequest();
    Lowest().expires_after(kDrainTime);
    if constexpr (std::is_same_v<Stream, TlsStream>) {
      if (m_drain) return Drain();
      m_stream.async_shutdown([self = this->shared_from_this()](error_code) {});
    } else {
      error_code ignored;
      Lowest().socket().shutdown(tcp::socket::shutdown_send, ignored);
      if (m_drain) Drain();
    }
  }

  // Closing with unread input would reset the connection, perhaps before the client has read the answer.
  void Drain() {
    m_chunk.resize(64 << 10);
    m_stream.async_read_some(asio::buffer(m_chunk), [self = this->shared_from_this()](error_code error, size_t bytes) {
      self->m_drained += bytes;
      if (!error && self->m_drained < kDrainBytes) self->Drain();
    });
  }

  void ExpireWrite(size_t bytes) { Lowest().expires_after(m_context.settings.writeTimeout + TimeFor(bytes)); }

  // --- events --------------------------------------------------------------------------------------------------------

  void StartEvents() {
    Lowest().expires_never();
    m_reply.events->OnReady([weak = this->weak_from_this(), gate = m_context.wakeGate] {
      gate->Pass([&weak] {
        if (const auto self = weak.lock()) self->Wake();
      });
    });
    m_chunk.resize(512);
    WatchForEnd();
    StartHeartbeat();
    PumpEvents();
  }

  // Any thread.
  void Wake() {
    if (m_wakeUnderway.exchange(true)) return;
    try {
      asio::post(m_stream.get_executor(), [self = this->shared_from_this()] {
        self->m_wakeUnderway = false;
        self->PumpEvents();
      });
    } catch (const std::exception&) {
      m_wakeUnderway = false;  // want of memory: the next sign of life brings what there is
    }
  }

  // A listener has nothing to say; a read tells when it has gone.
  void WatchForEnd() {
    m_stream.async_read_some(asio::buffer(m_chunk), [self = this->shared_from_this()](error_code error, size_t) {
      error ? self->EndEvents() : self->WatchForEnd();
    });
  }

  void StartHeartbeat() {
    m_timer.expires_after(m_context.settings.heartbeat);
    m_timer.async_wait([self = this->shared_from_this()](error_code error) {
      if (error || self->m_ended) return;
      if (!self->m_reply.events->KeepAlive()) return self->EndEvents();
      self->m_commentDue = !self->m_reply.events->IsSilent();
      self->StartHeartbeat();
      self->PumpEvents();
    });
  }

  // A stream that could miss an event must end: its client comes back for the rest.
  void PumpEvents() {
    try {
      SendEvents();
    } catch (const std::exception&) {
      EndEvents();
    }
  }

  void SendEvents() {
    static const Text kComment = std::make_shared<std::string>(": still here\n\n");
    if (m_writing || m_ended) return;
    if (m_events.empty()) {
      m_sent = 0;
      if (!m_reply.events->Take(m_events)) return EndEvents();
      if (std::exchange(m_commentDue, false)) m_events.push_back(kComment);
      if (m_events.empty()) return;
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
    asio::async_write(m_stream, buffers, [self = this->shared_from_this(), end](error_code error, size_t) {
      self->m_writing = false;
      if (error) return self->EndEvents();
      self->m_sent = end;
      if (end == self->m_events.size()) self->m_events.clear();
      self->PumpEvents();
    });
  }

  void EndEvents() {
    if (std::exchange(m_ended, true)) return;
    m_timer.cancel();
    Lowest().close();
  }

  Context& m_context;
  Stream m_stream;
  asio::steady_timer m_timer;
  beast::flat_buffer m_buffer;
  std::optional<Parser> m_parser;
  std::chrono::seconds m_bodyTime{0};
  std::string m_peer, m_token;
  int32_t m_user = kNobody;  // who is counted as holding it
  bool m_isFirst = true;     // no request has come yet
  HttpRequest m_request;
  HttpReply m_reply;
  std::string m_head, m_chunk;
  bool m_keepAlive = false;
  bool m_drain = false;
  uint64_t m_drained = 0;
  std::vector<Text> m_events;  // being sent
  size_t m_sent = 0;           // of them
  bool m_writing = false;
  bool m_commentDue = false;
  bool m_ended = false;
  std::atomic<bool> m_wakeUnderway{false};
};

}  // namespace

class HttpServer::Impl {
  // Counts how many there are; a handler's end is the end of its own, whether it was called or not.
  class Counted {
   public:
    explicit Counted(int& count) : m_count(&count) { ++count; }
    Counted(Counted&& other) noexcept : m_count(std::exchange(other.m_count, nullptr)) {}
    Counted& operator=(Counted&&) = delete;
    ~Counted() {
      if (m_count) --*m_count;
    }

   private:
    int* m_count;
  };

 public:
  Impl(const HttpSettings& settings, HttpHandler& handler)
      : m_context(settings, handler), m_acceptor(*m_context.ios.front()), m_pause(m_acceptor.get_executor()) {
    LoadCertificate();
    Listen();
    for (const auto& io : m_context.ios) m_threads.emplace_back([this, &io] { Run(*io); });
  }

  ~Impl() {
    m_context.wakeGate->Close();
    for (const auto& io : m_context.ios) io->stop();
    for (std::thread& thread : m_threads) thread.join();
    m_context.slow.stop();  // what has not begun is not wanted any more
    m_context.slow.join();
  }

  uint16_t Port() const { return m_port; }

 private:
  void LoadCertificate() {
    const HttpSettings& settings = m_context.settings;
    if (settings.certFile.empty() && settings.keyFile.empty()) return;
    m_tls.emplace(asio::ssl::context::tls_server);
    error_code error;
    m_tls->set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_tlsv1 |
                       asio::ssl::context::no_tlsv1_1);
    if (m_tls->use_certificate_chain_file(settings.certFile, error)) {
      throw std::runtime_error("cannot use certificate " + settings.certFile + ": " + error.message());
    }
    if (m_tls->use_private_key_file(settings.keyFile, asio::ssl::context::pem, error)) {
      throw std::runtime_error("cannot use key " + settings.keyFile + ": " + error.message());
    }
  }

  void Listen() {
    const HttpSettings& settings = m_context.settings;
    const std::string address = settings.host + ":" + std::to_string(settings.port);
    try {
      tcp::resolver resolver(m_acceptor.get_executor());
      const tcp::endpoint endpoint =
          *resolver.resolve(settings.host, std::to_string(settings.port), tcp::resolver::passive).begin();
      m_acceptor.open(endpoint.protocol());
      m_acceptor.set_option(tcp::acceptor::reuse_address(true));
      m_acceptor.bind(endpoint);
      m_acceptor.listen(1024);
      m_port = m_acceptor.local_endpoint().port();
    } catch (const boost::system::system_error& e) {
      throw std::runtime_error("cannot listen on " + address + ": " + e.code().message());
    }
  }

  // What a handler throws, want of memory, has ended its connection with it, which that handler alone held; or the
  // accepting, which is begun anew.
  void Run(asio::io_context& io) {
    const auto untilStopped = asio::make_work_guard(io);
    while (true) {
      try {
        if (&io == m_context.ios.front().get() && m_accepting == 0) Accept();
        io.run();
        return;
      } catch (const std::exception& e) {
        std::fprintf(stderr, "viewserver: a connection ends: %s\n", e.what());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
    }
  }

  void Accept() {
    asio::io_context& io = *m_context.ios[m_accepted++ % m_context.ios.size()];
    m_acceptor.async_accept(io, [this, counted = Counted(m_accepting)](error_code error, tcp::socket socket) {
      if (!error) {
        Serve(std::move(socket));
        return Accept();
      }
      // Out of descriptors, most likely: some connection will end.
      m_pause.expires_after(std::chrono::milliseconds(100));
      m_pause.async_wait([this, counted = Counted(m_accepting)](error_code) { Accept(); });
    });
  }

  void Serve(tcp::socket&& socket) {
    if (m_context.connections >= m_context.settings.maxConnections) return;  // the socket closes
    if (m_tls) {
      std::make_shared<Connection<TlsStream>>(m_context, std::move(socket), *m_tls)->Start();
    } else {
      std::make_shared<Connection<PlainStream>>(m_context, std::move(socket))->Start();
    }
  }

  // Connections and handlers die with the I/O contexts, so what they use is declared before these.
  std::optional<asio::ssl::context> m_tls;
  // The first thread's own.
  size_t m_accepted = 0;
  int m_accepting = 0;  // the handlers that will accept the next
  Context m_context;
  tcp::acceptor m_acceptor;
  asio::steady_timer m_pause;
  uint16_t m_port = 0;
  std::vector<std::thread> m_threads;
};

HttpServer::HttpServer(const HttpSettings& settings, HttpHandler& handler)
    : m_impl(std::make_unique<Impl>(settings, handler)) {}

HttpServer::~HttpServer() = default;

uint16_t HttpServer::Port() const {
  return m_impl->Port();
}

}  // namespace server
