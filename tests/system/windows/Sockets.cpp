// SPDX-License-Identifier: Apache-2.0
// Handles of sockets have no more than 32 bits that count.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <mutex>
#include <set>
#include <stdexcept>

#include "system/Sockets.h"

namespace test_sockets {

namespace {

SOCKET HandleOf(int socket) {
  return static_cast<SOCKET>(socket);
}

SOCKET New() {
  static const bool s_isReady = [] {
    WSADATA data;
    return WSAStartup(MAKEWORD(2, 2), &data) == 0;
  }();
  return s_isReady ? socket(AF_INET, SOCK_STREAM, 0) : INVALID_SOCKET;
}

// Those that were shut down and not closed yet.
std::mutex g_mutex;
std::set<int> g_shut;

bool IsShut(int socket) {
  const std::lock_guard lock(g_mutex);
  return g_shut.count(socket) != 0;
}

sockaddr_in Loopback(uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// What is sent goes at once.
void SetPrompt(SOCKET socket) {
  const char on = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

}  // namespace

int Listen(uint16_t& port) {
  const SOCKET listener = New();
  sockaddr_in address = Loopback(0);
  int size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, generic, size) != 0 || listen(listener, 64) != 0 || getsockname(listener, generic, &size) != 0) {
    throw std::runtime_error("cannot listen on 127.0.0.1");
  }
  port = ntohs(address.sin_port);
  return static_cast<int>(listener);
}

int Accept(int listener) {
  const SOCKET accepted = accept(HandleOf(listener), nullptr, nullptr);
  SetPrompt(accepted);
  return accepted == INVALID_SOCKET ? -1 : static_cast<int>(accepted);
}

// A shutdown would not wake who accepts.
void StopListening(int listener) {
  closesocket(HandleOf(listener));
}

void CloseListener(int) {}

int Connect(uint16_t port, const char* from) {
  const SOCKET made = New();
  const sockaddr_in address = Loopback(port);
  SetPrompt(made);
  sockaddr_in own{};
  own.sin_family = AF_INET;
  if (from) inet_pton(AF_INET, from, &own.sin_addr);
  if ((!from || bind(made, reinterpret_cast<sockaddr*>(&own), sizeof own) == 0) &&
      connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    return static_cast<int>(made);
  }
  closesocket(made);
  throw std::runtime_error("cannot connect to the server");
}

ptrdiff_t Send(int socket, const char* bytes, size_t size) {
  return send(HandleOf(socket), bytes, static_cast<int>(size), 0);
}

// A shutdown by another thread need not wake who reads.
ptrdiff_t Receive(int socket, char* bytes, size_t size) {
  while (!IsReadableWithin(socket, 50)) {
    if (IsShut(socket)) return 0;
  }
  return recv(HandleOf(socket), bytes, static_cast<int>(size), 0);
}

bool IsReadableWithin(int socket, int milliseconds) {
  WSAPOLLFD readable{HandleOf(socket), POLLIN, 0};
  return WSAPoll(&readable, 1, milliseconds) > 0;
}

void ShutDown(int socket) {
  shutdown(HandleOf(socket), SD_BOTH);
  const std::lock_guard lock(g_mutex);
  g_shut.insert(socket);
}

void Close(int socket) {
  {
    const std::lock_guard lock(g_mutex);
    g_shut.erase(socket);
  }
  closesocket(HandleOf(socket));
}

}  // namespace test_sockets
