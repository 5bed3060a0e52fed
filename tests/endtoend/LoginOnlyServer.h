// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/streambuf.hpp>
#include <boost/asio/write.hpp>
#include <iterator>
#include <string>
#include <thread>

namespace test {

// Lets everybody log in and answers everything else with an internal error. One connection and request at a time.
class LoginOnlyServer {
 public:
  LoginOnlyServer() : m_thread([this] { Serve(); }) {}
  ~LoginOnlyServer() {
    m_stopped = true;
    boost::system::error_code ignored;
    boost::asio::ip::tcp::socket wakeUp(m_io);
    wakeUp.connect(m_acceptor.local_endpoint(), ignored);
    m_thread.join();
  }

  std::string Url() const { return "http://127.0.0.1:" + std::to_string(m_acceptor.local_endpoint().port()); }

 private:
  void Serve() {
    while (!m_stopped) {
      boost::asio::ip::tcp::socket socket(m_io);
      boost::system::error_code error;
      m_acceptor.accept(socket, error);
      if (!error && !m_stopped) Answer(socket);
    }
  }

  static void Answer(boost::asio::ip::tcp::socket& socket) {
    boost::system::error_code error;
    boost::asio::streambuf received;
    boost::asio::read_until(socket, received, "\r\n\r\n", error);
    const std::string request{std::istreambuf_iterator<char>(&received), {}};
    const bool login = request.rfind("POST /NXAPI/Vantorel/Platform/V0/Sessions", 0) == 0;
    const std::string body =
        login ? R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0,"CascadingErrorInfo":"","Data":)"
                R"({"Session":{"Token":"t","UserID":1,"UserName":"admin"}}}})"
              : R"({"ResponseStatus":{"ErrorModule":100,"ErrorCode":8,"CascadingErrorInfo":"","Data":{}}})";
    const std::string answer = std::string("HTTP/1.1 ") + (login ? "200 OK" : "500 Internal Server Error") +
                               "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
                               body;
    boost::asio::write(socket, boost::asio::buffer(answer), error);
    socket.shutdown(boost::asio::ip::tcp::socket::shutdown_send, error);
    // Closing with unread data would reset the connection before the client has read the answer.
    char rest[1024];
    while (socket.read_some(boost::asio::buffer(rest), error) > 0) continue;
  }

  boost::asio::io_context m_io;
  boost::asio::ip::tcp::acceptor m_acceptor{m_io, {boost::asio::ip::address_v4::loopback(), 0}};
  std::atomic<bool> m_stopped{false};
  std::thread m_thread;  // last, because it uses the rest
};

}  // namespace test
