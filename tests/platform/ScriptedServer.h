// SPDX-License-Identifier: Apache-2.0
// An HTTP/1.1 server on 127.0.0.1 that does to its clients whatever a test tells it to.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace testing_support {

struct Request {
  std::string method;
  std::string target;
  std::map<std::string, std::string> headers;  // names in lower case
  std::string body;
};

// A reply of a management server that holds such data.
inline std::string Envelope(std::string_view data, int errorCode = 0) {
  return R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":)" + std::to_string(errorCode) +
         R"(,"CascadingErrorInfo":"","Data":)" + std::string(data) + "}}";
}

// One accepted connection, used by the handler on the connection's thread.
class Connection {
 public:
  explicit Connection(int socket) : m_socket(socket) {}
  // A whole reply; `headers` are complete lines.
  void Reply(int status, std::string_view body, std::string_view headers = {});
  void ReplyData(std::string_view data, std::string_view headers = {}) { Reply(200, Envelope(data), headers); }
  void ReplyError(int status, int module, int code);
  // Bytes as they are; false when the client is gone.
  bool Send(std::string_view bytes);
  // No further request is read: the connection ends when the handler returns.
  void Close() { m_closing = true; }
  // Says nothing until the client or the server goes away.
  void Stall();

 private:
  friend class ScriptedServer;
  bool Receive(std::string& buffer);
  bool ReadRequest(std::string& buffer, Request& request);

  int m_socket;
  bool m_closing = false;
};

class ScriptedServer {
 public:
  using Handler = std::function<void(const Request&, Connection&)>;

  // The handler is called on the connections' threads, several at once.
  explicit ScriptedServer(Handler handler);
  ~ScriptedServer() { Stop(); }
  void Stop();

  std::string Url() const { return "http://127.0.0.1:" + std::to_string(m_port); }
  int Accepted() const { return m_accepted; }
  std::vector<Request> Requests() const;

 private:
  void Accept();
  void Serve(int socket);

  Handler m_handler;
  int m_listener = -1;
  uint16_t m_port = 0;
  std::atomic<int> m_accepted{0};
  std::atomic<bool> m_stopping{false};
  mutable std::mutex m_mutex;  // guards what follows
  std::vector<Request> m_requests;
  std::vector<int> m_sockets;
  std::vector<std::thread> m_threads;
  std::thread m_acceptor;
};

// Waits at most 20 s for `condition`.
template <class Condition>
bool Eventually(Condition condition) {
  auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

}  // namespace testing_support
