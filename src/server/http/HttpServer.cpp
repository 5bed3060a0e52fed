// SPDX-License-Identifier: Apache-2.0
#include "server/http/HttpServer.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdio>
#include <new>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

#include "base/system/Sockets.h"
#include "server/http/Connections.h"

namespace server {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

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
      : m_connections(settings, handler), m_acceptor(*m_connections.ios.front()), m_pause(m_acceptor.get_executor()) {
    LoadCertificate();
    Listen();
    for (const auto& io : m_connections.ios) m_threads.emplace_back([this, &io] { Run(*io); });
  }

  ~Impl() {
    StopListening();
    m_connections.answers.End(m_connections.settings.lastAnswers);
    m_connections.wakeGate->Close();
    for (const auto& io : m_connections.ios) io->stop();
    for (std::thread& thread : m_threads) thread.join();
    m_connections.logins.Stop();
    m_connections.largeBodies.Stop();
  }

  uint16_t Port() const { return m_port; }

 private:
  void LoadCertificate() {
    const HttpSettings& settings = m_connections.settings;
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
    const HttpSettings& settings = m_connections.settings;
    const std::string address = settings.host + ":" + std::to_string(settings.port);
    try {
      tcp::resolver resolver(m_acceptor.get_executor());
      const tcp::endpoint endpoint =
          *resolver.resolve(settings.host, std::to_string(settings.port), tcp::resolver::passive).begin();
      m_acceptor.open(endpoint.protocol());
      base::TakePortAlone(static_cast<std::intptr_t>(m_acceptor.native_handle()));
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
        if (&io == m_connections.ios.front().get() && m_accepting == 0) Accept();
        io.run();
        return;
      } catch (const std::exception& e) {
        std::fprintf(stderr, "viewserver: a connection ends: %s\n", e.what());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
    }
  }

  void StopListening() {
    try {
      asio::post(m_acceptor.get_executor(), [this] {
        error_code ignored;
        m_acceptor.close(ignored);
      });
    } catch (const std::bad_alloc&) {
      // It ends with its thread.
    }
  }

  void Accept() {
    if (!m_acceptor.is_open()) return;
    asio::io_context& io = *m_connections.ios[m_accepted++ % m_connections.ios.size()];
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

  void Serve(tcp::socket&& socket) { StartConnection(m_connections, std::move(socket), m_tls ? &*m_tls : nullptr); }

  // Connections and handlers die with the I/O contexts in m_connections: what they use is declared before it.
  std::optional<asio::ssl::context> m_tls;
  size_t m_accepted = 0;  // first thread only
  int m_accepting = 0;    // first thread only: the handlers that will accept the next
  Connections m_connections;
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
