// SPDX-License-Identifier: Apache-2.0
// For the platform's own libraries, not for hosts.
#pragma once

#include <cstdint>
#include <string>

#include "BizShared/Export.h"
#include "NetLink/ClientMessage.h"

namespace BizShared::details {

// Hears of each edit that goes through CNetCommManager::ClientSynSend, that is of every request but a GET. Called on
// the sending threads, without a lock held.
class BIZSHARED_API IEditWatch {
 public:
  virtual ~IEditWatch() = default;

  // Before the edit is sent; what it answers comes back at the end.
  virtual uint64_t OnEditBegins() = 0;
  // Once the edit has ended, before its sender learns how. `answer` is the reply's body, empty where none arrived.
  virtual void OnEditEnds(uint64_t ticket, const NetLink::CClientSendInfo& send,
                          const std::string& answer) noexcept = 0;
};

}  // namespace BizShared::details
