// SPDX-License-Identifier: Apache-2.0
#include "ThinWire.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

// What the bucket holds, as time: so much may pass at once after a pause. It also makes up for waking late.
constexpr auto kBucket = std::chrono::milliseconds(2);
constexpr size_t kPiece = 16384;

sockaddr_in Local(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int NewSocket() {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (socket < 0) throw std::runtime_error("no socket for the thin wire");
  return socket;
}

bool SendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
  return true;
}

// The header's name becomes one of the same length that nobody knows. Heads come in one piece here.
void HideCodings(std::string_view head, char* bytes) {
  const size_t at = head.find("Accept-Encoding:");
  if (at != std::string_view::npos) bytes[at] = 'X';
}

}  // namespace

struct ThinWire::Connection {
  int client = -1;
  int server = -1;
  std::thread requests, replies;
};

ThinWire::ThinWire(const std::string& serverUrl, double bitsPerSecond, Replies replies)
    : m_bytesPerSecond(bitsPerSecond / 8),
      m_replies(replies),
      m_serverPort(std::atoi(serverUrl.c_str() + serverUrl.rfind(':') + 1)),
      m_listener(NewSocket()) {
  sockaddr_in address = Local(0);
  socklen_t size = sizeof address;
  if (::bind(m_listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(m_listener, 16) != 0 ||
      ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    ::close(m_listener);
    throw std::runtime_error("the thin wire cannot listen");
  }
  m_port = ntohs(address.sin_port);
  m_thread = std::thread([this] { Serve(); });
}

ThinWire::~ThinWire() {
  {
    const std::scoped_lock lock(m_connectionsLock);
    m_ends = true;
    ::shutdown(m_listener, SHUT_RDWR);
    for (const Connection& connection : m_connections) {
      ::shutdown(connection.client, SHUT_RDWR);
      ::shutdown(connection.server, SHUT_RDWR);
    }
  }
  m_thread.join();
  for (Connection& connection : m_connections) {
    connection.requests.join();
    connection.replies.join();
    ::close(connection.client);
    ::close(connection.server);
  }
  ::close(m_listener);
}

std::string ThinWire::Url() const {
  return "http://127.0.0.1:" + std::to_string(m_port);
}

void ThinWire::Serve() {
  for (int client; (client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    const std::scoped_lock lock(m_connectionsLock);
    const int server = NewSocket();
    const sockaddr_in address = Local(m_serverPort);
    if (m_ends || ::connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      ::close(client);
      ::close(server);
      continue;
    }
    const int on = 1;
    for (const int socket : {client, server}) ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    Connection& connection = m_connections.emplace_back();
    connection.client = client;
    connection.server = server;
    connection.requests = std::thread([this, client, server] { PassOn(client, server, false); });
    connection.replies = std::thread([this, client, server] { PassOn(server, client, true); });
  }
}

void ThinWire::PassOn(int from, int to, bool isReply) {
  std::array<char, kPiece> piece;
  for (ssize_t count; (count = ::recv(from, piece.data(), piece.size(), 0)) > 0;) {
    const std::string_view bytes(piece.data(), static_cast<size_t>(count));
    if (isReply) {
      Take(bytes.size());
    } else if (m_replies == Replies::kUncompressed) {
      HideCodings(bytes, piece.data());
    }
    if (!SendAll(to, bytes)) break;
  }
  ::shutdown(from, SHUT_RD);
  ::shutdown(to, SHUT_WR);
}

void ThinWire::Take(size_t bytes) {
  const auto time = std::chrono::duration<double>(static_cast<double>(bytes) / m_bytesPerSecond);
  Clock::time_point passed;
  {
    const std::scoped_lock lock(m_bucketLock);
    m_freeAt = std::max(m_freeAt, Clock::now() - kBucket) + std::chrono::duration_cast<Clock::duration>(time);
    passed = m_freeAt;
  }
  std::this_thread::sleep_until(passed);
}

}  // namespace bench
