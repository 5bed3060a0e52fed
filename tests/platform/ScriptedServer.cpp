// SPDX-License-Identifier: Apache-2.0
#include "ScriptedServer.h"

#include <cctype>
#include <cstdlib>

#include "system/Sockets.h"

namespace testing_support {

namespace {

// Takes the text up to `end` off the front of `text`.
std::string TakeUntil(std::string& text, std::string_view end) {
  size_t at = text.find(end);
  std::string front = text.substr(0, at);
  text.erase(0, at == std::string::npos ? at : at + end.size());
  return front;
}

}  // namespace

void Connection::Reply(int status, std::string_view body, std::string_view headers) {
  Send("HTTP/1.1 " + std::to_string(status) + " Scripted\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
       std::string(headers) + "\r\n" + std::string(body));
}

void Connection::ReplyError(int status, int module, int code) {
  Reply(status, R"({"ResponseStatus":{"ErrorModule":)" + std::to_string(module) + R"(,"ErrorCode":)" +
                    std::to_string(code) + R"(,"CascadingErrorInfo":"from below"}})");
}

bool Connection::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ptrdiff_t sent = test_sockets::Send(m_socket, bytes.data(), bytes.size());
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
  return true;
}

void Connection::Stall() {
  std::string ignored;
  while (Receive(ignored)) ignored.clear();
  m_closing = true;
}

bool Connection::Receive(std::string& buffer) {
  char bytes[4096];
  const ptrdiff_t received = test_sockets::Receive(m_socket, bytes, sizeof bytes);
  if (received > 0) buffer.append(bytes, static_cast<size_t>(received));
  return received > 0;
}

bool Connection::ReadRequest(std::string& buffer, Request& request) {
  while (buffer.find("\r\n\r\n") == std::string::npos) {
    if (!Receive(buffer)) return false;
  }
  std::string head = TakeUntil(buffer, "\r\n\r\n") + "\r\n";
  request.method = TakeUntil(head, " ");
  request.target = TakeUntil(head, " ");
  TakeUntil(head, "\r\n");
  while (!head.empty()) {
    std::string line = TakeUntil(head, "\r\n");
    std::string name = TakeUntil(line, ": ");
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    request.headers[name] = line;
  }
  size_t length = std::strtoul(request.headers["content-length"].c_str(), nullptr, 10);
  while (buffer.size() < length) {
    if (!Receive(buffer)) return false;
  }
  request.body = buffer.substr(0, length);
  buffer.erase(0, length);
  return true;
}

ScriptedServer::ScriptedServer(Handler handler) : m_handler(std::move(handler)) {
  m_listener = test_sockets::Listen(m_port);
  m_acceptor = std::thread([this] { Accept(); });
}

void ScriptedServer::Stop() {
  if (m_stopping.exchange(true)) return;
  test_sockets::StopListening(m_listener);
  m_acceptor.join();
  test_sockets::CloseListener(m_listener);
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (int socket : m_sockets) test_sockets::ShutDown(socket);
  }
  for (std::thread& thread : m_threads) thread.join();
  for (int socket : m_sockets) test_sockets::Close(socket);
}

std::vector<Request> ScriptedServer::Requests() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_requests;
}

void ScriptedServer::Accept() {
  while (!m_stopping) {
    int socket = test_sockets::Accept(m_listener);
    if (socket < 0) return;
    ++m_accepted;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_sockets.push_back(socket);
    m_threads.emplace_back([this, socket] { Serve(socket); });
  }
}

// The socket is only shut down here and closed by Stop, so that its number is not given out again meanwhile.
void ScriptedServer::Serve(int socket) {
  Connection connection(socket);
  std::string buffer;
  Request request;
  while (!connection.m_closing && !m_stopping && connection.ReadRequest(buffer, request)) {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_requests.push_back(request);
    }
    m_handler(request, connection);
    request = {};
  }
  test_sockets::ShutDown(socket);
}

}  // namespace testing_support
