// SPDX-License-Identifier: Apache-2.0
// viewctl report: the whole site on one page, for reading, handing over and printing.
#include <QFile>
#include <QUrl>
#include <cstdio>
#include <optional>

#include "host/Client.h"
#include "host/JsonText.h"
#include "host/Look.h"
#include "host/SavedFile.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/report/DrawingFile.h"
#include "host/report/Html.h"
#include "host/report/ReadReport.h"
#include "host/report/ReportFolder.h"
#include "host/report/ReportHtml.h"
#include "host/report/SharedPaths.h"

namespace host {
namespace {

struct ReportOptions {
  std::string output;
  std::string folder;
  bool json = false;
};

std::string ReadResource(const char* name) {
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly)) throw Failure(kRefused, std::string(name) + " is not in the program");
  return file.readAll().toStdString();
}

ReportLook LookOfReport() {
  return {ReadResource(":/report.css"), ReadResource(":/report.js")};
}

// Without what an address may hold to log in with.
std::string AddressOf(const std::string& root) {
  return QUrl(QString::fromStdString(root)).toDisplayString(QUrl::RemoveUserInfo).toStdString();
}

// A drawing is kept as text that only a browser without scripts reads by itself: with them, thousands of drawings cost
// nothing until they are looked at.
std::string OnePage(const Report& report) {
  SharedPaths paths;
  ReportDrawings drawings;
  drawings.show = [&](const ReportView& view, size_t page) {
    const std::string drawing = paths.Refer(view.pages[page].drawing);
    return "<noscript><svg role=\"img\" aria-labelledby=\"" + WordsId(view, page) + "\"" + drawing.substr(4) +
           "</noscript>";
  };
  drawings.definitions = [&] { return paths.Definitions(); };
  return WriteReport(report, LookOfReport(), drawings);
}

void WriteFolder(const Report& report, ReportFolder& folder) {
  ReportDrawings drawings;
  drawings.areImages = true;
  drawings.show = [&](const ReportView& view, size_t page) {
    const ReportPage& shown = view.pages[page];
    const std::string file = folder.Keep(view.id, page + 1, DrawingFile(view, shown, report.drawingRules));
    const DrawingSize size = SizeOf(shown.drawing);
    return "<img src=\"" + file + "\" loading=\"lazy\" width=\"" + std::to_string(size.width) + "\" height=\"" +
           std::to_string(size.height) + "\" alt=\"" + HtmlLine(shown.head) + "\" aria-labelledby=\"" +
           WordsId(view, page) + "\"/>";
  };
  folder.Finish(WriteReport(report, LookOfReport(), drawings));
}

int RunReport(const GlobalOptions& options, const ReportOptions& wanted) {
  if (wanted.output.empty() && wanted.folder.empty()) {
    throw Failure(kUsage, "Say where to: -o FILE or --into-folder DIR");
  }
  RequireStdoutForJson(wanted.json, wanted.output);
  Drawer drawer;
  std::optional<SavedFile> file;
  std::optional<ReportFolder> folder;
  if (!wanted.folder.empty()) folder.emplace(wanted.folder);
  if (!wanted.output.empty() && wanted.output != "-") file.emplace(wanted.output);

  Client client(options, Texts::kTranslated);
  client.Load();
  Report report = ReadReport(client.Functions(), drawer);
  report.server = AddressOf(options.server);
  if (!wanted.output.empty()) {
    const std::string page = OnePage(report);
    if (file) {
      file->Write(page);
    } else {
      std::fwrite(page.data(), 1, page.size(), stdout);
    }
  }
  if (folder) WriteFolder(report, *folder);
  if (wanted.json) {
    const int views = static_cast<int>(report.views.size());
    const int resources = static_cast<int>(report.resources.size());
    std::printf("%s\n", ObjectText().Add("Views", views).Add("Resources", resources).Text().c_str());
  } else {
    Mention("Reported " + Counted(report.views.size(), "view"));
  }
  return kDone;
}

}  // namespace

void AddReportCommand(CLI::App& app, Run& chosen) {
  const auto [command, wanted] =
      AddCommand(app, chosen, "report", "all views and where resources are shown, as a page to read", RunReport);
  command->add_option("-o", wanted->output, "one HTML file with everything in it; \"-\" is stdout")->type_name("FILE");
  command
      ->add_option("--into-folder", wanted->folder, "index.html and a drawing beside it for each page, for large sites")
      ->type_name("DIR");
  AddSumAsJson(*command, wanted->json);
}

}  // namespace host
