// SPDX-License-Identifier: Apache-2.0
// The rules by which every record is read and written, shown on one record that has a field of each kind; and every
// record of the protocol: its exact text, so that keys, kinds, order and defaults are those that hosts lean on.
#include <gtest/gtest.h>

#include <string>

#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace protocol_test {

using namespace QorviVideoComm;

#define SAMPLE_PART(FIELD) \
  FIELD(Integer, No, -1)   \
  FIELD(Text, Label)
QORVI_RECORD(Part, SAMPLE_PART)

#define SAMPLE(FIELD)        \
  FIELD(Integer, Count, 7)   \
  FIELD(Boolean, Open)       \
  FIELD(Text, Name, "unset") \
  FIELD(struct Part, Nested) \
  FIELD(Sequence<Part>, Parts)
QORVI_RECORD(Sample, SAMPLE)

namespace {

constexpr char kDefault[] = R"({"Count":7,"Open":false,"Name":"unset","Nested":{"No":-1,"Label":""},"Parts":[]})";

template <class Record>
std::string Written(Record& data) {
  AdapterOf<Record> record(&data);
  const std::string text = SerializeJsonResponse(record);
  return (text == SerializeJsonResponse(static_cast<IJSONStruct&>(record)) ? "" : "not that of the value tree: ") +
         text;
}

// What a record with the defaults becomes by reading the text, written again; "refused" when the text is refused.
std::string ReadAndWrite(const std::string& text) {
  Sample data;
  SampleJSONStruct record(&data);
  if (!ParseJsonRequest(record, text)) {
    EXPECT_EQ(Written(data), kDefault) << text;
    EXPECT_TRUE(record.m_readKeys.empty()) << text;
    return "refused";
  }
  return Written(data);
}

TEST(JsonRecordTest, WholeTextsAreRefusedOrReadLeniently) {
  for (const char* text : {"", "null", "{", " \t\r\n", "{},", R"({"Count":1,})", R"({"Count":1}/**/)",
                           R"({"Count":01})", R"({'Count':1})", "\xEF\xBB\xBF{}", R"({"Count":1e400,"Open":true})"}) {
    EXPECT_EQ(ReadAndWrite(text), "refused") << text;
  }
  EXPECT_EQ(ReadAndWrite(std::string("\0{}", 3)), "refused");
  for (const char* text : {" null", "null ", "5.5", R"("Count")", R"([{"Count":1}])", " { } "}) {
    EXPECT_EQ(ReadAndWrite(text), kDefault) << text;
  }
  EXPECT_EQ(ReadAndWrite(std::string("{}\0garbage", 10)), kDefault);
}

// The default text with a member in place of its own.
std::string With(const std::string& before, const std::string& member) {
  std::string text = kDefault;
  return text.replace(text.find(before), before.size(), member);
}

// Values of other kinds are tried below, in every record.
TEST(JsonRecordTest, EachFieldTakesOnlyItsOwnKind) {
  const std::pair<std::string, std::string> cases[] = {
      {R"({"Count":-2147483648})", With(R"("Count":7)", R"("Count":-2147483648)")},
      {R"({"Count":-0})", With(R"("Count":7)", R"("Count":0)")},
      {R"({"Count":2147483648})", kDefault},
      {R"({"Count":0.0000000001e-2147483639})", kDefault},
      {R"({"Count":1.0})", kDefault},
      {R"({"Name":""})", With("unset", "")},
      {R"({"Name":"a\u0000b"})", With("unset", "a")},
      {R"({"Name":"\u00e4\/\"\\\n\u0001"})", With("unset", "\xC3\xA4/\\\"\\\\\\n\\u0001")},
      {"{\"Name\":\"\xFF\xC3\"}", With("unset", "\xFF\xC3")},
      {R"({"Nested":{"Label":"x"}})", With(R"("Label":"")", R"("Label":"x")")},
      // Elements of whatever kind are elements without members.
      {R"({"Parts":[null,5,[{"No":3}],{"No":4}]})",
       With("[]", R"([{"No":-1,"Label":""},{"No":-1,"Label":""},{"No":-1,"Label":""},{"No":4,"Label":""}])")},
      // Keys are matched exactly, and the first of duplicates counts.
      {R"({"count":1," Count":1,"Count ":1,"Count\u0000":1})", kDefault},
      {R"({"Other":1,"Count":2,"Count":3})", With(R"("Count":7)", R"("Count":2)")},
      {R"({"Count":"1","Count":2})", kDefault},
      {R"({"Nested":{"No":1},"Nested":{"Label":"x"}})", With(R"("No":-1)", R"("No":1)")},
      // A wrong kind at one key does not stop the reading of the others.
      {R"({"Count":null,"Open":null,"Name":"n"})", With("unset", "n")},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(ReadAndWrite(text), expected) << text;
}

