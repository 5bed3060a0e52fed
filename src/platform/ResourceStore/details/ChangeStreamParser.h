// SPDX-License-Identifier: Apache-2.0
// For this library and the platform's tests, not for hosts.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ResourceStore/Export.h"

namespace ResourceStore::details {

// One event of a text/event-stream.
struct ChangeEvent {
  std::optional<std::string> id;  // as sent; empty when the event carried none
  std::string type;               // "message" when the event named none; empty where there is an id and nothing else
  std::string data;               // its data lines, joined by '\n'; empty when oversize
  bool oversize = false;          // data longer than the limit was dropped
};

// Takes a text/event-stream in pieces cut anywhere and yields its events. Lines end in LF, CR or CRLF; comments,
// unknown fields and events without data yield nothing, but that an id alone moves the stream on. No more than `limit`
// bytes of an event are kept. One thread at a time.
class RESOURCESTORE_API ChangeStreamParser {
 public:
  static constexpr size_t kDefaultLimit = size_t{64} << 20;

  explicit ChangeStreamParser(size_t limit = kDefaultLimit);

  // Appends the events that `piece` completes. An event that is cut off by the end of the stream is never yielded.
  void Feed(std::string_view piece, std::vector<ChangeEvent>& events);

 private:
  void AppendToLine(std::string_view text);
  void EndLine(std::vector<ChangeEvent>& events);
  void TakeField(std::string_view name, std::string_view value);
  void Dispatch(std::vector<ChangeEvent>& events);

  size_t m_limit;
  std::string m_line;
  bool m_lineTooLong = false;
  bool m_afterCr = false;
  bool m_firstLine = true;
  bool m_hasData = false;
  ChangeEvent m_event;
};

}  // namespace ResourceStore::details
