// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/ChangeStreamParser.h"

#include <utility>

namespace ResourceStore::details {

namespace {
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr size_t kFieldNameRoom = 16;  // "data: " and the like, beside the data itself
}  // namespace

ChangeStreamParser::ChangeStreamParser(size_t limit) : m_limit(limit) {}

void ChangeStreamParser::Feed(std::string_view piece, std::vector<ChangeEvent>& events) {
  while (!piece.empty()) {
    if (std::exchange(m_afterCr, false) && piece.front() == '\n') piece.remove_prefix(1);
    size_t end = piece.find_first_of("\r\n");
    if (end == std::string_view::npos) {
      AppendToLine(piece);
      return;
    }
    AppendToLine(piece.substr(0, end));
    m_afterCr = piece[end] == '\r';
    piece.remove_prefix(end + 1);
    EndLine(events);
  }
}

void ChangeStreamParser::AppendToLine(std::string_view text) {
  if (m_lineTooLong) return;
  if (m_line.size() + text.size() > m_limit + kFieldNameRoom) {
    // What is kept of the line tells which field it was.
    text = text.substr(0, kFieldNameRoom);
    m_lineTooLong = true;
  }
  m_line.append(text);
}

void ChangeStreamParser::EndLine(std::vector<ChangeEvent>& events) {
  std::string_view line = m_line;
  if (m_firstLine && line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
  m_firstLine = false;
  if (line.empty()) {
    Dispatch(events);
  } else {
    size_t colon = line.find(':');
    std::string_view value = colon == std::string_view::npos ? std::string_view() : line.substr(colon + 1);
    if (value.starts_with(' ')) value.remove_prefix(1);
    TakeField(line.substr(0, colon), value);  // a comment is a field without a name
  }
  m_line.clear();
  m_lineTooLong = false;
}

void ChangeStreamParser::TakeField(std::string_view name, std::string_view value) {
  if (name == "data") {
    m_event.oversize = m_event.oversize || m_lineTooLong || m_event.data.size() + 1 + value.size() > m_limit;
    if (m_event.oversize) {
      std::string().swap(m_event.data);
    } else {
      if (m_hasData) m_event.data += '\n';
      m_event.data += value;
    }
    m_hasData = true;
  } else if (m_lineTooLong) {
    return;
  } else if (name == "id") {
    m_event.id = std::string(value);
  } else if (name == "event") {
    m_event.type = value;
  }
}

void ChangeStreamParser::Dispatch(std::vector<ChangeEvent>& events) {
  if (m_hasData) {
    if (m_event.type.empty()) m_event.type = "message";
    events.push_back(std::move(m_event));
  } else if (m_event.id && m_event.type.empty()) {
    events.push_back(std::move(m_event));
  }
  m_event = {};
  m_hasData = false;
}

}  // namespace ResourceStore::details
