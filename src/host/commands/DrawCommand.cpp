// SPDX-License-Identifier: Apache-2.0
// viewctl draw: one page of a view, as a picture or as text.
#include <QJsonDocument>
#include <QString>
#include <algorithm>
#include <cstdio>
#include <optional>

#include "host/Client.h"
#include "host/Drawer.h"
#include "host/JsonText.h"
#include "host/Names.h"
#include "host/PageText.h"
#include "host/SavedFile.h"
#include "host/Terminal.h"
#include "host/commands/Checks.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct DrawOptions {
  std::string id;
  std::string output;
  int page = 1;
  bool isDark = false;
};

bool IsPng(const std::string& name) {
  const QString file = QString::fromStdString(name);
  if (file.endsWith(".png", Qt::CaseInsensitive)) return true;
  if (file.endsWith(".svg", Qt::CaseInsensitive)) return false;
  throw Failure(kUsage, "A picture's file ends in .svg or .png, and " + name + " does not");
}

// The answer of GetPlanDetail in valid UTF-8.
std::string ReadPlan(const Plugin& plugin, const std::string& id) {
  std::string response;
  const bool done = plugin.Ask("GetPlanDetail", ObjectText().Add("ID", id).Text(), response);
  rapidjson::Document detail;
  ParseAnswer(response, detail);
  if (!done) throw Failure(kRefused, "View " + id + ": " + TextOf(detail, "ErrorInfo"));
  return ValidUtf8(response);
}

void RequirePage(const DrawOptions& draw, const std::string& id, int count) {
  if (draw.page >= 1 && draw.page <= std::max(count, 1)) return;
  throw Failure(kRefused, "View " + id + " has " + Counted(static_cast<size_t>(count), "page") + " and no page " +
                              std::to_string(draw.page));
}

int RunDraw(const GlobalOptions& options, const DrawOptions& draw) {
  std::optional<SavedFile> file;
  std::optional<Drawer> drawer;
  DrawingOptions drawing;
  drawing.isDark = draw.isDark;
  if (!draw.output.empty()) {
    drawing.format = IsPng(draw.output) ? DrawingFormat::kPng : DrawingFormat::kSvg;
    drawer.emplace();
    file.emplace(draw.output);
  }
  Client client(options, Texts::kTranslated);
  client.Load();
  const std::string id = Names(ReadViewTree(client.Functions())).View(draw.id).id;
  const std::string plan = ReadPlan(client.Functions(), id);
  const QJsonObject read = QJsonDocument::fromJson(QByteArray::fromStdString(plan)).object();
  RequirePage(draw, id, drawing::PageCount(read));
  if (file) {
    file->Write(drawer->Draw(plan, draw.page, drawing));
  } else {
    const std::string text = DescribePage(drawing::ReadPage(read, draw.page), ColumnsOut());
    std::fwrite(text.data(), 1, text.size(), stdout);
  }
  return kDone;
}

}  // namespace

void AddDrawCommand(CLI::App& app, Run& chosen) {
  const auto [command, draw] = AddCommand(app, chosen, "draw", "a page of a view as a picture, or as text", RunDraw);
  command->add_option("VIEW", draw->id, "its id, or its path: Station/Forecourt")->required();
  command->add_option("-o", draw->output, "the picture's file, .svg or .png; without it the page is printed as text")
      ->type_name("FILE");
  command->add_option("--page", draw->page, "which page, from 1")
      ->type_name("N")
      ->check(WholeNumber())
      ->capture_default_str();
  command->add_flag("--dark", draw->isDark, "light on dark");
}

}  // namespace host
