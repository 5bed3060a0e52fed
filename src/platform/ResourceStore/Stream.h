// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ResourceStore::Stream {

// Which of a camera's streams to open, by the server's number; any number may occur.
enum StreamType : int { StreamTypeDefault = 0 };

}  // namespace ResourceStore::Stream
