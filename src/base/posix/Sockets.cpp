// SPDX-License-Identifier: Apache-2.0
#include "base/system/Sockets.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace base {

namespace {

void Set(std::intptr_t socket, int level, int name, int value) {
  setsockopt(static_cast<int>(socket), level, name, &value, sizeof value);
}

}  // namespace

void FindDeadPeer(std::intptr_t socket) {
  Set(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
  Set(socket, IPPROTO_TCP, TCP_KEEPIDLE, 20);
  Set(socket, IPPROTO_TCP, TCP_KEEPINTVL, 10);
  Set(socket, IPPROTO_TCP, TCP_KEEPCNT, 3);
  Set(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, 50000);
}

void TakePortAlone(std::intptr_t socket) {
  Set(socket, SOL_SOCKET, SO_REUSEADDR, 1);
}

}  // namespace base
