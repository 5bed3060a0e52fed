// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <curl/curl.h>

#include <condition_variable>
#include <mutex>
#include <vector>

#include "BizShared/details/Canceller.h"

namespace BizShared::details {

// m_mutex guards everything. A transfer stands in m_transfers while its multi handle lives, so that waking one up never
// touches a handle that is gone.
class CCanceller::Impl {
 public:
  void Attach(CURLM* transfer);
  void Detach(CURLM* transfer);

  mutable std::mutex m_mutex;
  std::condition_variable m_cancelledNow;
  std::vector<CURLM*> m_transfers;
  bool m_cancelled = false;
};

}  // namespace BizShared::details
