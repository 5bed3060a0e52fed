// SPDX-License-Identifier: Apache-2.0
// The bytes of a connection, plain or through TLS. One class for both, so that nothing is instantiated for each.
#pragma once

#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <optional>
#include <utility>

namespace server {

class Stream {
 public:
  using executor_type = boost::beast::tcp_stream::executor_type;

  // `tls` is null for plain bytes.
  Stream(boost::asio::ip::tcp::socket&& socket, boost::asio::ssl::context* tls) : m_tcp(std::move(socket)) {
    if (tls) m_tls.emplace(m_tcp, *tls);
  }

  boost::beast::tcp_stream& Tcp() { return m_tcp; }
  bool IsTls() const { return m_tls.has_value(); }
  executor_type get_executor() { return m_tcp.get_executor(); }

  template <class Buffers, class Handler>
  void async_read_some(const Buffers& buffers, Handler&& handler) {
    m_tls ? m_tls->async_read_some(buffers, std::forward<Handler>(handler))
          : m_tcp.async_read_some(buffers, std::forward<Handler>(handler));
  }
  template <class Buffers, class Handler>
  void async_write_some(const Buffers& buffers, Handler&& handler) {
    m_tls ? m_tls->async_write_some(buffers, std::forward<Handler>(handler))
          : m_tcp.async_write_some(buffers, std::forward<Handler>(handler));
  }
  // REQUIRES of both: IsTls.
  template <class Handler>
  void AsyncHandshake(Handler&& handler) {
    m_tls->async_handshake(boost::asio::ssl::stream_base::server, std::forward<Handler>(handler));
  }
  template <class Handler>
  void AsyncShutdown(Handler&& handler) {
    m_tls->async_shutdown(std::forward<Handler>(handler));
  }

 private:
  boost::beast::tcp_stream m_tcp;
  std::optional<boost::asio::ssl::stream<boost::beast::tcp_stream&>> m_tls;
};

}  // namespace server
