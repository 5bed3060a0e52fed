// SPDX-License-Identifier: Apache-2.0
// viewdraw: draws pages of views. It is a program of its own so that what draws nothing needs no Qt Gui.
//
// It reads requests, one line each: {"Plan":{...},"Page":1,"Format":"svg","Dark":false}. "Plan" is an answer of
// GetPlanDetail. To each it writes one line, {"Size":n}, and the n bytes of the picture; or {"Error":"..."} alone. It
// ends with its input.
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <cstdio>

#include "drawing/Picture.h"

namespace {

using drawing::Format;

struct Answer {
  QByteArray picture;
  const char* error = nullptr;
};

Answer Draw(const QByteArray& line) {
  const QJsonDocument read = QJsonDocument::fromJson(line);
  const QJsonObject request = read.object();
  const QString format = request["Format"].toString();
  const QJsonObject plan = request["Plan"].toObject();
  const int page = request["Page"].toInt();
  if (!read.isObject() || plan.isEmpty()) return {{}, "not a request"};
  if (format != "svg" && format != "png") return {{}, "no such format"};
  if (page < 1 || page > std::max(1, drawing::PageCount(plan))) return {{}, "no such page"};
  const drawing::Theme& theme = request["Dark"].toBool() ? drawing::Theme::Dark() : drawing::Theme::Light();
  const Answer answer{
      drawing::MakePicture(drawing::ReadPage(plan, page), theme, format == "svg" ? Format::kSvg : Format::kPng)};
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
