// SPDX-License-Identifier: Apache-2.0
// Replies whose body is compressed while it is sent.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "server/http/HttpHandler.h"

namespace server {

enum class Coding { kNone, kGzip, kZstd };

// As heads name it; kNone has no name.
const char* NameOf(Coding coding);

// What a client that says so wants most, of what there is; zstd where it is all the same. A client that says nothing
// wants none, and gets none where it wants nothing that there is.
Coding WantedCoding(std::string_view acceptEncoding);

// A smaller body is sent as it is.
constexpr uint64_t kLeastCompressed = 1024;

// Takes the body out of `reply`, its source's or its text, and gives it compressed, in the chunks of HTTP/1.1 as they
// go over the wire, with the one that ends it: nobody knows its Length. Nothing of it is there before it is asked for,
// and nothing is kept but the compressor's window. Throws std::bad_alloc, as its Next does. REQUIRES: not kNone.
std::shared_ptr<BodySource> CompressedBody(Coding coding, HttpReply& reply);

}  // namespace server
