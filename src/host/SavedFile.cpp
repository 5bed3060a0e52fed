// SPDX-License-Identifier: Apache-2.0
#include "host/SavedFile.h"

#include "host/Failure.h"

namespace host {
namespace {

void Require(bool isWritten, const QSaveFile& file) {
  if (!isWritten) throw Failure(kUsage, "The file " + file.fileName().toStdString() + " cannot be written");
}

}  // namespace

SavedFile::SavedFile(const std::string& name) : m_file(QString::fromStdString(name)) {
  Require(m_file.open(QIODevice::WriteOnly), m_file);
}

void SavedFile::Write(std::string_view content) {
  const auto size = static_cast<qint64>(content.size());
  Require(m_file.write(content.data(), size) == size && m_file.commit(), m_file);
}

}  // namespace host