TEST(JsonRecordTest, ReadingAgainKeepsWhatTheTextDoesNotSayAndAppendsToSequences) {
  Sample data;
  SampleJSONStruct record(&data);
  ASSERT_TRUE(ParseJsonRequest(record, R"({"Count":1,"Nested":{"No":1,"Label":"a"},"Parts":[{"No":1}]})"));
  ASSERT_TRUE(ParseJsonRequest(record, R"({"Open":true,"Name":"a\u0000b","Nested":{"No":2},"Parts":[{"No":2}]})"));
  ASSERT_FALSE(ParseJsonRequest(record, R"({"Count":9)"));
  EXPECT_EQ(data.Name, "a");
  EXPECT_EQ(Written(data), R"({"Count":1,"Open":true,"Name":"a","Nested":{"No":2,"Label":"a"},)"
                           R"("Parts":[{"No":1,"Label":""},{"No":2,"Label":""}]})");
}

TEST(JsonRecordTest, DeepNestingCostsNoStack) {
  constexpr size_t kDepth = 500'000;
  const std::string arrays = std::string(kDepth, '[') + std::string(kDepth, ']');
  std::string objects;
  for (size_t i = 0; i < kDepth; ++i) objects += R"({"Nested":)";
  objects += "1" + std::string(kDepth, '}');
  for (const std::string& deep : {arrays, objects}) {
    EXPECT_EQ(ReadAndWrite(deep), kDefault);
    EXPECT_EQ(ReadAndWrite(R"({"Parts":[)" + deep + "]}"), With("[]", R"([{"No":-1,"Label":""}])"));
    EXPECT_EQ(ReadAndWrite(deep.substr(0, deep.size() - 1)), "refused");
  }
}

TEST(JsonRecordTest, AFilterDecidesWhichKeysAreWritten) {
  constexpr char kAll[] = R"({"Count":7,"Open":false,"Name":"a","Nested":{"No":-1,"Label":""},)"
                          R"("Parts":[{"No":-1,"Label":""}]})";
  const struct {
    uint32_t mode;
    std::set<std::string> keys;
    std::string expected;
  } cases[] = {
      {0, {}, kAll},
      {0, {"Count", "Nested", "No", "other"}, R"({"Open":false,"Name":"a","Parts":[{"No":-1,"Label":""}]})"},
      {1, {}, "{}"},
      {1, {"Name", "No"}, R"({"Name":"a"})"},
      {2, {"Count"}, kAll},
  };
  Sample data;
  data.Name = std::string("a\0b", 3);
  data.Parts.resize(1);
  SampleJSONStruct record(&data);
  EXPECT_EQ(SerializeJsonResponse(record), kAll) << "without a filter";
  rapidjson::Document document;
  rapidjson::Value tree = record.ToJSON(document.GetAllocator());
  EXPECT_EQ(tree["Name"].GetString(), data.Name.c_str()) << "it refers to the record's own texts";
  for (const auto& c : cases) {
    record.m_keyFilter = std::make_shared<JSONKeyFilter>(JSONKeyFilter{c.mode, c.keys});
    EXPECT_EQ(SerializeJsonResponse(record), c.expected) << c.mode;
  }
  // Keys that are null or empty are not left out.
  record.m_keyFilter = std::make_shared<JSONKeyFilter>(JSONKeyFilter{1, {}});
  tree.SetObject();
  record.AddInteger(tree, "", 1, document.GetAllocator());
  record.AddBoolean(tree, nullptr, true, document.GetAllocator());
  record.AddInteger(tree, "x", 1, document.GetAllocator());
  EXPECT_EQ(tree.MemberCount(), 2u);
}

// --- All records of the protocol

using namespace QorviViewPlugin_view_plugin_protocol;

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

template <class Type>
constexpr bool kIsRecord = !std::is_fundamental_v<Type> && !std::is_same_v<Type, Text> && !kIsSequence<Type>;

