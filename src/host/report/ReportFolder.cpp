// SPDX-License-Identifier: Apache-2.0
#include "host/report/ReportFolder.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include "host/Failure.h"
#include "host/Ids.h"
#include "host/SavedFile.h"
#include "host/report/ReportHtml.h"

namespace host {
namespace {

constexpr const char* kIndex = "index.html";
constexpr qint64 kHeadSize = 4096;

bool IsIndex(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) && file.read(kHeadSize).contains(kReportMark);
}

bool IsOurs(const QFileInfo& entry) {
  static const QRegularExpression drawings("^view-[0-9]+-page-[0-9]+-[0-9a-f]{12}\\.svg$");
  if (!entry.isFile() || entry.isSymLink()) return false;
  return entry.fileName() == kIndex ? IsIndex(entry.filePath()) : drawings.match(entry.fileName()).hasMatch();
}

}  // namespace

ReportFolder::ReportFolder(const std::string& path)
    : m_dir(QFileInfo(QString::fromStdString(path)).absoluteFilePath()) {
  m_isNew = !m_dir.exists();
  if (m_isNew && !m_dir.mkpath(".")) throw Failure(kUsage, "The folder " + path + " cannot be made");
  const auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
  for (const QFileInfo& entry : m_dir.entryInfoList(everything)) {
    if (!IsOurs(entry)) {
      throw Failure(kUsage, "The folder " + path + " holds " + entry.fileName().toStdString() +
                                ", which is no part of a report, so nothing is written there");
    }
    m_old += entry.fileName();
  }
}

ReportFolder::~ReportFolder() {
  for (const QString& name : m_added) QFile::remove(PathOf(name));
  if (m_isNew && !m_kept.count(kIndex)) QDir().rmdir(m_dir.path());
}

std::string ReportFolder::Keep(const std::string& viewId, size_t page, const std::string& drawing) {
  const QByteArray hash = QCryptographicHash::hash(QByteArray::fromStdString(drawing), QCryptographicHash::Sha256);
  const std::string begin = "view-" + RequireId(viewId, "view") + "-page-" + std::to_string(page) + "-";
  const QString name = QString::fromStdString(begin) + hash.toHex().left(12) + ".svg";
  m_kept.insert(name);
  if (m_old.contains(name)) return name.toStdString();
  SavedFile(PathOf(name).toStdString()).Write(drawing);
  m_added += name;
  return name.toStdString();
}

void ReportFolder::Finish(const std::string& index) {
  SavedFile(PathOf(kIndex).toStdString()).Write(index);
  m_kept.insert(kIndex);
  m_added.clear();
  for (const QString& name : m_old) {
    if (!m_kept.count(name)) QFile::remove(PathOf(name));
  }
}

}  // namespace host
