// SPDX-License-Identifier: Apache-2.0
// A list reply, put together from its elements' stored texts while it is sent.
#pragma once

#include "server/http/HttpHandler.h"
#include "server/site/Site.h"

namespace server {

class ListReply : public BodySource {
 public:
  explicit ListReply(ElementList list);
  uint64_t Length() const override { return m_length; }
  bool Next(std::string& chunk) override;

 private:
  const ElementList m_list;
  const std::string m_prefix, m_suffix;
  uint64_t m_length = 0;
  size_t m_next = 0;  // the element to send next
  bool m_suffixSent = false;
};

}  // namespace server
