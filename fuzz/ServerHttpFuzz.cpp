// SPDX-License-Identifier: Apache-2.0
// Any bytes to the listening server. It must answer or close in good time, and still serve the next client. Input: what
// a client sends before it closes its side; "TOKEN" stands for a valid token.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "FuzzInput.h"
#include "server/ViewServer.h"

namespace {

// A call that the fuzzer's own alarm interrupts goes on.
template <class Call>
ssize_t Uninterrupted(Call call) {
  ssize_t result = 0;
  do {
    result = call();
  } while (result < 0 && errno == EINTR);
  return result;
}

class Connection {
 public:
  explicit Connection(uint16_t port) : m_socket(socket(AF_INET, SOCK_STREAM, 0)) {
    const timeval limit{10, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const ssize_t result =
        Uninterrupted([&] { return connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address); });
    // Interrupted, it connects in the meantime.
    fuzz::Require(result == 0 || errno == EISCONN, "the server does not listen", std::strerror(errno));
  }
  ~Connection() {
    // Without waiting for the peer, so that closed connections do not use up the ports.
    const linger hard{1, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    close(m_socket);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void Send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t sent = Uninterrupted([&] { return send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL); });
      if (sent <= 0) return;  // the server may close on what it does not like
      bytes.remove_prefix(static_cast<size_t>(sent));
    }
  }
  // What comes until the server closes, or at least `enough` bytes.
  std::string Receive(size_t enough) {
    std::string received;
    char buffer[4096];
    while (received.size() < enough) {
      const ssize_t count = Uninterrupted([&] { return recv(m_socket, buffer, sizeof buffer, 0); });
      fuzz::Require(count >= 0 || (errno != EAGAIN && errno != EWOULDBLOCK), "the server neither answers nor closes");
      if (count <= 0) break;
      received.append(buffer, static_cast<size_t>(count));
    }
    return received;
  }
  void EndSending() { shutdown(m_socket, SHUT_WR); }

 private:
  int m_socket;
};

struct Server {
  Server() : server(Options()) {
    server.Start();
    token = server.OpenLocalSession("admin")->token;
  }
  static server::ViewServerOptions Options() {
    server::ViewServerOptions options;
    options.dataFile = ":memory:";
    return options;
  }
  server::ViewServer server;
  std::string token;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Server* const running = new Server;  // lives as long as the process
  std::string bytes(reinterpret_cast<const char*>(data), size);
  for (size_t at = 0; (at = bytes.find("TOKEN", at)) != std::string::npos;) bytes.replace(at, 5, running->token);
  {
    Connection client(running->server.Port());
    client.Send(bytes);
    client.EndSending();
    // An event stream that was opened stays open; its head is enough.
    const bool mayStream = bytes.find("hanges") != std::string::npos;
    client.Receive(mayStream && bytes.find("\r\n\r\n") != std::string::npos ? 1 : std::string::npos);
  }
  static unsigned int inputs = 0;
  if (++inputs % 64 == 0) {
    Connection next(running->server.Port());
    next.Send("GET /NXAPI/Vantorel/Platform/V0/Areas HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    fuzz::Require(next.Receive(std::string::npos).rfind("HTTP/1.1 401", 0) == 0, "the next client is not served");
  }
  return 0;
}
