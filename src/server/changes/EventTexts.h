// SPDX-License-Identifier: Apache-2.0
// A change as the event of a change stream.
#pragma once

#include "server/changes/Change.h"

namespace server {

// The events of one change. Texts that many listeners hear are made once.
class EventTexts {
 public:
  explicit EventTexts(const Change& change) : m_change(change) {}
  Text For(const Caller& listener);  // null where the listener hears nothing

 private:
  const Change& m_change;
  Text m_texts[3][2][2];  // by method, by sight, foreign or own
};

}  // namespace server
