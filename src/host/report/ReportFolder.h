// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDir>
#include <QStringList>
#include <set>
#include <string>

namespace host {

// A folder that a report is written into: index.html and drawings, which have names by their content. So a
// report that stood there before stays whole until the new index takes its place, and what only it had goes then.
class ReportFolder {
 public:
  // Throws Failure kUsage when the folder holds what no report has written, or cannot be made.
  explicit ReportFolder(const std::string& path);
  // Takes back what was written, unless Finish came to its end.
  ~ReportFolder();
  ReportFolder(const ReportFolder&) = delete;
  ReportFolder& operator=(const ReportFolder&) = delete;

  // Keeps the drawing of a view's page, from 1, and answers the name of its file. Throws Failure kUsage when it cannot
  // be written.
  std::string Keep(const std::string& viewId, size_t page, const std::string& drawing);
  // Puts the index into its place. Throws the same.
  void Finish(const std::string& index);

 private:
  QString PathOf(const QString& name) const { return m_dir.filePath(name); }

  QDir m_dir;
  bool m_isNew = false;
  QStringList m_old;         // the files of an earlier report
  QStringList m_added;       // those that were not there
  std::set<QString> m_kept;  // those of this report
};

}  // namespace host
