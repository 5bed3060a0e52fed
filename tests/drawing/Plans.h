// SPDX-License-Identifier: Apache-2.0
// Answers of GetPlanDetail as far as a drawing needs them.
#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <string>

#include "drawing/Page.h"

namespace test {

inline QJsonObject Parsed(const std::string& json) {
  return QJsonDocument::fromJson(QByteArray::fromStdString(json)).object();
}

// A plan of one page; `windows` is the inside of its list.
inline QJsonObject Plan(int division, const std::string& custom, const std::string& windows) {
  return Parsed(R"({"Name":"North wall","ID":"7","PlanPages":[{"windowDivision":)" + std::to_string(division) +
                R"(,"customWindowDivision":")" + custom + R"(","PlanItems":[)" + windows + "]}]}");
}

inline drawing::Page OnePage(int division, const std::string& custom, const std::string& windows) {
  return drawing::ReadPage(Plan(division, custom, windows), 1);
}

// A camera's window with more members.
inline std::string Camera(int number, const std::string& more = {}) {
  return R"({"Sequence":)" + std::to_string(number) +
         R"(,"ResourceType":1001,"ResourceID":"2001","SiteID":"3","ResourceName":"Gate","StreamType":1)" +
         (more.empty() ? "" : "," + more) + "}";
}

}  // namespace test
