// SPDX-License-Identifier: Apache-2.0
// For the platform's own libraries, not for hosts.
#pragma once

#include <chrono>
#include <memory>

#include "BizShared/Export.h"

namespace BizShared::details {

// Ends requests and pauses from another thread, at once and for good: what runs with it when Cancel is called, and
// whatever is started with it later, ends as cancelled. Any thread.
class BIZSHARED_API CCanceller {
 public:
  CCanceller();
  ~CCanceller();  // REQUIRES: nothing runs with it any more
  CCanceller(const CCanceller&) = delete;
  CCanceller& operator=(const CCanceller&) = delete;

  void Cancel();
  bool IsCancelled() const;
  // Has what runs with it call its `idle` soon.
  void Wake();
  // Sleeps that long; false, and at once, when cancelled.
  bool Pause(std::chrono::milliseconds duration);

  class Impl;
  Impl& Internals() { return *m_impl; }

 private:
  std::unique_ptr<Impl> m_impl;
};

}  // namespace BizShared::details
