// SPDX-License-Identifier: Apache-2.0
// The rules by which every record is read and written, shown on one record that has a field of each kind.
#include "QorviViewPlugin/protocol/JsonRecord.h"

#include <gtest/gtest.h>

#include <string>

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

std::string Write(Sample& data) {
  SampleJSONStruct record(&data);
  return SerializeJsonResponse(record);
}

// What a record with the defaults becomes by reading the text, written again; "refused" when the text is refused.
std::string ReadAndWrite(const std::string& text) {
  Sample data;
  SampleJSONStruct record(&data);
  if (!ParseJsonRequest(record, text)) {
    EXPECT_EQ(Write(data), kDefault) << text;
    EXPECT_TRUE(record.m_readKeys.empty()) << text;
    return "refused";
  }
  return Write(data);
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

// Values of other kinds are in RecordSetTest.cpp.
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
  EXPECT_EQ(Write(data), R"({"Count":1,"Open":true,"Name":"a","Nested":{"No":2,"Label":"a"},)"
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
  for (const auto& c : cases) {
    record.m_keyFilter = std::make_shared<JSONKeyFilter>(JSONKeyFilter{c.mode, c.keys});
    EXPECT_EQ(SerializeJsonResponse(record), c.expected) << c.mode;
  }
}

TEST(JsonRecordTest, TheValueTreeRefersToTheRecordsOwnTextsAndLeavesOutNoNullOrEmptyKey) {
  Sample data;
  SampleJSONStruct record(&data);
  rapidjson::Document document;
  rapidjson::Value value = record.ToJSON(document.GetAllocator());
  EXPECT_EQ(value["Name"].GetString(), data.Name.c_str());
  record.m_keyFilter = std::make_shared<JSONKeyFilter>(JSONKeyFilter{1, {}});
  value.SetObject();
  record.AddInteger(value, "", 1, document.GetAllocator());
  record.AddBoolean(value, nullptr, true, document.GetAllocator());
  record.AddInteger(value, "x", 1, document.GetAllocator());
  EXPECT_EQ(value.MemberCount(), 2u);
}

}  // namespace
}  // namespace protocol_test
