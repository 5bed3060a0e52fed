// SPDX-License-Identifier: Apache-2.0
#include "host/report/ReadReport.h"

#include <QDateTime>
#include <QJsonDocument>

#include "drawing/Words.h"
#include "host/Failure.h"
#include "host/JsonText.h"
#include "host/Progress.h"
#include "host/report/SiteResources.h"

namespace host {
namespace {

rapidjson::Document Ask(const Plugin& plugin, const char* exchange, const std::string& request, const char* errorKey) {
  rapidjson::Document answer;
  if (!plugin.Ask(exchange, request, answer)) {
    throw Failure(kRefused, std::string(exchange) + ": " + TextOf(answer, errorKey));
  }
  return answer;
}

class Reader {
 public:
  Reader(const Plugin& plugin, Drawer& drawer) : m_plugin(plugin), m_drawer(drawer), m_index(ListSiteResources()) {}

  Report Read() {
    m_report.user = TextOf(Ask(m_plugin, "GetCurrentUser", "", "error_info"), "user_name");
    m_report.written = QDateTime::currentDateTimeUtc().toString("yyyy-MM-dd HH:mm").toStdString() + " UTC";
    m_report.drawingRules = m_drawer.DrawingRules();
    m_report.tree = ReadViewTree(m_plugin);
    ListViews();
    FindDefault();
    Progress progress("Drawing", m_report.views.size());
    for (size_t i = 0; i < m_report.views.size(); ++i) {
      progress.Step();
      ReadView(i);
    }
    m_report.resources = m_index.Take();
    return std::move(m_report);
  }

 private:
  void ListViews() {
    for (size_t folder = 0; folder < m_report.tree.folders.size(); ++folder) {
      for (const TreeView& listed : m_report.tree.folders[folder].views) {
        ReportView& view = m_report.views.emplace_back();
        view.id = listed.id;
        view.name = listed.name;
        view.folder = folder;
      }
    }
  }

  // Views and folders are numbered apart, and nothing says which of them the user's choice is: a view comes first.
  void FindDefault() {
    const rapidjson::Document answer = Ask(m_plugin, "GetClientViewConfig", "", "error_info");
    const std::string id = TextOf(ObjectOf(ObjectOf(answer, "ViewData"), "ViewDefaultConfig"), "view_id");
    m_report.defaultFolder = m_report.tree.folders.size();
    if (id == "-3" || id == "-1") return;
    m_report.defaultId = id;
    for (ReportView& view : m_report.views) {
      view.isDefault = view.id == id;
      if (view.isDefault) return;
    }
    m_report.defaultFolder = m_report.tree.FindFolder(id);
  }

  void ReadView(size_t index) {
    ReportView& view = m_report.views[index];
    std::string answer;
    const bool done = m_plugin.Ask("GetPlanDetail", ObjectText().Add("ID", view.id).Text(), answer);
    const std::string plan = ValidUtf8(answer);
    const QJsonObject read = QJsonDocument::fromJson(QByteArray::fromStdString(plan)).object();
    if (!done) throw Failure(kRefused, "View " + view.id + ": " + read["ErrorInfo"].toString().toStdString());
    view.guid = read["AppCode"].toString().toStdString();
    if (read["is_share_view"].toBool()) view.sharedBy = read["share_user_name"].toString().toStdString();
    for (int number = 1; number <= drawing::PageCount(read); ++number)
      AddPage(index, plan, drawing::ReadPage(read, number));
  }

  void AddPage(size_t index, const std::string& plan, const drawing::Page& page) {
    ReportView& view = m_report.views[index];
    view.turnedAfter = page.turnedAfter;
    view.windows += page.windows.size();
    view.pages.push_back({HeadOf(page).toStdString(), InWords(page).toStdString(),
                          m_drawer.Draw(plan, page.number, {DrawingFormat::kShort})});
    m_index.Add(page, index);
  }

  const Plugin& m_plugin;
  Drawer& m_drawer;
  ResourceIndex m_index;
  Report m_report;
};

}  // namespace

Report ReadReport(const Plugin& plugin, Drawer& drawer) {
  return Reader(plugin, drawer).Read();
}

}  // namespace host
