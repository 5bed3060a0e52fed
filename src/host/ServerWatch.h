// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "ResourceStore/DownloadStatus.h"

namespace host {

// Notes when the download loses the server and when it follows it again. There can be one at a time, as there is one
// download.
class ServerWatch {
 public:
  ServerWatch();
  ~ServerWatch();
  ServerWatch(const ServerWatch&) = delete;
  ServerWatch& operator=(const ServerWatch&) = delete;

  // A sentence for each loss and each return since the last call.
  std::vector<std::string> Take();

 private:
  void Note(const ResourceStore::DownloadStatus& status);

  std::mutex m_mutex;  // guards what follows
  bool m_isLost = false;
  std::vector<std::string> m_sentences;
};

}  // namespace host
