// SPDX-License-Identifier: Apache-2.0
#include "server/api/ListReply.h"

#include "server/documents/Replies.h"

namespace server {

namespace {

constexpr size_t kChunk = size_t{256} << 10;

}  // namespace

ListReply::ListReply(ElementList list)
    : m_list(std::move(list)), m_prefix(ListPrefix(m_list.kind, m_list.changeNumber)), m_suffix(ListSuffix()) {
  m_length = m_prefix.size() + m_suffix.size();
  for (const ElementList::Element& element : m_list.elements) {
    m_length += element.head->size() + (element.document ? element.document->size() : 0) + 1;
  }
  if (!m_list.elements.empty()) m_length += m_list.elements.size() - 1;  // commas
}

bool ListReply::Next(std::string& chunk) {
  const size_t count = m_list.elements.size();
  chunk.clear();
  if (m_suffixSent) return false;
  if (m_next == 0) chunk = m_prefix;
  for (; m_next < count && chunk.size() < kChunk; ++m_next) {
    const ElementList::Element& element = m_list.elements[m_next];
    if (m_next > 0) chunk += ',';
    chunk += *element.head;
    if (element.document) chunk += *element.document;
    chunk += '}';
  }
  if (m_next == count && chunk.size() < kChunk) {
    chunk += m_suffix;
    m_suffixSent = true;
  }
  return true;
}

}  // namespace server
