// SPDX-License-Identifier: Apache-2.0
// Options of TCP sockets that are called otherwise on each system. A system may lack one: it is left out then.
#pragma once

#include <cstdint>

namespace base {

// A peer that has gone without a word is found within a minute, whether there is something to send it or not.
void FindDeadPeer(std::intptr_t socket);

// The port may be listened on again as soon as nobody does, and by nobody else meanwhile. Before it is bound.
void TakePortAlone(std::intptr_t socket);

}  // namespace base
