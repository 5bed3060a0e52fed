// SPDX-License-Identifier: Apache-2.0
// Carries an import out, step by step, and reports each step on stdout.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/ImportPlan.h"
#include "host/Plugin.h"
#include "host/Progress.h"

namespace host {

struct ImportChoices {
  bool dryRun = false;
  bool asJson = false;          // each step, and the sum, as a JSON object
  bool update = false;          // makes views that are there equal to the file's
  std::set<PortableView> skip;  // views that are left out, as they show what is not here
};

class ImportRun {
 public:
  ImportRun(const Plugin& plugin, Existing existing, ImportChoices choices)
      : m_plugin(plugin), m_folders(std::move(existing.folders)), m_choices(std::move(choices)) {}

  // Until all is done, five failures came in a row, or Ctrl-C was pressed. Answers what the command is to end with.
  int Run(const std::vector<ImportStep>& steps);

  // The views of the file that were to be made or changed and were not.
  const std::vector<PortableView>& Unfinished() const { return m_unfinished; }

 private:
  // A server that is gone fails everything that follows.
  static constexpr int kGiveUpAfter = 5;

  bool MayGoOn();
  void CarryOut(const ImportStep& step);
  void MakeFolder(const ImportStep& step);
  void MakeView(const ImportStep& step);
  void KeepView(const ImportStep& step);
  void UpdateView(const ImportStep& step);
  std::optional<std::string> FolderId(const Place& place) const;
  // What is on the server in the view's place, as the file would say it.
  PortableView Present(const ImportStep& step) const;
  void Fail(const ImportStep& step, const std::string& reason, bool refused);
  void Report(const char* outcome, const ImportStep& step, const std::string& reason = {});
  void Note(const std::string& sentence) const;
  void Sum() const;
  std::string SumAsJson() const;
  std::string SumAsText() const;

  const Plugin& m_plugin;
  std::map<Place, std::string> m_folders;
  const ImportChoices m_choices;
  Progress* m_progress = nullptr;  // set while steps are carried out
  size_t m_madeFolders = 0;
  size_t m_madeViews = 0;
  size_t m_updatedViews = 0;
  size_t m_keptFolders = 0;
  size_t m_keptViews = 0;
  size_t m_failed = 0;
  int m_failuresInARow = 0;
  bool m_isInterrupted = false;
  std::vector<PortableView> m_unfinished;
};

}  // namespace host
