// SPDX-License-Identifier: Apache-2.0
#include "ThinWire.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "system/Sockets.h"

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

// What the bucket holds, as time: so much may pass at once after a pause. It also makes up for waking late.
constexpr auto kBucket = std::chrono::milliseconds(2);
constexpr size_t kPiece = 16384;

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
      m_server(static_cast<uint16_t>(std::atoi(serverUrl.c_str() + serverUrl.rfind(':') + 1))),
      m_listener(test_sockets::Listen(m_port)),
      m_thread([this] { Serve(); }) {}

ThinWire::~ThinWire() {
  test_sockets::StopListening(m_listener);
  m_thread.join();
  for (Connection& connection : m_connections) {
    test_sockets::ShutDown(connection.client);
    test_sockets::ShutDown(connection.server);
    connection.requests.join();
    connection.replies.join();
    test_sockets::Close(connection.client);
    test_sockets::Close(connection.server);
  }
  test_sockets::CloseListener(m_listener);
}

std::string ThinWire::Url() const {
  return "http://127.0.0.1:" + std::to_string(m_port);
}

void ThinWire::Serve() {
  for (int client; (client = test_sockets::Accept(m_listener)) >= 0;) {
    const int server = test_sockets::Connect(m_server);
    m_connections.push_back({client, server, std::thread([this, client, server] { PassOn(client, server, false); }),
                             std::thread([this, client, server] { PassOn(server, client, true); })});
  }
}

void ThinWire::PassOn(int from, int to, bool isReply) {
  std::array<char, kPiece> piece;
  for (ptrdiff_t count; (count = test_sockets::Receive(from, piece.data(), piece.size())) > 0;) {
    const std::string_view bytes(piece.data(), static_cast<size_t>(count));
    if (isReply) {
      Take(bytes.size());
    } else if (m_replies == Replies::kUncompressed) {
      HideCodings(bytes, piece.data());
    }
    if (test_sockets::Send(to, bytes.data(), bytes.size()) != count) break;
  }
  test_sockets::ShutDown(from);
  test_sockets::ShutDown(to);
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
