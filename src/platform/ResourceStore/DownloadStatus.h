// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "VantBase/Error.h"

namespace ResourceStore {

// How far the download of areas, view groups and views is.
enum class DownloadState {
  NotStarted,   // before Start, and after Stop
  Connecting,   // started; the server has not answered yet
  Downloading,  // the server answers, and not all lists are there, or not again after changes were lost
  Ready,        // all lists are there, and changes are followed
  Failing,      // the last attempt failed; another follows by itself
};

struct DownloadStatus {
  DownloadState state = DownloadState::NotStarted;
  // Since when it has been in that state.
  std::chrono::system_clock::time_point since{};
  // Of the last attempt that failed; success where none has failed since the start. It stays when the state gets
  // better.
  Vant::Base::Error::ErrorCode error;
  // The operating system's number (errno) where the connection could not be made, such as "refused"; else 0.
  int systemError = 0;
};

}  // namespace ResourceStore
