// SPDX-License-Identifier: Apache-2.0
// What the library writes: plan details, lists, bodies of requests.
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <QByteArray>
#include <QJsonDocument>
#include <QString>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "Report.h"
#include "SiteData.h"
#include "Suites.h"
#include "VeltControl/VeltControl.h"

namespace bench {

namespace {

using namespace QorviViewPlugin;
using VeltControl::CStandardItemModel;

CViewGroupManager& Manager() {
  return Vant::Base::CSingleton<CViewGroupManager>::Instance();
}

std::string Written(const rapidjson::Document& document) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  document.Accept(writer);
  return {buffer.GetString(), buffer.GetSize()};
}

// A bare writer of the same bytes: the ready document goes through RapidJSON's Writer into a std::string.
Side BareWriter(const std::string& text) {
  const auto document = std::make_shared<rapidjson::Document>();
  document->Parse(text.c_str());
  Check(Written(*document) == text, "the bare writer does not write the same bytes");
  return {[document] {
    const std::string written = Written(*document);
    Use(written.data());
  }};
}

SiteSize OneView(unsigned int windows) {
  return {"one", 1, windows > 64 ? windows / 64 : 1, std::min(windows, 64u), 1};
}

std::string DetailRequest(unsigned int id) {
  return R"({"ID":")" + std::to_string(id) + R"(","NeedResourceName":true})";
}

// Whether the answer shows the windows of the view in their order, cameras by their names.
bool ShowsWindows(const std::string& response, const ViewInfo& view) {
  rapidjson::Document answer;
  if (answer.Parse(response.c_str()).HasParseError()) return false;
  rapidjson::SizeType p = 0;
  for (const ViewPage& page : view.vcPages) {
    const auto& items = answer["PlanPages"][p++]["PlanItems"];
    if (items.Size() != page.vcWindows.size()) return false;
    for (rapidjson::SizeType w = 0; w < items.Size(); ++w) {
      const CameraGridStruct& window = page.vcWindows[w];
      if (items[w]["ResourceID"] != std::to_string(window.id_element_).c_str()) return false;
      const bool isCamera = window.enum_resource_type_ == ResourceTypeCamera;
      if (isCamera && items[w]["ResourceName"] != ElementName(window.id_element_).c_str()) return false;
    }
  }
  return answer["PlanPages"].Size() == view.vcPages.size();
}

void ComparePeers(const std::string& text, const std::string& count) {
  const auto qt = QJsonDocument::fromJson(QByteArray::fromStdString(text));
  AddRatio({"QJsonDocument::toJson of a detail, " + count, "bare Writer"}, {}, {[&] {
             const QByteArray written = qt.toJson(QJsonDocument::Compact);
             Use(written.data());
           }},
           BareWriter(text));
  const auto nlohmann = nlohmann::ordered_json::parse(text);
  Check(nlohmann.dump() == text, "nlohmann does not write the same bytes");
  AddRatio({"nlohmann::json::dump of a detail, " + count, "bare Writer"}, {}, {[&] {
             const std::string written = nlohmann.dump();
             Use(written.data());
           }},
           BareWriter(text));
}

void MeasureView(unsigned int windows) {
  const std::string count = std::to_string(windows) + " windows";
  ViewInfo view = MakeView(OneView(windows), 1);
  Manager().InsertViewToCache(view, true);
  const std::string request = DetailRequest(1);
  std::string response;
  Check(GetPlanDetail(request, response) && ShowsWindows(response, view), "the detail of " + count);
  const Side detail{[request] {
                      std::string answer;
                      GetPlanDetail(request, answer);
                      Use(answer.data());
                    },
                    {},
                    1};
  AddRatio({"GetPlanDetail, " + count, "bare Writer"}, {0.6}, detail, BareWriter(response));
  Measure("GetPlanDetail for each window, " + count, {detail.run, {}, static_cast<double>(windows)});

  const std::string body = ViewBodyText(view);
  Check(WriteViewDocument(view) == body, "the view document of " + count);
  const Side document{[&view] {
                        const std::string text = WriteViewDocument(view);
                        Use(text.data());
                      },
                      {},
                      1};
  AddRatio({"WriteViewDocument, " + count, "bare Writer"}, {0.6}, document, BareWriter(body));
  Measure("WriteViewDocument for each window, " + count, {document.run, {}, static_cast<double>(windows)});
  if (windows == 256) ComparePeers(response, count);
  ClearViewData();
}

struct List {
  std::vector<QString> names;
  std::string response;
};

// Puts that many plans into one group, by shuffled names.
List MakeList(unsigned int plans) {
  List list;
  ViewGroupInfo group;
  group.idViewGroup = 1;
  Manager().InsertViewGroupToCache(group);
  const SiteSize size{"list", plans, 1, 1, plans};
  for (unsigned int n = 1; n <= plans; ++n) {
    ViewInfo view = MakeView(size, n);
    view.strName = (n % 2 ? "Corridor " : "corridor ") + std::to_string(n * 7919ull % plans) + (n % 3 ? "" : " é");
    list.names.push_back(QString::fromStdString(view.strName));
    Manager().InsertViewToCache(view, true);
  }
  return list;
}

bool Before(const QString& left, const QString& right) {
  return CStandardItemModel::CustomStringCompare(left, right, CStandardItemModel::SortByName);
}

bool IsSorted(const std::string& response, size_t plans) {
  rapidjson::Document answer;
  answer.Parse(response.c_str());
  const auto& list = answer["Plans"];
  for (rapidjson::SizeType n = 1; n < list.Size(); ++n) {
    if (Before(list[n]["name"].GetString(), list[n - 1]["name"].GetString())) return false;
  }
  return list.Size() == plans;
}

void MeasureList(unsigned int plans, const Goal& goal) {
  List list = MakeList(plans);
  const std::string request = R"({"GroupID":"1"})";
  Check(GetPlansInGroup(request, list.response) && IsSorted(list.response, plans), "the list of plans");
  const Side ours{[&] {
    std::string answer;
    GetPlansInGroup(request, answer);
    Use(answer.data());
  }};
  const Side writer = BareWriter(list.response);
  const Side sortAndWrite{[&] {
    std::vector<QString> names = list.names;
    std::sort(names.begin(), names.end(), Before);
    Use(names.data());
    writer.run();
  }};
  const std::string count = std::to_string(plans) + " plans";
  AddRatio({"GetPlansInGroup, " + count, "sort of QStrings and bare Writer"}, goal, ours, sortAndWrite);
  Measure("GetPlansInGroup for each plan, " + count, {ours.run, {}, static_cast<double>(plans)});
  ClearViewData();
}

}  // namespace

void AnswersSuite() {
  KnowElements();
  MeasureView(16);
  MeasureView(256);
  for (const char* what : {"GetPlanDetail for each window, ", "WriteViewDocument for each window, "}) {
    AddGrowth({what + std::string("256 windows"), "16 windows"}, 2.5, what + std::string("256 windows"),
              what + std::string("16 windows"));
  }
  MeasureList(1000, {});
  MeasureList(10000, {1.3});
  AddGrowth({"GetPlansInGroup for each plan, 10000 plans", "1000 plans"}, 2.5,
            "GetPlansInGroup for each plan, 10000 plans", "GetPlansInGroup for each plan, 1000 plans");
}

}  // namespace bench
