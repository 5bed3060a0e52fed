// SPDX-License-Identifier: Apache-2.0
// Every record of the protocol: its exact text, so that keys, kinds, order and defaults are those that hosts lean on;
// and walked through its own list of fields, that each of them is read and written.
#include <gtest/gtest.h>

#include <string>

#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace protocol_test {
namespace {

using namespace QorviVideoComm;
using namespace QorviViewPlugin_view_plugin_protocol;

template <class... Records>
struct RecordList {};

using AllRecords =
    RecordList<FisheyeWndParam, FishEyeInfo, CycleResourceID, CycleInfo, Emap, CenterMark, ZoomWindow, ZoomWindowList,
               RelatedZoomWindow, PlanItem, PlanPage, PlanGroup, PlanBasicInfo, SearchedPlan, GetPlanGroupsRequest,
               GetPlanGroupsResponse, AddPlanGroupRequest, AddPlanGroupResponse, UpdatePlanGroupRequest,
               UpdatePlanGroupResponse, DeletePlanGroupRequest, DeletePlanGroupResponse, GetPlansInGroupRequest,
               GetPlansInGroupResponse, AddPlanRequest, AddPlanResponse, UpdatePlanRequest, UpdatePlanResponse,
               DeletePlanResquest, DeletePlanResponse, GetPlanDetailRequest, GetPlanDetailResponse,
               GetPlanConfigRequest, GetPlanConfigResponse, PlanSearchRequest, PlanSearchResponse,
               IndexCodeStartRequest, IndexCodeStartResponse, ClienInitViewDataRequest, ClienInitViewDataResponse,
               GetCurrentUserRequest, GetCurrentUserResponse, UserDetailInfo, UserRequestInfo, UserResponseInfo,
               ViewShareResquestInfo, UserErrorInfo, ShareViewResponseInfo, ViewConfig, ClientViewConfigData,
               GetClientDefaultViewConfigRequest, GetClientDefaultViewConfigResponse, ClienDefaultViewConfigRequest,
               ClienDefaultViewConfigReponse, ResourceUpdateRegister>;

// What the check, of which each record has its own, says of all of them. Expectations within it would have to be
// compiled as often as there are records.
template <class... Records, class Check>
std::string ForEach(RecordList<Records...>, const Check& check) {
  return (check(std::type_identity<Records>{}) + ...);
}

template <class Record>
std::string Written(Record& data) {
  AdapterOf<Record> record(&data);
  return SerializeJsonResponse(record);
}

// Gives every field, however deep, a value that is neither its default nor that of another field of its kind.
class Filler {
 public:
  template <class Type>
  void Fill(Type& field) {
    if constexpr (std::is_same_v<Type, Integer>) {
      field = 1000 + ++m_number;
    } else if constexpr (std::is_same_v<Type, Boolean>) {
      field = !field;
    } else if constexpr (std::is_same_v<Type, Text>) {
      field = "text \"" + std::to_string(++m_number) + "\" \xC3\xA4\n";
    } else if constexpr (kIsSequence<Type>) {
      field.resize(2);
      for (auto& element : field) Fill(element);
    } else {
      ForEachField<Type>([&](const auto& part) { Fill(field.*part.member); });
    }
  }

