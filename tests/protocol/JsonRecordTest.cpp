// SPDX-License-Identifier: Apache-2.0
// The rules by which every record is read and written, shown on one record that has a field of each kind; and every
// record of the protocol: its exact text, so that keys, kinds, order and defaults are those that hosts lean on.
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <string>

#include "../Cases.h"
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
  for (const auto& [text, expected] : testing_support::Cases(SAMPLE_TEXTS))
    EXPECT_EQ(ReadAndWrite(text), expected[0]) << text;
  EXPECT_EQ(ReadAndWrite(R"({"Name":"\u00e4\/\"\\\n\u0001"})"), With("unset", "\xC3\xA4/\\\"\\\\\\n\\u0001"));
  EXPECT_EQ(ReadAndWrite("{\"Name\":\"\xFF\xC3\"}"), With("unset", "\xFF\xC3"));
}

TEST(JsonRecordTest, ReadingAgainKeepsWhatTheTextDoesNotSayAndAppendsToSequences) {
  Sample data;
  SampleJSONStruct record(&data);
  ASSERT_TRUE(ParseJsonRequest(record, R"({"Count":1,"Nested":{"No":1,"Label":"a"},"Parts":[{"No":1}]})"));
  ASSERT_TRUE(
      ParseJsonRequest(record, R"({"Open":true,"Name":"a\u0000b","Nested":{"No":2},"Open":false,"Parts":[{"No":2}]})"));
  ASSERT_FALSE(ParseJsonRequest(record, R"({"Count":9)"));
  EXPECT_EQ(data.Name, "a");
  EXPECT_EQ(Written(data), R"({"Count":1,"Open":true,"Name":"a","Nested":{"No":2,"Label":"a"},)"
                           R"("Parts":[{"No":1,"Label":""},{"No":2,"Label":""}]})");
}

TEST(JsonRecordTest, NoMemberIsFoundBehindTheLast) {
  rapidjson::Document document;
  document.Parse(R"({"abcd":1,"aXcd":2})");  // names that share a mark
  document.RemoveMember("aXcd");             // whose memory stays as it was
  EXPECT_EQ(json::MemberFinder<const rapidjson::Value>(&document).Find("aXcd"), nullptr);
  json::MemberFinder<const rapidjson::Value> members(&document);
  EXPECT_NE(members.Find("abcd"), nullptr);
  EXPECT_EQ(members.Find("aXcd"), nullptr);
}

TEST(JsonRecordTest, AnyValueMayStandWhereThePoolsMemoryBegins) {
  rapidjson::MemoryPoolAllocator<> pool;
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pool.Malloc(1)) % alignof(rapidjson::Value), 0u);
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
  Sample data;
  data.Name = std::string("a\0b", 3);
  data.Parts.resize(1);
  SampleJSONStruct record(&data);
  EXPECT_EQ(SerializeJsonResponse(record), kAll) << "without a filter";
  rapidjson::Document document;
  rapidjson::Value tree = record.ToJSON(document.GetAllocator());
  EXPECT_EQ(tree["Name"].GetString(), data.Name.c_str()) << "it refers to the record's own texts";
  const auto written = [&record](uint32_t mode, const std::set<std::string>& keys) {
    record.m_keyFilter = std::make_shared<JSONKeyFilter>(JSONKeyFilter{mode, keys});
    return SerializeJsonResponse(record);
  };
  EXPECT_EQ(written(0, {}), kAll);
  EXPECT_EQ(written(0, {"Count", "Nested", "No", "other"}),
            R"({"Open":false,"Name":"a","Parts":[{"No":-1,"Label":""}]})");
  EXPECT_EQ(written(1, {"Name", "No"}), R"({"Name":"a"})");
  EXPECT_EQ(written(2, {"Count"}), kAll);
  EXPECT_EQ(written(1, {}), "{}");
  // Keys that are null or empty are not left out.
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
      record.m_readKeys.size() != std::tuple_size_v<decltype(FieldsOf(static_cast<const Record*>(nullptr)))>) {
    faults += "lost on the way: " + Written(data) + "\n";
  }
  return faults;
}

// The faults of these records, of whose default texts each stands in a line, behind its name.
template <class... Records>
std::string FaultsOfEach(std::istream& defaultTexts) {
  std::string line, faults;
  const auto next = [&] { return std::getline(defaultTexts, line) ? line.substr(line.find('{')) : "(none)"; };
  ((faults += Faults<Records>(next())), ...);
  return faults;
}

TEST(RecordSetTest, EachIsWrittenInFullAndInOrderAndReadByKind) {
  std::ifstream texts(RECORD_TEXTS);
  // PlanItem holds those of the other parts of a window.
  EXPECT_EQ(
      (FaultsOfEach<FisheyeWndParam, CycleResourceID, ZoomWindow, PlanItem, PlanPage, PlanGroup, PlanBasicInfo,
                    SearchedPlan, GetPlanGroupsRequest, GetPlanGroupsResponse, AddPlanGroupRequest,
                    AddPlanGroupResponse, UpdatePlanGroupRequest, UpdatePlanGroupResponse, DeletePlanGroupRequest,
                    DeletePlanGroupResponse, GetPlansInGroupRequest, GetPlansInGroupResponse, AddPlanRequest,
                    AddPlanResponse, UpdatePlanRequest, UpdatePlanResponse, DeletePlanResquest, DeletePlanResponse,
                    GetPlanDetailRequest, GetPlanDetailResponse, GetPlanConfigRequest, GetPlanConfigResponse,
                    PlanSearchRequest, PlanSearchResponse, IndexCodeStartRequest, IndexCodeStartResponse,
                    ClienInitViewDataRequest, ClienInitViewDataResponse, GetCurrentUserRequest, GetCurrentUserResponse,
                    UserDetailInfo, UserRequestInfo, UserResponseInfo, ViewShareResquestInfo, UserErrorInfo,
                    ShareViewResponseInfo, GetClientDefaultViewConfigRequest, GetClientDefaultViewConfigResponse,
                    ClienDefaultViewConfigRequest, ClienDefaultViewConfigReponse, ResourceUpdateRegister>(texts)),
      "");
  EXPECT_TRUE(texts.peek() == EOF);
}

}  // namespace
}  // namespace protocol_test
