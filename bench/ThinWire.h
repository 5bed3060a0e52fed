// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <thread>

namespace bench {

// A proxy on 127.0.0.1 in front of a server there: what the server sends passes a token bucket that all connections
// share, what clients send passes at once.
class ThinWire {
 public:
  enum class Replies { kAsAsked, kUncompressed };

  // Throws std::runtime_error where it cannot listen. With kUncompressed the server is not told what coding its
  // clients take.
  ThinWire(const std::string& serverUrl, double bitsPerSecond, Replies replies);
  ~ThinWire();  // breaks what is connected
  ThinWire(const ThinWire&) = delete;
  ThinWire& operator=(const ThinWire&) = delete;

  std::string Url() const;

 private:
  struct Connection;

  void Serve();
  void PassOn(int from, int to, bool isReply);
  // Returns when that many bytes may pass.
  void Take(size_t bytes);

  const double m_bytesPerSecond;
  const Replies m_replies;
  const uint16_t m_server;
  uint16_t m_port = 0;
  const int m_listener;
  std::mutex m_bucketLock;
  std::chrono::steady_clock::time_point m_freeAt;  // when what has been let through has passed
  std::list<Connection> m_connections;             // of m_thread, until that has ended
  std::thread m_thread;
};

}  // namespace bench