 private:
  int m_number = 0;
};

TEST(RecordSetTest, EveryFieldOfEveryRecordSurvivesTheRoundTrip) {
  const auto lostBy = []<class Record>(std::type_identity<Record>) -> std::string {
    Record filled;
    Filler().Fill(filled);
    const std::string text = Written(filled);
    Record read;
    AdapterOf<Record> record(&read);
    return ParseJsonRequest(record, text) && read == filled && read != Record() ? "" : text + "\n";
  };
  EXPECT_EQ(ForEach(AllRecords{}, lostBy), "");
}

TEST(RecordSetTest, TheStreamedTextIsThatOfTheValueTree) {
  const auto differing = []<class Record>(std::type_identity<Record>) -> std::string {
    Record data;
    AdapterOf<Record> record(&data);
    const auto isSame = [&] {
      return SerializeJsonResponse(record) == SerializeJsonResponse(static_cast<IJSONStruct&>(record));
    };
    const bool wasSame = isSame();
    Filler().Fill(data);
    return wasSame && isSame() ? "" : Written(data) + "\n";
  };
  EXPECT_EQ(ForEach(AllRecords{}, differing), "");
}

// Some text of each JSON kind, and which of them a field of that type takes.
template <class Type>
std::vector<std::string> ForeignValues() {
  std::vector<std::string> values = {"null", "1.5", "4294967296"};
  if (!std::is_same_v<Type, Integer>) values.push_back("1");
  if (!std::is_same_v<Type, Boolean>) values.insert(values.end(), {"true", "false"});
  if (!std::is_same_v<Type, Text>) values.push_back(R"("1")");
  if (!kIsSequence<Type>) values.push_back("[{}]");
  if (std::is_fundamental_v<Type> || std::is_same_v<Type, Text> || kIsSequence<Type>) values.push_back("{}");
  return values;
}

TEST(RecordSetTest, AValueOfAForeignKindLeavesEveryFieldAsItWas) {
  const auto changedBy = []<class Record>(std::type_identity<Record>) {
    std::string texts;
    ForEachField<Record>([&texts](const auto& field) {
      using Type = std::remove_cvref_t<decltype(std::declval<Record>().*field.member)>;
      for (const std::string& value : ForeignValues<Type>()) {
        const std::string text = "{\"" + std::string(field.key) + "\":" + value + "}";
        Record data;
        AdapterOf<Record> record(&data);
        if (!ParseJsonRequest(record, text) || data != Record() || !record.m_readKeys.empty()) texts += text + "\n";
      }
    });
    return texts;
  };
  EXPECT_EQ(ForEach(AllRecords{}, changedBy), "");
}

template <class Record>
std::string DefaultText() {
  Record data;
  return Written(data);
}

TEST(RecordSetTest, DefaultsAreWrittenInFullAndInOrder) {
  constexpr char kError[] = R"({"ErrorInfo":""})";
  constexpr char kErrorAndId[] = R"({"ErrorInfo":"","ID":""})";
  constexpr char kUnread[] = R"({"request_info":""})";
  const std::pair<std::string, std::string> records[] = {
      {DefaultText<FisheyeWndParam>(), R"({"WndNo":0,"PosX":"","PosY":"","Zoom":""})"},
      {DefaultText<CycleResourceID>(), R"({"SiteID":"","ResourceID":"","ResourceName":""})"},
      {DefaultText<ZoomWindow>(), R"({"No":0,"TopX":0,"TopY":0,"BottomX":0,"BottomY":0})"},
      // Holds those of the other parts of a window.
      {DefaultText<PlanItem>(),
       R"({"Sequence":0,"ResourceType":0,"ResourceID":"","SiteID":"","ResourceName":"","OnlineStatus":0,)"
       R"("ResourceCapability":"","StreamType":0,"ConnectType":0,"CameraType":0,"PresetId":0,"PresetName":"",)"
       R"("IsDelete":false,"PermissionItem":"","RelateResourceType":-1,"RelateResourceID":-1,"RelateResourceName":"",)"
       R"("ExtendResource":"","DeviceID":0,"WindowNo":0,"Xtop":"-1.0","Ytop":"-1.0","Xbottom":"-1.0",)"
       R"("Ybottom":"-1.0","PresetPointIndex":0,"CruiseIndex":0,"TrackIndex":0,)"
       R"("FishEye":{"is_fisheye_open":false,"mount_type":0,"expand_mode":0,"window_no":0,"FisheyeWndParam":[]},)"
       R"("Emap":{"LoadMode":0,"PosX":"","PosY":"","ScaleSize":0,"ExtendInfo":""},)"
       R"("CenterMark":{"TopX":0,"TopY":0,"BottomX":0,"BottomY":0,"StreamType":0},)"
       R"("ZoomWindowList":{"ZoomMode":0,"ZoomWindow":[]},)"
       R"("RelatedZoomWindow":{"ViewItemWindowNo":"","ZoomWindowNo":-1},)"
       R"("CycleInfo":{"cycle_type":0,"cycle_time":0,"CycleName":"","CycleResourceID":[]}})"},
      {DefaultText<PlanPage>(), R"({"windowDivision":0,"customWindowDivision":"","PlanItems":[]})"},
      {DefaultText<PlanGroup>(), R"({"Name":"","ParentID":"","ID":"","Type":0,"is_share_viwgroup":false})"},
      {DefaultText<PlanBasicInfo>(), R"({"name":"","Remark":"","ID":"","ParentID":"","Type":0,"is_share_view":false})"},
      {DefaultText<SearchedPlan>(),
       R"({"indexCode":"","name":"","hightlightName":"","roundTime":0,"remark":"","presetDocType":"",)"
       R"("uploadPresetDoc":"","appCode":"","ownerId":"","flag":"","autoRun":"","planStartTime":"",)"
       R"("planEndTime":""})"},
      {DefaultText<GetPlanGroupsRequest>(), R"({"ParentID":"","GroupType":0})"},
      {DefaultText<GetPlanGroupsResponse>(), R"({"ErrorInfo":"","Total":0,"PlanGroups":[]})"},
      {DefaultText<AddPlanGroupRequest>(), R"({"Name":"","ParentID":"","Type":0,"is_share_viewgroup":false})"},
      {DefaultText<AddPlanGroupResponse>(), kErrorAndId},
      {DefaultText<UpdatePlanGroupRequest>(), R"({"Name":"","ID":"","is_share_viewgroup":false})"},
      {DefaultText<UpdatePlanGroupResponse>(), kError},
      {DefaultText<DeletePlanGroupRequest>(), R"({"ID":"","GroupName":"","Type":0})"},
      {DefaultText<DeletePlanGroupResponse>(), kError},
      {DefaultText<GetPlansInGroupRequest>(), R"({"GroupID":"","Type":0,"resource_download_judge":false})"},
      {DefaultText<GetPlansInGroupResponse>(), R"({"ErrorInfo":"","Total":0,"Plans":[]})"},
      {DefaultText<AddPlanRequest>(),
       R"({"GroupID":"","GroupName":"","Name":"","Type":0,"AutoCycle":0,"RoundTime":0,"Remark":"","AutoRun":0,)"
       R"("PlanStartTime":"","PlanEndTime":"","OwnerId":"","PlanPages":[]})"},
      {DefaultText<AddPlanResponse>(), kErrorAndId},
      {DefaultText<UpdatePlanRequest>(),
       R"({"GroupID":"","GroupName":"","ID":"","Name":"","OwnerId":"","Type":0,"AutoCycle":0,"RoundTime":0,)"
       R"("Remark":"","AutoRun":0,"PlanStartTime":"","PlanEndTime":"","PlanPages":[],"is_share_view":false})"},
      {DefaultText<UpdatePlanResponse>(), kError},
      {DefaultText<DeletePlanResquest>(), R"({"ID":"","Name":"","GroupID":"","GroupName":"","UserID":""})"},
      {DefaultText<DeletePlanResponse>(), kError},
      {DefaultText<GetPlanDetailRequest>(),
       R"({"ID":"","AutoRun":0,"PermissionItem":"","NeedResourceName":true,"resource_download_judge":false})"},
      {DefaultText<GetPlanDetailResponse>(),
       R"({"ErrorInfo":"","GroupID":"","ID":"","Name":"","Type":0,"AutoCycle":0,"RoundTime":0,"AppCode":"",)"
       R"("Remark":"","OwnerId":"","CreateTime":"","AutoRun":0,"PlanStartTime":"","PlanEndTime":"",)"
       R"("PlanPages":[],"is_share_view":false,"share_user_name":""})"},
      {DefaultText<GetPlanConfigRequest>(), R"({"request":""})"},
      {DefaultText<GetPlanConfigResponse>(),
       R"({"LoadAll":false,"CreateRootPlan":false,"EnableSearch":true,"EnableDrag":true,)"
       R"("SupportDelPlanWithChildren":true,"ViewOrPlan":0,"SupportTimedPlay":false,"OnlyCamera":false,)"
       R"("MoveBetweenPublicAndPrivate":false,"SupportAddCameraFromFavorite":false,"SupportSmoothStream":true,)"
       R"("ShowCreationInfo":false,"IsSupportSaveSingleCycle":false,"SupportThumbnail":true,)"
       R"("SupportPlanGroupCycle":false})"},
      {DefaultText<PlanSearchRequest>(), R"({"keyword":"","publicFlag":0})"},
      {DefaultText<PlanSearchResponse>(), R"({"ErrorInfo":"","total":0,"searchedPlan":[]})"},
      {DefaultText<IndexCodeStartRequest>(), R"({"IndexCode":"","Start":false,"Success":false})"},
      {DefaultText<IndexCodeStartResponse>(), kError},
      {DefaultText<ClienInitViewDataRequest>(), kUnread},
      {DefaultText<ClienInitViewDataResponse>(), R"({"error_info":"","init_finish":false})"},
      {DefaultText<GetCurrentUserRequest>(), R"({"str_request":""})"},
      {DefaultText<GetCurrentUserResponse>(), R"({"user_id":0,"user_name":""})"},
      {DefaultText<UserDetailInfo>(), R"({"user_id":0,"user_name":"","user_online":false,"user_ptz_ability":0})"},
      {DefaultText<UserRequestInfo>(), kUnread},
      {DefaultText<UserResponseInfo>(), R"({"error_info":"","user_detail_list":[]})"},
      {DefaultText<ViewShareResquestInfo>(), R"({"share_users":"","view_id":""})"},
      {DefaultText<UserErrorInfo>(), R"({"user_id":0,"user_name":"","error_model":0,"error_code":0})"},
      {DefaultText<ShareViewResponseInfo>(), R"({"error_model":0,"error_code":0,"error_info":"","lst_user_data":[]})"},
      {DefaultText<GetClientDefaultViewConfigRequest>(), kUnread},
      {DefaultText<GetClientDefaultViewConfigResponse>(),
       R"({"error_module":0,"error_code":0,"error_info":"",)"
       R"("ViewData":{"ViewDefaultConfig":{"view_type":0,"view_id":""}}})"},
      {DefaultText<ClienDefaultViewConfigRequest>(), R"({"view_type":0,"view_id":""})"},
      {DefaultText<ClienDefaultViewConfigReponse>(), R"({"error_info":""})"},
      {DefaultText<ResourceUpdateRegister>(), R"({"ResourceType":0,"ID":"","IsRegister":false})"},
  };
  for (const auto& [written, expected] : records) EXPECT_EQ(written, expected);
}

}  // namespace
}  // namespace protocol_test