// Some text of each JSON kind, and which of them a field of that type takes.
template <class Type>
std::vector<std::string> ForeignValues() {
  std::vector<std::string> values = {"null", "1.5", "4294967296"};
  if (!std::is_same_v<Type, Integer>) values.push_back("1");
  if (!std::is_same_v<Type, Boolean>) values.insert(values.end(), {"true", "false"});
  if (!std::is_same_v<Type, Text>) values.push_back(R"("1")");
  if (!kIsSequence<Type>) values.push_back("[{}]");
  if (!kIsRecord<Type>) values.push_back("{}");
  return values;
}

// The texts with a value of a foreign kind that do not leave each field as it was, in the record and those within it.
template <class Record>
std::string MisreadTexts() {
  std::string misread;
  ForEachField<Record>([&misread](const auto& field) {
    using Type = std::remove_cvref_t<decltype(std::declval<Record>().*field.member)>;
    if constexpr (kIsRecord<Type>) misread += MisreadTexts<Type>();
    for (const std::string& value : ForeignValues<Type>()) {
      const std::string text = "{\"" + std::string(field.key) + "\":" + value + "}";
      Record data;
      AdapterOf<Record> record(&data);
      if (!ParseJsonRequest(record, text) || data != Record() || !record.m_readKeys.empty()) misread += text + "\n";
    }
  });
  return misread;
}

// What is wrong with a record. Expectations in here would have to be compiled as often as there are records.
template <class Record>
std::string Faults(const std::string& defaultText) {
  std::string faults = MisreadTexts<Record>();
  Record data;
  if (Written(data) != defaultText) faults += "by default " + Written(data) + "\n";
  Filler().Fill(data);
  Record read;
  AdapterOf<Record> record(&read);
  if (!ParseJsonRequest(record, Written(data)) || read != data || read == Record() ||
      record.m_readKeys.size() != std::tuple_size_v<decltype(FieldsOf(std::type_identity<Record>{}))>) {
    faults += "lost on the way: " + Written(data) + "\n";
  }
  return faults;
}

