// SPDX-License-Identifier: Apache-2.0
// viewctl import: makes on the server what an exported file holds, through the exchanges only.
#include <cstdio>
#include <fstream>
#include <iterator>

#include "host/Client.h"
#include "host/Ids.h"
#include "host/ImportPlan.h"
#include "host/JsonText.h"
#include "host/Progress.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct ImportOptions {
  std::string file;
  std::string into;
  bool dryRun = false;
};

std::string ViewPlace(const ImportStep& step) {
  return PlaceText(step.place) + " / " + Printable(step.view.name);
}

// Carries out the steps and reports each on stdout as it is done.
class Import {
 public:
  Import(const Plugin& plugin, Existing existing, bool dryRun)
      : m_plugin(plugin), m_folders(std::move(existing.folders)), m_dryRun(dryRun) {}

  int Run(const std::vector<ImportStep>& steps) {
    {
      Progress progress("Importing", steps.size());
      m_progress = &progress;
      for (const ImportStep& step : steps) {
        progress.Step();
        CarryOut(step);
        if (m_failuresInARow < kGiveUpAfter) continue;
        progress.Report("gave up after " + std::to_string(kGiveUpAfter) + " failures in a row; run it again to go on");
        break;
      }
    }
    const auto folders = [](size_t count) { return Counted(count, "folder"); };
    const auto views = [](size_t count) { return Counted(count, "view"); };
    const std::string sum = (m_dryRun ? "Would make " : "Made ") + folders(m_madeFolders) + " and " +
                            views(m_madeViews) + ", skipped " + folders(m_keptFolders) + " and " + views(m_keptViews) +
                            ", failed " + std::to_string(m_failed);
    std::printf("%s\n", sum.c_str());
    return m_failed == 0 ? kDone : kRefused;
  }

 private:
  // A server that is gone fails everything that follows.
  static constexpr int kGiveUpAfter = 5;

  void CarryOut(const ImportStep& step) {
    switch (step.action) {
      case ImportStep::kKeepFolder:
        ++m_keptFolders;
        Report("skipped", "folder", PlaceText(step.place), "is there");
        break;
      case ImportStep::kMakeFolder:
        MakeFolder(step);
        break;
      case ImportStep::kKeepView:
        ++m_keptViews;
        Report("skipped", "view", ViewPlace(step), IsSame(step) ? "is there" : "is there with other content, kept");
        break;
      case ImportStep::kMakeView:
        MakeView(step);
        break;
    }
  }

  void MakeFolder(const ImportStep& step) {
    Place parent = step.place;
    parent.path.pop_back();
    const auto parentId = FolderId(parent);
    if (!parentId) return Fail("folder", PlaceText(step.place), "the folder above was not made", false);
    std::string id;
    if (!m_dryRun) {
      rapidjson::Document answer;
      const std::string request = ObjectText()
                                      .Add("Name", step.place.path.back())
                                      .Add("ParentID", *parentId)
                                      .Add("Type", step.place.kind)
                                      .Add("is_share_viewgroup", step.place.kind == kShared)
                                      .Text();
      const bool done = m_plugin.Ask("AddPlanGroup", request, answer);
      if (!done) return Fail("folder", PlaceText(step.place), TextOf(answer, "ErrorInfo"), true);
      id = TextOf(answer, "ID");
    }
    m_folders[step.place] = id;
    m_failuresInARow = 0;
    ++m_madeFolders;
    Report(m_dryRun ? "would make" : "made", "folder", PlaceText(step.place), {});
  }

  void MakeView(const ImportStep& step) {
    const auto folderId = FolderId(step.place);
    if (!folderId) return Fail("view", ViewPlace(step), "its folder was not made", false);
    if (!m_dryRun) {
      rapidjson::Document answer;
      // What lies in an own folder of the shared kind is private too: shared is what others share with the user.
      const std::string request = ObjectText()
                                      .Add("GroupID", *folderId)
                                      .Add("Name", step.view.name)
                                      .Add("Type", step.place.kind == kPublic ? kPublic : kPrivate)
                                      .Add("AutoCycle", step.view.autoCycle)
                                      .Add("RoundTime", step.view.roundTime)
                                      .AddRaw("PlanPages", step.view.pages)
                                      .Text();
      const bool done = m_plugin.Ask("AddPlan", request, answer);
      if (!done) return Fail("view", ViewPlace(step), TextOf(answer, "ErrorInfo"), true);
    }
    m_failuresInARow = 0;
    ++m_madeViews;
    Report(m_dryRun ? "would make" : "made", "view", ViewPlace(step), {});
  }

  std::optional<std::string> FolderId(const Place& place) const {
    if (place.path.empty()) return "-1";
    const auto found = m_folders.find(place);
    return found == m_folders.end() ? std::nullopt : std::optional(found->second);
  }

  bool IsSame(const ImportStep& step) const {
    std::string response;
    m_plugin.Ask("GetPlanDetail", ObjectText().Add("ID", step.id).Add("NeedResourceName", false).Text(), response);
    rapidjson::Document detail;
    ParseAnswer(response, detail);  // what cannot be read is other content
    return ToPortable(detail, step.view.folder) == step.view;
  }

  void Fail(const char* what, const std::string& place, const std::string& reason, bool refused) {
    ++m_failed;
    if (refused) ++m_failuresInARow;
    Report("failed", what, place, Printable(reason));
  }

  void Report(const char* outcome, const char* what, const std::string& place, const std::string& reason) {
    m_progress->Report(std::string(outcome) + " " + what + " " + place + (reason.empty() ? "" : ": " + reason));
  }

  const Plugin& m_plugin;
  std::map<Place, std::string> m_folders;
  const bool m_dryRun;
  Progress* m_progress = nullptr;  // set while steps are carried out
  size_t m_madeFolders = 0;
  size_t m_madeViews = 0;
  size_t m_keptFolders = 0;
  size_t m_keptViews = 0;
  size_t m_failed = 0;
  int m_failuresInARow = 0;
};

std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file.is_open() || file.bad()) throw Failure(kUsage, "The file " + name + " cannot be read");
  return text;
}

int RunImport(const GlobalOptions& options, const ImportOptions& wanted) {
  const PortableFile file = ReadPortable(ReadFile(wanted.file));
  if (!wanted.into.empty()) RequireId(wanted.into, "group");

  Client client(options, Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  std::optional<Place> into;
  if (!wanted.into.empty()) {
    const size_t folder = tree.FindFolder(wanted.into);
    if (folder == tree.folders.size()) throw Failure(kRefused, "There is no group " + wanted.into);
    into = Place{tree.folders[folder].kind, tree.PathOf(folder)};
  }
  Existing existing = ExistingIn(tree);
  // Of several folders at one place the one that was named is meant.
  if (into) existing.folders[*into] = wanted.into;
  const auto steps = PlanImport(file, existing, into);
  return Import(client.Functions(), std::move(existing), wanted.dryRun).Run(steps);
}

}  // namespace

void AddImportCommand(CLI::App& app, Run& chosen) {
  const auto [command, wanted] =
      AddCommand(app, chosen, "import", "what such a file holds and is not there yet", RunImport);
  command->add_option("FILE", wanted->file, "written by export")->required();
  command->add_option("--into", wanted->into, "puts everything below this group")->type_name("GROUP");
  command->add_flag("--dry-run", wanted->dryRun, "only say what would be made");
}

}  // namespace host
