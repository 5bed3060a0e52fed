// SPDX-License-Identifier: Apache-2.0
// One connection. Beast reads its requests; replies are written as they are. It runs on one thread, whose I/O context
// no other thread runs: a strand would allocate where it cannot fail, so that want of memory ended the process.
#pragma once

#include <atomic>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "server/http/Connections.h"
#include "server/http/Stream.h"

namespace server {

// Lives as long as one of its operations is under way.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(Connections& connections, boost::asio::ip::tcp::socket&& socket, boost::asio::ssl::context* tls);
  ~Connection();

  void Start();

 private:
  using error_code = boost::beast::error_code;
  using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;

  // --- reading -------------------------------------------------------------------------------------------------------

  // Waits as long as a connection may lie idle for the first byte of a request, then less long for its head.
  void AwaitRequest();
  void ReadHead();
  void OnHead(error_code error);
  void TakeHead();
  // Counts the connection as its user's, asking once for each token. False: that user holds too many.
  bool Claim();
  void Release();
  void SayContinue();
  void StartBody();
  void ReadBody();
  void OnReadError(error_code error);
  void OnRequest();

  // --- answering (ConnectionReplies.cpp) -----------------------------------------------------------------------------

  // Answers a request whose rest is not wanted, and ends the connection.
  void Refuse(HttpReply reply);
  void Send(HttpReply reply, bool keepAlive);
  void SendNow(HttpReply reply, bool keepAlive);
  void SendPart(uint64_t bytes);
  void SendChunk();
  void OnSent();
  // Closing with unread input would reset the connection, perhaps before the client has read the answer.
  void Drain();
  void ExpireWrite(size_t bytes);

  // --- event streams (ConnectionReplies.cpp) -------------------------------------------------------------------------

  void StartEvents();
  // Any thread.
  void Wake();
  // A listener has nothing to say; a read tells when it has gone.
  void WatchForEnd();
  void StartHeartbeat();
  // A stream that could miss an event must end: its client comes back for the rest.
  void PumpEvents();
  void SendEvents();
  void EndEvents();

  Connections& m_connections;
  Stream m_stream;
  boost::asio::steady_timer m_timer;

  boost::beast::flat_buffer m_buffer;
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

// What a body, or a piece of a reply, may take beside its time-out.
inline std::chrono::seconds TimeFor(uint64_t bytes) {
  return std::chrono::seconds(bytes / (100 << 10));
}

}  // namespace server
