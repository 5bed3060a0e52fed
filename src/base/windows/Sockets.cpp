// SPDX-License-Identifier: Apache-2.0
#include "base/system/Sockets.h"

// clang-format off
#include <winsock2.h>
#include <mstcpip.h>
#include <ws2tcpip.h>
// clang-format on

namespace base {

namespace {

void Set(std::intptr_t socket, int level, int name, DWORD value) {
  setsockopt(static_cast<SOCKET>(socket), level, name, reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

// Windows asks a silent peer ten times, so that here they are close together.
void FindDeadPeer(std::intptr_t socket) {
  constexpr int kGiveUpAfter = 5;  // TCP_MAXRT: of what is sent, in seconds
  tcp_keepalive often{1, 20000, 3000};
  DWORD size = 0;
  WSAIoctl(static_cast<SOCKET>(socket), SIO_KEEPALIVE_VALS, &often, sizeof often, nullptr, 0, &size, nullptr, nullptr);
  Set(socket, IPPROTO_TCP, kGiveUpAfter, 50);
}

// What is called SO_REUSEADDR there lets others take the port away.
void TakePortAlone(std::intptr_t socket) {
  Set(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, 1);
}

}  // namespace base
