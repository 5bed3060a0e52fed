// SPDX-License-Identifier: Apache-2.0
// For the platform's own libraries, not for hosts.
#pragma once

#include <chrono>
#include <vector>

#include "BizShared/Export.h"
#include "base/Mutex.h"

namespace BizShared::details {

// What runs with a canceller and may be asleep meanwhile.
class IWakeable {
 public:
  // Called on any thread; must not wait.
  virtual void WakeUp() = 0;

 protected:
  ~IWakeable() = default;
};

// Ends requests and pauses from another thread, at once and for good: what runs with it when Cancel is called, and
// whatever is started with it later, ends as cancelled. Nothing may run with it when it is destroyed. Any thread.
class BIZSHARED_API CCanceller {
 public:
  void Cancel();
  bool IsCancelled() const;
  // Has what runs with it call its `idle` soon.
  void Wake();
  // Sleeps that long; false, and at once, when cancelled.
  bool Pause(std::chrono::milliseconds duration);

  // The runner is woken by Cancel and Wake from Attach on. It must stay until Detach has returned.
  void Attach(IWakeable& runner);
  void Detach(IWakeable& runner);

 private:
  void WakeAll() REQUIRES(m_mutex);

  mutable base::Mutex m_mutex;
  base::Condition m_cancelledNow;
  std::vector<IWakeable*> m_runners GUARDED_BY(m_mutex);
  bool m_cancelled GUARDED_BY(m_mutex) = false;
};

}  // namespace BizShared::details
