// SPDX-License-Identifier: Apache-2.0
#include "host/ServerWatch.h"

#include <utility>

#include "ResourceStore/ViewGroupManager.h"
#include "host/Connection.h"

namespace host {

ServerWatch::ServerWatch() {
  ResourceStore::CViewGroupManager::Instance().SetDownloadStatusCallback(
      [this](const ResourceStore::DownloadStatus& status) { Note(status); });
}

ServerWatch::~ServerWatch() {
  ResourceStore::CViewGroupManager::Instance().SetDownloadStatusCallback({});
}

// Attempts that fail one after the other are one loss.
void ServerWatch::Note(const ResourceStore::DownloadStatus& status) {
  std::lock_guard<std::mutex> lock(m_mutex);
  const bool isReady = status.state == ResourceStore::DownloadState::Ready;
  const bool isLost = status.state == ResourceStore::DownloadState::Failing || (m_isLost && !isReady);
  if (isLost == m_isLost) return;
  m_isLost = isLost;
  m_sentences.push_back(isLost ? "Lost the server: " + Connection::ReasonOf(status) + "; trying again"
                               : "Caught up: the server is back, and what changed meanwhile is told");
}

std::vector<std::string> ServerWatch::Take() {
  std::lock_guard<std::mutex> lock(m_mutex);
  return std::exchange(m_sentences, {});
}

}  // namespace host
