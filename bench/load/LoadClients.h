// SPDX-License-Identifier: Apache-2.0
// The clients that load a server: those that listen and those that edit. One thread.
#pragma once

#include <algorithm>
#include <array>
#include <boost/asio.hpp>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "../../tests/server/TestClient.h"

namespace load {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using Clock = std::chrono::steady_clock;
using server::test::kRoot;

inline double Milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

// What has been edited and what must be heard of it. A view's name is "<number of the edit>".
struct Ledger {
  std::vector<Clock::time_point> sent;           // by number of the edit
  std::map<int32_t, std::vector<size_t>> edits;  // of a view, in order
  std::vector<float> delays;                     // of all events, in milliseconds
  size_t disorder = 0;
};

// One listener.
class Stream : public std::enable_shared_from_this<Stream> {
 public:
  Stream(asio::io_context& io, Ledger& ledger) : m_socket(io), m_ledger(ledger) {}

  void Open(uint16_t port, const std::string& token, int64_t after) {
    m_socket.connect({asio::ip::make_address("127.0.0.1"), port});
    asio::write(m_socket, asio::buffer("GET " + kRoot + "V0/Changes?After=" + std::to_string(after) +
                                       " HTTP/1.1\r\nHost: load\r\nAuthorization: Bearer " + token + "\r\n\r\n"));
    Read();
  }
  size_t Heard() const { return m_heard; }
  Clock::time_point LastHeard() const { return m_lastHeard; }
  bool HasEnded() const { return m_ended; }
  // Whether every edit of that view has been heard.
  bool Knows(int32_t view) const {
    const auto position = m_positions.find(view);
    return (position == m_positions.end() ? 0 : position->second) == m_ledger.edits[view].size();
  }

 private:
  void Read() {
    m_socket.async_read_some(asio::buffer(m_piece), [self = shared_from_this()](error_code error, size_t bytes) {
      if (error) {
        self->m_ended = true;
        return;
      }
      self->m_received.append(self->m_piece.data(), bytes);
      self->TakeEvents();
      self->Read();
    });
  }

  void TakeEvents() {
    size_t begin = 0;
    for (size_t end = 0; (end = m_received.find("\n\n", begin)) != std::string::npos; begin = end + 2) {
      TakeEvent(std::string_view(m_received).substr(begin, end - begin));
    }
    m_received.erase(0, begin);
  }

  void TakeEvent(std::string_view event) {
    static constexpr std::string_view kId = "{\"ID\":";
    static constexpr std::string_view kName = "\"Name\":\"";
    const size_t id = event.find(kId);
    const size_t name = event.find(kName);
    if (id == std::string_view::npos || name == std::string_view::npos) return;  // a sign of life
    const auto view = static_cast<int32_t>(std::strtol(event.data() + id + kId.size(), nullptr, 10));
    const size_t number = std::strtoul(event.data() + name + kName.size(), nullptr, 10);
    size_t& position = m_positions[view];
    const std::vector<size_t>& edits = m_ledger.edits[view];
    if (position >= edits.size() || edits[position] != number) ++m_ledger.disorder;
    ++position;
    ++m_heard;
    m_lastHeard = Clock::now();
    m_ledger.delays.push_back(static_cast<float>(Milliseconds(m_lastHeard - m_ledger.sent[number])));
  }

  tcp::socket m_socket;
  Ledger& m_ledger;
  std::array<char, 16384> m_piece{};
  std::string m_received;
  std::map<int32_t, size_t> m_positions;  // how many edits of a view have been heard
  size_t m_heard = 0;
  Clock::time_point m_lastHeard;
  bool m_ended = false;
};

// One connection that sends edits, one after the other.
class Editor : public std::enable_shared_from_this<Editor> {
 public:
  Editor(asio::io_context& io, uint16_t port, Ledger& ledger) : m_socket(io), m_ledger(ledger) {
    m_socket.connect({asio::ip::make_address("127.0.0.1"), port});
    m_socket.set_option(tcp::no_delay(true));
  }

  struct Edit {
    size_t number;
    int32_t view;
    int32_t owner;
    const std::string* token;
  };
  void Ask(const Edit& edit) {
    m_waiting.push_back(edit);
    m_longest = std::max(m_longest, m_waiting.size());
    if (m_waiting.size() == 1) Send();
  }
  size_t Waiting() const { return m_waiting.size(); }
  size_t Longest() const { return m_longest; }
  size_t Refused() const { return m_refused; }

 private:
  void Send() {
    const Edit& edit = m_waiting.front();
    const std::string body = server::test::ViewBody(std::to_string(edit.number), -1, edit.owner,
                                                    R"(,"PlanPages":[{"PlanViewItem":[{"ResourceType":1001}]}])");
    m_request = "PUT " + kRoot + "V0/Views/" + std::to_string(edit.view) + " HTTP/1.1\r\nHost: load\r\n" +
                "Authorization: Bearer " + *edit.token + "\r\nContent-Length: " + std::to_string(body.size()) +
                "\r\n\r\n" + body;
    m_ledger.edits[edit.view].push_back(edit.number);
    m_ledger.sent[edit.number] = Clock::now();
    asio::async_write(m_socket, asio::buffer(m_request), [self = shared_from_this()](error_code error, size_t) {
      if (!error) self->ReadAnswer();
    });
  }

  void ReadAnswer() {
    m_socket.async_read_some(asio::buffer(m_piece), [self = shared_from_this()](error_code error, size_t bytes) {
      if (error) return;
      self->m_received.append(self->m_piece.data(), bytes);
      if (!self->m_received.ends_with("}}}")) return self->ReadAnswer();  // the end of the envelope
      self->m_refused += self->m_received.find("\"ErrorCode\":0") == std::string::npos;
      self->m_received.clear();
      self->m_waiting.pop_front();
      if (!self->m_waiting.empty()) self->Send();
    });
  }

  tcp::socket m_socket;
  Ledger& m_ledger;
  std::deque<Edit> m_waiting;
  std::array<char, 4096> m_piece{};
  std::string m_request, m_received;
  size_t m_longest = 0;
  size_t m_refused = 0;
};

}  // namespace load
