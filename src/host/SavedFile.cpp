// SPDX-License-Identifier: Apache-2.0
#include "host/SavedFile.h"

#include <QFileInfo>

#include "host/Failure.h"

namespace host {
namespace {

bool IsWrittenInto(const QString& name) {
  const QFileInfo info(name);
  return info.exists() && !info.isFile() && !info.isDir();
}

}  // namespace

SavedFile::SavedFile(const std::string& name) : m_direct(QString::fromStdString(name)) {
  if (IsWrittenInto(m_direct.fileName())) {
    Require(m_direct.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
  } else {
    Require(m_placed.emplace(m_direct.fileName()).open(QIODevice::WriteOnly));
  }
}

void SavedFile::Write(std::string_view content) {
  QFileDevice& file = m_placed ? static_cast<QFileDevice&>(*m_placed) : m_direct;
  for (size_t done = 0; done < content.size();) {
    const qint64 written = file.write(content.data() + done, static_cast<qint64>(content.size() - done));
    Require(written > 0);
    done += static_cast<size_t>(written);
  }
  Require(!m_placed || m_placed->commit());
}

void SavedFile::Require(bool isWritten) {
  if (isWritten) return;
  const QString reason = m_placed ? m_placed->errorString() : m_direct.errorString();
  throw Failure(kUsage, "The file " + m_direct.fileName().toStdString() +
                            " cannot be written: " + reason.toStdString() + "; name another file");
}

}  // namespace host
