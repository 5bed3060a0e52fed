// SPDX-License-Identifier: Apache-2.0
// For the platform's own libraries, not for hosts.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "BizShared/details/Canceller.h"

namespace BizShared::details {

// What a request of the platform's own needs beyond the plain records; one request, one thread.
struct RequestContext {
  // In.
  CCanceller* canceller = nullptr;
  // True: sends the user's token, and renews a session that the server no longer knows. False: sends `token`.
  bool asUser = true;
  // Gets the body of a 200 piece by piece on the calling thread, until it answers false; a first piece, empty or
  // not, comes as soon as the head is there. There is no limit for the whole request then, only for silence. Must not
  // throw. Empty: the body is collected in the reply record.
  std::function<bool(std::string_view)> receive;
  std::chrono::milliseconds silence{0};  // 0: no limit
  // Called on the calling thread now and then while the request waits, and soon after CCanceller::Wake. Must not throw.
  std::function<void()> idle;

  // In when asUser is false. Out: the token last used, set before sending.
  std::string token;

  // Out.
  int status = 0;                // HTTP status, 0 without a reply
  int systemError = 0;           // errno, where the connection could not be made
  std::string resourceSequence;  // header "Resource-Sequence", empty when absent
  std::string resourceHistory;   // header "Resource-History", likewise
};

}  // namespace BizShared::details
