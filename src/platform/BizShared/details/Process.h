// SPDX-License-Identifier: Apache-2.0
// For the platform's own libraries, not for hosts.
#pragma once

#include <utility>

#include "BizShared/Export.h"
#include "VantBase/Error.h"

namespace BizShared::details {

// The platform belongs to the process that first sends a request or starts a download. A child that fork() makes of it
// has a copy of everything but the threads: its connections are the parent's, locks may be held by nobody, and waiting
// for a thread would never end. On Windows a process that ends is in the same state once its libraries are unloaded.
// All three take no lock. Any thread.

// Whether the platform is this process's. Where it is nobody's yet, it is this process's from now on.
BIZSHARED_API bool ClaimProcess();
// Whether it is another process's, or this one's threads are gone.
BIZSHARED_API bool IsForkedChild();
// What such a child is told instead of the server's answer.
BIZSHARED_API Vant::Base::Error::ErrorCode ForkedChildError();

// Keeps what must not be destroyed in a forked child, where nobody else can end what it waits for.
template <class Owner>
void LeaveToParent(Owner& owner) {
  [[maybe_unused]] static Owner* volatile s_left = nullptr;  // for leak checkers
  s_left = new Owner(std::move(owner));
}

}  // namespace BizShared::details
