// SPDX-License-Identifier: Apache-2.0
// Every record of the protocol, walked through its own list of fields; and the exact texts of the records whose order
// and defaults a host is most likely to lean on.
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
  EXPECT_EQ(
      DefaultText<PlanItem>(),
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
      R"("CycleInfo":{"cycle_type":0,"cycle_time":0,"CycleName":"","CycleResourceID":[]}})");
  EXPECT_EQ(DefaultText<UpdatePlanRequest>(),
            R"({"GroupID":"","GroupName":"","ID":"","Name":"","OwnerId":"","Type":0,"AutoCycle":0,"RoundTime":0,)"
            R"("Remark":"","AutoRun":0,"PlanStartTime":"","PlanEndTime":"","PlanPages":[],"is_share_view":false})");
  EXPECT_EQ(DefaultText<PlanSearchResponse>(), R"({"ErrorInfo":"","total":0,"searchedPlan":[]})");
  EXPECT_EQ(DefaultText<SearchedPlan>(),
            R"({"indexCode":"","name":"","hightlightName":"","roundTime":0,"remark":"","presetDocType":"",)"
            R"("uploadPresetDoc":"","appCode":"","ownerId":"","flag":"","autoRun":"","planStartTime":"",)"
            R"("planEndTime":""})");
}

}  // namespace
}  // namespace protocol_test
