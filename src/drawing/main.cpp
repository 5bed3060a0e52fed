// SPDX-License-Identifier: Apache-2.0
// viewdraw: draws pages of views. It is a program of its own so that what draws nothing needs no Qt Gui.
//
// It reads requests, one line each: {"Plan":{...},"Page":1,"Format":"svg","Dark":false}. "Plan" is an answer of
// GetPlanDetail. "Format" is "svg", "png" or "short", for an SVG that is part of another document; what such ones look
// like is answered to {"Format":"rules"}. To each it writes one line, {"Size":n}, and the n bytes of the picture; or
// {"Error":"..."} alone. It ends with its input.
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <cstdio>

#include "drawing/Picture.h"
#include "drawing/ShortSvg.h"

namespace {

using drawing::Format;

struct Answer {
  QByteArray picture;
  const char* error = nullptr;
};

Answer Draw(const QByteArray& line) {
  const QJsonDocument document = QJsonDocument::fromJson(line);
  const QJsonObject request = document.object();
  const QString format = request["Format"].toString();
  if (format == "rules") return {drawing::ShortSvgRules().toUtf8()};
  const QJsonObject plan = request["Plan"].toObject();
  const int page = request["Page"].toInt();
  if (!document.isObject() || plan.isEmpty()) return {{}, "not a request"};
  if (format != "svg" && format != "png" && format != "short") return {{}, "no such format"};
  if (page < 1 || page > std::max(1, drawing::PageCount(plan))) return {{}, "no such page"};
  const drawing::Page read = drawing::ReadPage(plan, page);
  if (format == "short") return {drawing::MakeShortSvg(read)};
  const drawing::Theme& theme = request["Dark"].toBool() ? drawing::Theme::Dark() : drawing::Theme::Light();
  const Answer answer{drawing::MakePicture(read, theme, format == "svg" ? Format::kSvg : Format::kPng)};
  return answer.picture.isEmpty() ? Answer{{}, "no memory for the picture"} : answer;
}

void Write(QFile& out, const Answer& answer) {
  const QJsonObject head = answer.error ? QJsonObject{{"Error", answer.error}}
                                        : QJsonObject{{"Size", static_cast<int>(answer.picture.size())}};
  out.write(QJsonDocument(head).toJson(QJsonDocument::Compact) + "\n" + answer.picture);
  out.flush();
}

}  // namespace

int main(int argc, char** argv) {
  // No screen is needed, and none is looked for; nor is what a desktop would lay down in its environment.
  QLoggingCategory::setFilterRules("default.warning=false");
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication qt(argc, argv);
  QFile in, out;
  if (!in.open(stdin, QIODevice::ReadOnly) || !out.open(stdout, QIODevice::WriteOnly)) return 1;
  for (QByteArray line = in.readLine(); !line.isEmpty(); line = in.readLine()) Write(out, Draw(line));
  return out.error() == QFileDevice::NoError ? 0 : 1;
}