TEST(RecordSetTest, EachIsWrittenInFullAndInOrderAndReadByKind) {
  constexpr char kError[] = R"({"ErrorInfo":""})";
  constexpr char kErrorAndId[] = R"({"ErrorInfo":"","ID":""})";
  constexpr char kUnread[] = R"({"request_info":""})";
  const std::string faults[] = {
      Faults<FisheyeWndParam>(R"({"WndNo":0,"PosX":"","PosY":"","Zoom":""})"),
      Faults<CycleResourceID>(R"({"SiteID":"","ResourceID":"","ResourceName":""})"),
      Faults<ZoomWindow>(R"({"No":0,"TopX":0,"TopY":0,"BottomX":0,"BottomY":0})"),
      // Holds those of the other parts of a window.
      Faults<PlanItem>(
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
          R"("CycleInfo":{"cycle_type":0,"cycle_time":0,"CycleName":"","CycleResourceID":[]}})"),
      Faults<PlanPage>(R"({"windowDivision":0,"customWindowDivision":"","PlanItems":[]})"),
      Faults<PlanGroup>(R"({"Name":"","ParentID":"","ID":"","Type":0,"is_share_viwgroup":false})"),
      Faults<PlanBasicInfo>(R"({"name":"","Remark":"","ID":"","ParentID":"","Type":0,"is_share_view":false})"),
      Faults<SearchedPlan>(
          R"({"indexCode":"","name":"","hightlightName":"","roundTime":0,"remark":"","presetDocType":"",)"
          R"("uploadPresetDoc":"","appCode":"","ownerId":"","flag":"","autoRun":"","planStartTime":"",)"
          R"("planEndTime":""})"),
      Faults<GetPlanGroupsRequest>(R"({"ParentID":"","GroupType":0})"),
      Faults<GetPlanGroupsResponse>(R"({"ErrorInfo":"","Total":0,"PlanGroups":[]})"),
      Faults<AddPlanGroupRequest>(R"({"Name":"","ParentID":"","Type":0,"is_share_viewgroup":false})"),
      Faults<AddPlanGroupResponse>(kErrorAndId),
      Faults<UpdatePlanGroupRequest>(R"({"Name":"","ID":"","is_share_viewgroup":false})"),
      Faults<UpdatePlanGroupResponse>(kError),
      Faults<DeletePlanGroupRequest>(R"({"ID":"","GroupName":"","Type":0})"),
      Faults<DeletePlanGroupResponse>(kError),
      Faults<GetPlansInGroupRequest>(R"({"GroupID":"","Type":0,"resource_download_judge":false})"),
      Faults<GetPlansInGroupResponse>(R"({"ErrorInfo":"","Total":0,"Plans":[]})"),
      Faults<AddPlanRequest>(
          R"({"GroupID":"","GroupName":"","Name":"","Type":0,"AutoCycle":0,"RoundTime":0,"Remark":"","AutoRun":0,)"
          R"("PlanStartTime":"","PlanEndTime":"","OwnerId":"","PlanPages":[]})"),
      Faults<AddPlanResponse>(kErrorAndId),
      Faults<UpdatePlanRequest>(
          R"({"GroupID":"","GroupName":"","ID":"","Name":"","OwnerId":"","Type":0,"AutoCycle":0,"RoundTime":0,)"
          R"("Remark":"","AutoRun":0,"PlanStartTime":"","PlanEndTime":"","PlanPages":[],"is_share_view":false})"),
      Faults<UpdatePlanResponse>(kError),
      Faults<DeletePlanResquest>(R"({"ID":"","Name":"","GroupID":"","GroupName":"","UserID":""})"),
      Faults<DeletePlanResponse>(kError),
      Faults<GetPlanDetailRequest>(
          R"({"ID":"","AutoRun":0,"PermissionItem":"","NeedResourceName":true,"resource_download_judge":false})"),
      Faults<GetPlanDetailResponse>(
          R"({"ErrorInfo":"","GroupID":"","ID":"","Name":"","Type":0,"AutoCycle":0,"RoundTime":0,"AppCode":"",)"
          R"("Remark":"","OwnerId":"","CreateTime":"","AutoRun":0,"PlanStartTime":"","PlanEndTime":"",)"
          R"("PlanPages":[],"is_share_view":false,"share_user_name":""})"),
      Faults<GetPlanConfigRequest>(R"({"request":""})"),
      Faults<GetPlanConfigResponse>(
          R"({"LoadAll":false,"CreateRootPlan":false,"EnableSearch":true,"EnableDrag":true,)"
          R"("SupportDelPlanWithChildren":true,"ViewOrPlan":0,"SupportTimedPlay":false,"OnlyCamera":false,)"
          R"("MoveBetweenPublicAndPrivate":false,"SupportAddCameraFromFavorite":false,"SupportSmoothStream":true,)"
          R"("ShowCreationInfo":false,"IsSupportSaveSingleCycle":false,"SupportThumbnail":true,)"
          R"("SupportPlanGroupCycle":false})"),
      Faults<PlanSearchRequest>(R"({"keyword":"","publicFlag":0})"),
      Faults<PlanSearchResponse>(R"({"ErrorInfo":"","total":0,"searchedPlan":[]})"),
      Faults<IndexCodeStartRequest>(R"({"IndexCode":"","Start":false,"Success":false})"),
      Faults<IndexCodeStartResponse>(kError),
      Faults<ClienInitViewDataRequest>(kUnread),
      Faults<ClienInitViewDataResponse>(R"({"error_info":"","init_finish":false})"),
      Faults<GetCurrentUserRequest>(R"({"str_request":""})"),
      Faults<GetCurrentUserResponse>(R"({"user_id":0,"user_name":""})"),
      Faults<UserDetailInfo>(R"({"user_id":0,"user_name":"","user_online":false,"user_ptz_ability":0})"),
      Faults<UserRequestInfo>(kUnread),
      Faults<UserResponseInfo>(R"({"error_info":"","user_detail_list":[]})"),
      Faults<ViewShareResquestInfo>(R"({"share_users":"","view_id":""})"),
      Faults<UserErrorInfo>(R"({"user_id":0,"user_name":"","error_model":0,"error_code":0})"),
      Faults<ShareViewResponseInfo>(R"({"error_model":0,"error_code":0,"error_info":"","lst_user_data":[]})"),
      Faults<GetClientDefaultViewConfigRequest>(kUnread),
      Faults<GetClientDefaultViewConfigResponse>(R"({"error_module":0,"error_code":0,"error_info":"",)"
                                                 R"("ViewData":{"ViewDefaultConfig":{"view_type":0,"view_id":""}}})"),
      Faults<ClienDefaultViewConfigRequest>(R"({"view_type":0,"view_id":""})"),
      Faults<ClienDefaultViewConfigReponse>(R"({"error_info":""})"),
      Faults<ResourceUpdateRegister>(R"({"ResourceType":0,"ID":"","IsRegister":false})"),
  };
  for (const std::string& text : faults) EXPECT_EQ(text, "");
}

}  // namespace
}  // namespace protocol_test
