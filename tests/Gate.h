// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <future>

namespace testing_support {

// Holds the one who passes until it is opened, for 30 s at most, so that a fault fails a test instead of hanging it.
class Gate {
 public:
  void Pass() {
    m_reached.set_value();
    m_open.get_future().wait_for(std::chrono::seconds(30));
  }
  bool WaitUntilReached() {
    return m_reached.get_future().wait_for(std::chrono::seconds(30)) == std::future_status::ready;
  }
  void Open() { m_open.set_value(); }

 private:
  std::promise<void> m_reached, m_open;
};

}  // namespace testing_support
