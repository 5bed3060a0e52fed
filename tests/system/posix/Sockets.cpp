// SPDX-License-Identifier: Apache-2.0
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

#include "system/Sockets.h"

namespace test_sockets {

namespace {

int New() {
  return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

sockaddr_in Loopback(uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// What is sent goes at once.
void SetPrompt(int socket) {
  const int on = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

}  // namespace

int Listen(uint16_t& port) {
  const int listener = New();
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, generic, size) != 0 || listen(listener, 64) != 0 || getsockname(listener, generic, &size) != 0) {
    throw std::runtime_error("cannot listen on 127.0.0.1");
  }
  port = ntohs(address.sin_port);
  return listener;
}

int Accept(int listener) {
  const int client = accept(listener, nullptr, nullptr);
  SetPrompt(client);
  return client;
}

void StopListening(int listener) {
  shutdown(listener, SHUT_RDWR);
}

void CloseListener(int listener) {
  close(listener);
}

int Connect(uint16_t port, const char* from) {
  const int made = New();
  const sockaddr_in address = Loopback(port);
  SetPrompt(made);
  sockaddr_in own{};
  own.sin_family = AF_INET;
  if (from) inet_pton(AF_INET, from, &own.sin_addr);
  const int on = 1;
  setsockopt(made, IPPROTO_IP, IP_BIND_ADDRESS_NO_PORT, &on, sizeof on);
  if (bind(made, reinterpret_cast<sockaddr*>(&own), sizeof own) == 0 &&
      connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    return made;
  }
  close(made);
  throw std::runtime_error("cannot connect to the server");
}

ptrdiff_t Send(int socket, const char* bytes, size_t size) {
  return send(socket, bytes, size, MSG_NOSIGNAL);
}

ptrdiff_t Receive(int socket, char* bytes, size_t size) {
  return recv(socket, bytes, size, 0);
}

bool IsReadableWithin(int socket, int milliseconds) {
  pollfd readable{socket, POLLIN, 0};
  return poll(&readable, 1, milliseconds) > 0;
}

void ShutDown(int socket) {
  shutdown(socket, SHUT_RDWR);
}

void Close(int socket) {
  close(socket);
}

}  // namespace test_sockets
