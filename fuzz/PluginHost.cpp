// SPDX-License-Identifier: Apache-2.0
#include "PluginHost.h"

#include <rapidjson/document.h>

#include <memory>
#include <mutex>
#include <vector>

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "FuzzInput.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewExport.h"
#include "ResourceStore/Element.h"
#include "ResourceStore/OrlUserManager.h"
#include "ResourceStore/ViewGroupManager.h"
#include "VantBase/Error.h"
#include "VantBase/Log.h"

namespace fuzz {
namespace {

template <class T>
T& Single() {
  return Vant::Base::CSingleton<T>::Instance();
}

// Wants every line, so that all of them are formatted.
class NoLog : public Vant::Base::ILogSink {
 public:
  bool Wants(int) const override { return true; }
  void Write(int, const char*, const std::string&) override {}
};

std::string& Reply() {
  static std::string reply;
  return reply;
}

constexpr char kGroups[] =
    R"({"ResponseStatus":{"ErrorCode":0,"Data":{"ViewGroupList":{"ViewGroup":[{"ID":1,"Name":"one","UserID":-1},)"
    R"({"ID":2,"ParentViewGroupID":1,"Name":"two","UserID":7}]}}}})";
constexpr char kViews[] =
    R"({"ResponseStatus":{"ErrorCode":0,"Data":{"ViewList":{"View":[{"ID":5,"Name":"five","ViewGroupID":1,)"
    R"("PlanPages":[{"PlanViewItem":[{"WindowNo":1,"ResourceType":1001,"ResourceID":11},{"WindowNo":2}]}]},)"
    R"({"ID":6,"Name":"six","ViewGroupID":2,"UserID":7},{"ID":7,"Name":"seven"}]}}}})";

}  // namespace

void PrepareHost() {
  static const bool prepared = [] {
    Vant::Base::SetLogSink(std::make_shared<NoLog>());
    Single<BizShared::CUserCommonManager>().SetUser(7, "operator");
    Single<BizShared::CNetCommManager>().SetTransport(
        [](NetLink::CClientRecvInfo& recv, const NetLink::CClientSendInfo&) {
          recv.SetVal_Receive_Data(Reply());
          if (Reply().empty()) recv.SetVal_Error_code(Vant::Base::Error::ErrorCode(1, 7, 0, ""));
          return !Reply().empty();
        });
    Single<ResourceStore::COrlUserManager>().SetDownload(
        {std::make_shared<ResourceStore::CUserInfo>(7, "operator", true, 1)}, {});
    std::vector<std::shared_ptr<ResourceStore::CElement>> elements;
    for (int type : {1001, 1002, 1005, 1006, 7001}) {
      elements.push_back(std::make_shared<ResourceStore::CElement>(11, type, "element", 3));
    }
    Single<ResourceStore::CElementManager>().PutElements(elements);
    Single<ResourceStore::CElementManager>().PutArea(3, "area");
    return true;
  }();
  (void)prepared;
}

void AnswerRequestsWith(const std::string& reply) {
  Reply() = reply;
}

void Load(const std::string& groups, const std::string& views) {
  ClearViewData();
  Single<ResourceStore::CViewGroupManager>().SetDownloadedData(groups, views, true);
  std::string response;
  Require(IsInitViewGroupFinish("", response), "a download that is there loads");
  RequireJson(response);
  Require(IsInitViewFinish("", response), "a download that is there loads");
  RequireJson(response);
}

void LoadSmallSite() {
  Load(kGroups, kViews);
}

void RequireJson(const std::string& response) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseIterativeFlag>(response.data(), response.size());
  Require(!document.HasParseError() && document.IsObject(), "not a JSON object", response);
}

namespace {

// The ids in the list `list` of a response, whose member `key` they are.
std::vector<std::string> IdsIn(const std::string& response, const char* list) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseIterativeFlag>(response.data(), response.size());
  Require(!document.HasParseError() && document.IsObject() && document.HasMember(list), "no list", response);
  std::vector<std::string> ids;
  for (const auto& element : document[list].GetArray()) ids.emplace_back(element["ID"].GetString());
  return ids;
}

void ReadPlansIn(const std::string& group) {
  std::string response;
  GetPlansInGroup(R"({"GroupID":")" + group + R"("})", response);
  for (const std::string& id : IdsIn(response, "Plans")) {
    GetPlanDetail(R"({"ID":")" + id + R"(","NeedResourceName":true,"resource_download_judge":true})", response);
    RequireJson(response);
  }
}

}  // namespace

void ReadEverything() {
  std::vector<std::string> groups = {"-1"};
  // A folder may be its own ancestor in what a server sends.
  for (size_t i = 0; i < groups.size() && i < 50; ++i) {
    std::string response;
    GetPlanGroups(R"({"ParentID":")" + groups[i] + R"("})", response);
    for (std::string& id : IdsIn(response, "PlanGroups")) groups.push_back(std::move(id));
    ReadPlansIn(groups[i]);
  }
  for (unsigned int id = 1; id < 10; ++id) {
    QorviViewPlugin::FindViewByID(id);
    QorviViewPlugin::FindViewGroupByID(id);
  }
}

}  // namespace fuzz
