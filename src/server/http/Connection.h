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

#include "server/http/AccessLog.h"
#include "server/http/Compression.h"
#include "server/http/Connections.h"
#include "server/http/Stream.h"

namespace server {

// Lives as long as one of its operations is under way.
class Connection final : public Stranger, public std::enable_shared_from_this<Connection> {
 public:
  Connection(Connections& connections, boost::asio::ip::tcp::socket&& socket, boost::asio::ssl::context* tls);
  ~Connection();

  // Ends at once where there is no room for it.
  void Start();

 private:
  using Clock = std::chrono::steady_clock;
  using error_code = boost::beast::error_code;
  using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;

  std::shared_ptr<Stranger> Alive() override { return weak_from_this().lock(); }
  void Dismiss() override;

  // --- reading -------------------------------------------------------------------------------------------------------

  // Waits as long as a connection may lie idle for the first byte of a request, then less long for its head.
  void AwaitRequest();
  void ReadHead();
  void ReadMoreOfHead();
  void OnHead();
  void TakeHead();
  // Counts the connection as its user's, asking once for each token, or as a stranger's. False: that user holds too
  // many.
  bool Claim();
  bool BecomeStranger();
  void Release();
  // The request is by who is counted as holding the connection.
  bool IsOfItsUser() const;
  // Whose share of the bodies' memory it takes, whose turn it is in a lane.
  std::string Holder() const;
  // The largest body allowed; it sends the refusal and answers nothing where the body is larger or there is no memory.
  std::optional<uint64_t> LimitBody();
  void SayContinue();
  void StartBody();
  void ReadBody();
  // Takes a share for what has come of a body that does not say its length.
  bool CoverBody();
  void OnReadError(error_code error);
  void OnRequest();
  // Once the server ends nothing more is begun.
  HttpReply Answer();
  // False: too many wait there.
  bool AnswerInLane(WorkLane& lane, const std::string& holder, bool keepAlive);

  // --- answering (ConnectionReplies.cpp) -----------------------------------------------------------------------------

  // Answers a request whose rest is not wanted, and ends the connection.
  void Refuse(HttpReply reply);
  void Refuse(const Refusal& refusal);
  void Send(HttpReply reply, bool keepAlive);
  void SendInTime(HttpReply reply, bool keepAlive);
  void SendNow(HttpReply reply, bool keepAlive);
  // Waits for a reply that another thread gives. The timer holds the connection meanwhile.
  void AwaitReply(std::shared_ptr<PendingReply> pending, bool keepAlive);
  void PollReply(bool keepAlive);
  // Any thread.
  void WakeForReply();
  // For who wants that.
  bool IsCompressible() const;
  void SendPart(uint64_t bytes);
  void SendChunk();
  void OnSent();
  void StartEntry();
  // Bytes of the answer have gone out.
  void Count(size_t bytes);
  // Writes down the request and how far it was answered, once.
  void Log() noexcept;
  // Closing with unread input would reset the connection, perhaps before the client has read the answer.
  void Drain();
  void ExpireWrite(size_t bytes);

  // --- event streams (ConnectionReplies.cpp) -------------------------------------------------------------------------

  void StartEvents();
  // Any thread.
  void Wake();
  // A listener has nothing to say; a read tells when it has gone.
  class Held;
  void WatchForEnd();
  void StartHeartbeat();
  // A stream that could miss an event must end: its client comes back for the rest.
  void PumpEvents();
  template <class Action>
  void OrEnd(const Action& action);
  void SendEvents();
  void EndEvents() noexcept;

  Connections& m_connections;
  Stream m_stream;
  boost::asio::steady_timer m_timer;

  boost::beast::flat_buffer m_buffer;
  std::optional<Parser> m_parser;
  BodyShare m_share;
  Clock::time_point m_bodyBegan;
  Address m_peer;
  std::string m_token;
  int32_t m_user = kNobody;  // who is counted as holding it
  bool m_isFirst = true;     // no request has come yet
  HttpRequest m_request;
  bool m_isHead = false;  // the request wants no body
  bool m_isHttp10 = false;
  Codings m_codings;  // that the client wants

  std::optional<Answers::Owed> m_owed;      // while a request is worked on, and until an edit's reply is sent
  std::shared_ptr<PendingReply> m_pending;  // until it is there
  HttpReply m_reply;
  std::string m_head, m_chunk;
  bool m_keepAlive = false;
  bool m_drain = false;
  uint64_t m_drained = 0;
  std::optional<AccessEntry> m_entry;  // of the request that is being answered
  uint64_t m_unsentHead = 0;           // bytes that do not count for the log

  std::vector<Text> m_events;  // being sent
  size_t m_sent = 0;           // of them
  bool m_writing = false;
  bool m_commentDue = false;
  bool m_packsEvents = false;
  bool m_ended = false;
  std::atomic<bool> m_wakeUnderway{false};
};

// What a body, or a piece of a reply, may take beside its time-out.
inline std::chrono::seconds TimeFor(uint64_t bytes) {
  return std::chrono::seconds(bytes / (100 << 10));
}

}  // namespace server
