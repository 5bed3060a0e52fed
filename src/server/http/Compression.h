// SPDX-License-Identifier: Apache-2.0
// Replies whose body is compressed while it is sent, and events that are compressed.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "base/Mutex.h"
#include "server/http/HttpHandler.h"

namespace server {

enum class Coding { kNone, kGzip, kZstd };

// As heads name it; kNone has no name.
const char* NameOf(Coding coding);

struct Codings {
  Coding ofBody = Coding::kNone;
  Coding ofStream = Coding::kNone;  // of events, for which there is gzip alone
};

// What a client that says so wants most, of what there is; zstd where it is all the same. A client that says nothing
// wants none, and gets none where it wants nothing that there is.
Codings WantedCodings(std::string_view acceptEncoding);

// A smaller body is sent as it is.
constexpr uint64_t kLeastCompressed = 1024;

// Takes the body out of `reply`, its source's or its text, and gives it compressed; nobody knows its Length. Nothing of
// it is there before it is asked for, and nothing is kept but the compressor's window. Throws std::bad_alloc, as its
// Next does. REQUIRES: not kNone.
std::shared_ptr<BodySource> CompressedBody(Coding coding, HttpReply& reply);

// Events of streams, each compressed by itself, so that it can follow any other: what many listeners hear is compressed
// once, and no listener has a window of its own. Long ones are framed as they are: others wait for the thread. Any
// thread.
class PackedEvents {
 public:
  // What a compressed stream begins with.
  static Text Begin();
  // Throws std::bad_alloc.
  Text Pack(const Text& event);

 private:
  struct Packed {
    std::weak_ptr<const std::string> event;
    std::weak_ptr<const std::string> packed;  // there as long as it is sent to somebody
    Text kept;                                // the same, while there is room for it
  };

  base::Mutex m_mutex;  // leaf
  std::deque<Packed> m_latest GUARDED_BY(m_mutex);
  size_t m_bytes GUARDED_BY(m_mutex) = 0;  // that are kept
};

}  // namespace server
