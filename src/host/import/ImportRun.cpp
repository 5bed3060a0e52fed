// SPDX-License-Identifier: Apache-2.0
#include "host/import/ImportRun.h"

#include <cstdio>

#include "base/system/StopSignal.h"
#include "host/Failure.h"
#include "host/JsonText.h"
#include "host/Look.h"
#include "host/Names.h"
#include "host/Terminal.h"
#include "host/edit/EditableView.h"

namespace host {
namespace {

bool IsAboutView(const ImportStep& step) {
  return step.action == ImportStep::kMakeView || step.action == ImportStep::kKeepView;
}

std::string PlaceOf(const ImportStep& step) {
  return PlaceText(step.place) + (IsAboutView(step) ? " / " + Printable(step.view.name) : "");
}

std::string PathOf(const ImportStep& step) {
  return Printable(PathText(step.place.kind, step.place.path) +
                   (IsAboutView(step) ? "/" + EscapedName(step.view.name) : ""));
}

// What lies in an own folder of the shared kind is private too: shared is what others share with the user.
int TypeIn(const Place& place) {
  return place.kind == kPublic ? kPublic : kPrivate;
}

EditableView ToSend(const ImportStep& step, const std::string& folderId) {
  return {step.id, step.view.name, folderId, TypeIn(step.place), step.view.autoCycle, step.view.roundTime,
          false,   step.view.pages};
}

}  // namespace

int ImportRun::Run(const std::vector<ImportStep>& steps) {
  {
    Progress progress("Importing", steps.size());
    m_progress = &progress;
    bool goesOn = true;
    for (const ImportStep& step : steps) {
      goesOn = goesOn && MayGoOn();
      if (goesOn) {
        progress.Step();
        CarryOut(step);
      } else if (step.action == ImportStep::kMakeView) {
        m_unfinished.push_back(step.view);
      }
    }
  }
  Sum();
  return m_failed == 0 && !m_isInterrupted ? kDone : kRefused;
}

bool ImportRun::MayGoOn() {
  if (base::StopAsked()) {
    m_isInterrupted = true;
    Note("interrupted; what was made stays, run it again to go on");
    return false;
  }
  if (m_failuresInARow < kGiveUpAfter) return true;
  Note("gave up after " + std::to_string(kGiveUpAfter) + " failures in a row; run it again to go on");
  return false;
}

void ImportRun::CarryOut(const ImportStep& step) {
  if (IsAboutView(step) && m_choices.skip.contains(step.view)) {
    ++m_keptViews;
    return Report("skipped", step, "it shows what is not on this server");
  }
  switch (step.action) {
    case ImportStep::kKeepFolder:
      ++m_keptFolders;
      Report("skipped", step, "is there");
      break;
    case ImportStep::kMakeFolder:
      MakeFolder(step);
      break;
    case ImportStep::kKeepView:
      KeepView(step);
      break;
    case ImportStep::kMakeView:
      MakeView(step);
      break;
  }
}

void ImportRun::MakeFolder(const ImportStep& step) {
  Place parent = step.place;
  parent.path.pop_back();
  const auto parentId = FolderId(parent);
  if (!parentId) return Fail(step, "the folder above was not made", false);
  std::string id;
  if (!m_choices.dryRun) {
    rapidjson::Document answer;
    const std::string request = ObjectText()
                                    .Add("Name", step.place.path.back())
                                    .Add("ParentID", *parentId)
                                    .Add("Type", step.place.kind)
                                    .Add("is_share_viewgroup", step.place.kind == kShared)
                                    .Text();
    const bool done = m_plugin.Ask("AddPlanGroup", request, answer);
    if (!done) return Fail(step, TextOf(answer, "ErrorInfo"), true);
    id = TextOf(answer, "ID");
  }
  m_folders[step.place] = id;
  m_failuresInARow = 0;
  ++m_madeFolders;
  Report(m_choices.dryRun ? "would make" : "made", step);
}

void ImportRun::MakeView(const ImportStep& step) {
  const auto folderId = FolderId(step.place);
  std::string id;
  std::string reason;
  if (folderId && !m_choices.dryRun) reason = Add(m_plugin, ToSend(step, *folderId), id);
  if (!folderId || !reason.empty()) {
    m_unfinished.push_back(step.view);
    return Fail(step, folderId ? reason : "its folder was not made", folderId.has_value());
  }
  m_failuresInARow = 0;
  ++m_madeViews;
  Report(m_choices.dryRun ? "would make" : "made", step);
}

void ImportRun::KeepView(const ImportStep& step) {
  const bool isSame = Present(step) == step.view;
  if (!isSame && m_choices.update) return UpdateView(step);
  ++m_keptViews;
  Report("skipped", step, isSame ? "is there" : "is there with other content, kept");
}

void ImportRun::UpdateView(const ImportStep& step) {
  const std::string reason = m_choices.dryRun ? "" : Update(m_plugin, ToSend(step, step.folderId));
  if (!reason.empty()) {
    m_unfinished.push_back(step.view);
    return Fail(step, reason, true);
  }
  m_failuresInARow = 0;
  ++m_updatedViews;
  Report(m_choices.dryRun ? "would update" : "updated", step);
}

std::optional<std::string> ImportRun::FolderId(const Place& place) const {
  if (place.path.empty()) return "-1";
  const auto found = m_folders.find(place);
  return found == m_folders.end() ? std::nullopt : std::optional(found->second);
}

PortableView ImportRun::Present(const ImportStep& step) const {
  std::string response;
  m_plugin.Ask("GetPlanDetail", ObjectText().Add("ID", step.id).Add("NeedResourceName", false).Text(), response);
  rapidjson::Document detail;
  ParseAnswer(response, detail);  // what cannot be read is other content
  return ToPortable(detail, step.view.folder);
}

void ImportRun::Fail(const ImportStep& step, const std::string& reason, bool refused) {
  ++m_failed;
  if (refused) ++m_failuresInARow;
  Report("failed", step, Printable(reason));
}

// What is as it was to be goes without saying under --quiet.
void ImportRun::Report(const char* outcome, const ImportStep& step, const std::string& reason) {
  const std::string text = outcome;
  const std::string what = IsAboutView(step) ? "view" : "folder";
  if (m_choices.asJson) {
    ObjectText line;
    line.Add("Outcome", text).Add("Kind", what).Add("Place", PlaceOf(step)).Add("Reason", reason);
    return m_progress->Report(line.Add("Path", PathOf(step)).Text());
  }
  if (IsQuiet() && text != "failed") return;
  const std::string line = text + " " + what + " " + PathOf(step) + (reason.empty() ? "" : ": " + reason);
  m_progress->Report(text == "failed" ? StyledOut(Style::kBad, line) : line);
}

void ImportRun::Note(const std::string& sentence) const {
  if (m_choices.asJson) return Say(sentence);
  m_progress->Report(sentence);
}

void ImportRun::Sum() const {
  if (IsQuiet() && !m_choices.asJson && m_failed == 0 && !m_isInterrupted) return;
  std::printf("%s\n", (m_choices.asJson ? SumAsJson() : SumAsText()).c_str());
}

std::string ImportRun::SumAsJson() const {
  const auto number = [](size_t count) { return static_cast<int>(count); };
  ObjectText text;
  text.Add("MadeFolders", number(m_madeFolders)).Add("MadeViews", number(m_madeViews));
  text.Add("UpdatedViews", number(m_updatedViews)).Add("SkippedFolders", number(m_keptFolders));
  text.Add("SkippedViews", number(m_keptViews)).Add("Failed", number(m_failed)).Add("Interrupted", m_isInterrupted);
  return text.Text();
}

std::string ImportRun::SumAsText() const {
  const auto both = [](size_t folders, size_t views) {
    return Counted(folders, "folder") + " and " + Counted(views, "view");
  };
  std::string sum = (m_choices.dryRun ? "Would make " : "Made ") + both(m_madeFolders, m_madeViews);
  if (m_choices.update) sum += (m_choices.dryRun ? ", update " : ", updated ") + Counted(m_updatedViews, "view");
  return sum + ", skipped " + both(m_keptFolders, m_keptViews) + ", failed " + std::to_string(m_failed);
}

}  // namespace host
