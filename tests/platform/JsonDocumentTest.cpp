// SPDX-License-Identifier: Apache-2.0
// The JSON documents that are addressed by slash paths: what every form of value and path reads as, and what writing
// builds.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "NetLink/RapidJsonProto.h"

namespace {

using NetLink::CRapidJsonProto;

constexpr int kNone = -77;

class JsonDocument : public testing::Test {
 protected:
  // Reads of the value that `json` stands for.
  int Int(const std::string& json) { return Holding(json).get_int_v("/v", kNone); }
  std::string Text(const std::string& json) { return Holding(json).get_v("/v", "none"); }
  float Float(const std::string& json) { return Holding(json).get_float_v("/v", kNone); }
  int Count(const std::string& json) { return Holding(json).get_cnt("/v"); }

  CRapidJsonProto& Holding(const std::string& json) {
    EXPECT_TRUE(document.set_str("{\"v\":" + json + "}")) << json;
    return document;
  }

  CRapidJsonProto document;
};

TEST_F(JsonDocument, AnIntegerIsReadFromWhatFitsThirtyTwoBits) {
  const struct {
    const char* json;
    int expected;
  } cases[] = {
      {"0", 0},
      {"-0", 0},
      {"2147483647", 2147483647},
      {"-2147483648", std::numeric_limits<int>::min()},
      {"2147483648", std::numeric_limits<int>::min()},
      {"4294967295", -1},
      {"4294967296", kNone},
      {"-2147483649", kNone},
      {"18446744073709551615", kNone},
      {"18446744073709551616", kNone},
      {"1.9", 1},
      {"-1.9", -1},
      {"-0.5", 0},
      {"1e3", 1000},
      {"4294967295.9", -1},
      {"4294967296.0", kNone},
      {"-2147483648.9", std::numeric_limits<int>::min()},
      {"-2147483649.0", kNone},
      {"1e300", kNone},
      {"\"12\"", 12},
      {"\"-12\"", -12},
      {"\"0012\"", 12},
      {"\"4294967295\"", -1},
      {"\"4294967296\"", kNone},
      {"\"-2147483649\"", kNone},
      {"\"99999999999999999999\"", kNone},
      {"\"00000000000000000000000000000000000007\"", 7},
      {"\"\"", kNone},
      {"\"-\"", kNone},
      {"\"+1\"", kNone},
      {"\" 1\"", kNone},
      {"\"1 \"", kNone},
      {"\"1\\u0000\"", kNone},
      {"\"1.0\"", kNone},
      {"\"0x1\"", kNone},
      {"true", kNone},
      {"null", kNone},
      {"[1]", kNone},
      {"{}", kNone},
  };
  for (const auto& c : cases) EXPECT_EQ(Int(c.json), c.expected) << c.json;
}

TEST_F(JsonDocument, ATextIsReadFromTextsAndNumbers) {
  const struct {
    const char* json;
    std::string expected;
  } cases[] = {
      {"\"\"", ""},
      {"\"a\\u00e9\\ud83d\\ude00\"", "a\xC3\xA9\xF0\x9F\x98\x80"},
      {"\"a\\u0000b\"", std::string("a\0b", 3)},
      {"-7", "-7"},
      {"4294967295", "4294967295"},
      {"-9223372036854775808", "-9223372036854775808"},
      {"18446744073709551615", "18446744073709551615"},
      {"0.1", "0.1"},
      {"0.30000000000000004", "0.30000000000000004"},
      {"116.39745600", "116.397456"},
      {"1.0", "1.0"},
      {"-0.0", "-0.0"},
      {"123456789012345680000.0", "123456789012345680000.0"},
      {"0.000001", "0.000001"},
      {"-1.7976931348623157e308", "-1.7976931348623157e308"},
      {"5e-324", "5e-324"},
      {"1e30", "1e30"},
      {"1.5e-7", "1.5e-7"},
      {"true", "none"},
      {"null", "none"},
      {"[\"a\"]", "none"},
      {"{}", "none"},
  };
  for (const auto& c : cases) EXPECT_EQ(Text(c.json), c.expected) << c.json;
}

TEST_F(JsonDocument, AFloatIsReadFromNumbersAndTextsThatAreWhollyOne) {
  constexpr float kMax = std::numeric_limits<float>::max();
  const struct {
    const char* json;
    float expected;
  } cases[] = {
      {"3", 3.0F},
      {"0.25", 0.25F},
      {"1e300", kMax},
      {"-1e300", -kMax},
      {"18446744073709551615", 18446744073709551615.0F},
      {"\"0.250000\"", 0.25F},
      {"\"-1e2\"", -100.0F},
      {"\"1E+2\"", 100.0F},
      {"\"007\"", 7.0F},
      {"\"1e999\"", kMax},
      {"\"-1e999\"", -kMax},
      {"\"1e99999999999999999999\"", kMax},
      {"\"1e-999\"", 0.0F},
      {"\"1e-99999999999999999999\"", 0.0F},
      {"\"0e99999999999999999999\"", 0.0F},
      {"\"0.0e999\"", 0.0F},
      {"\"\"", kNone},
      {"\"1,5\"", kNone},
      {"\"1.\"", kNone},
      {"\".5\"", kNone},
      {"\"+1\"", kNone},
      {"\" 1\"", kNone},
      {"\"1 \"", kNone},
      {"\"1e\"", kNone},
      {"\"0x10\"", kNone},
      {"\"nan\"", kNone},
      {"\"inf\"", kNone},
      {"\"-infinity\"", kNone},
      {"true", kNone},
      {"null", kNone},
      {"[1]", kNone},
  };
  for (const auto& c : cases) EXPECT_EQ(Float(c.json), c.expected) << c.json;
  const std::string zeros(400, '0');
  EXPECT_EQ(Float("\"1" + zeros + "e-1\""), kMax);
  EXPECT_EQ(Float("\"1" + zeros + "e-400\""), 1.0F);
  EXPECT_EQ(Float("\"0." + zeros + "1e2\""), 0.0F);
  EXPECT_EQ(Float("\"" + zeros + ".5\""), 0.5F);

  // Too small for a double: zero. Digits and exponents of any number make no difference.
  for (const std::string& tiny :
       std::vector<std::string>{"0." + zeros + "1", "0." + zeros + "1e-20", "-0.0000000001e-2147483639", "0e" + zeros,
                                "1e-99999999999999999999"}) {
    EXPECT_EQ(Float(tiny), 0.0F) << tiny;
    EXPECT_EQ(Int(tiny), 0) << tiny;
  }
  EXPECT_EQ(Float("0." + zeros + "25e401"), 2.5F);
}

TEST_F(JsonDocument, OnlyTrueAndFalseAreRead) {
  EXPECT_TRUE(Holding("true").get_bool_v("/v", false));
  EXPECT_FALSE(Holding("false").get_bool_v("/v", true));
  for (const char* json : {"1", "0", "\"true\"", "null", "[true]", "{}"}) {
    EXPECT_TRUE(Holding(json).get_bool_v("/v", true)) << json;
    EXPECT_FALSE(Holding(json).get_bool_v("/v", false)) << json;
  }
}

TEST_F(JsonDocument, CountsElements) {
  const struct {
    const char* json;
    int expected;
  } cases[] = {{"[]", 0}, {"[1,null,3]", 3}, {"null", 0}, {"{}", 1}, {"0", 1}, {"\"\"", 1}, {"false", 1}};
  for (const auto& c : cases) EXPECT_EQ(Count(c.json), c.expected) << c.json;
  EXPECT_EQ(document.get_cnt("/absent"), 0);
}

TEST_F(JsonDocument, PathsAddressMembersElementsAndLoneObjects) {
  ASSERT_TRUE(document.set_str(R"({"a":{"b":[{"c":1},{"c":2},[{"c":9}]],"b":[{"c":8}]},"lone":{"x":3},"n":4,"a":0})"));
  const struct {
    const char* path;
    int expected;
  } cases[] = {
      {"/a/b[1]/c", 1},
      {"/a/b[2]/c", 2},
      {"/a/b[02]/c", 2},
      {"/lone[1]/x", 3},
      {"/n[1]", 4},
      {"/a[1]/b[1]/c", 1},
      {"/a/b[0]/c", kNone},
      {"/a/b[4]/c", kNone},
      {"/a/b/c", kNone},
      {"/a/b[3]/c", kNone},
      {"/lone[2]/x", kNone},
      {"/n[2]", kNone},
      {"/n/x", kNone},
      {"a/b[1]/c", kNone},
      {"", kNone},
      {"/", kNone},
      {"/n/", kNone},
      {"//n", kNone},
      {"/a//b[1]/c", kNone},
      {"/[1]", kNone},
      {"/a/b[]/c", kNone},
      {"/a/b[1/c", kNone},
      {"/a/b[-1]/c", kNone},
      {"/a/b[+1]/c", kNone},
      {"/a/b[1]x/c", kNone},
      {"/a/b[x]/c", kNone},
      {"/a/b[1][1]/c", kNone},
      {"/a/b[ 1]/c", kNone},
      {"/A/b[1]/c", kNone},
      {"/a/b[18446744073709551617]/c", kNone},
      {"/a/b[4294967297]/c", kNone},
      {"/n[", kNone},
      {"/n]", kNone},
  };
  // Twice: what the first reads remembered must not change what the second ones answer.
  for (int round = 0; round < 2; ++round) {
    for (const auto& c : cases) EXPECT_EQ(document.get_int_v(c.path, kNone), c.expected) << c.path;
  }
}

TEST_F(JsonDocument, ATextThatIsNotJsonLeavesNothingToRead) {
  const std::string bad[] = {"",
                             "{",
                             "{\"v\":1",
                             "{\"v\":1}}",
                             "{\"v\":1} x",
                             "{\"v\":01}",
                             "{v:1}",
                             "[1,]",
                             "nul",
                             "{\"v\":1e999}",
                             "{\"v\":1.7976931348623159e308}",
                             "{\"v\":-1.8e308}",
                             "{\"v\":1" + std::string(299, '3') + "e308}",
                             "{\"v\":1e99999999999999999999}",
                             "{\"v\":NaN}",
                             "{\"v\":\"\\ud800\"}",
                             "{\"v\":\"a\nb\"",
                             std::string("{\"v\":1}\0", 8),
                             std::string("{\"v\":1}\0{}", 10)};
  for (const std::string& text : bad) {
    Holding("1");
    EXPECT_FALSE(document.set_str(text)) << text;
    EXPECT_EQ(document.get_cnt("/v"), 0) << text;
    EXPECT_EQ(document.get_str(0), "{}") << text;
  }
  for (const char* text : {" {\"v\" : 1} \n", "[]", "1", "null", "\"\""}) EXPECT_TRUE(document.set_str(text)) << text;
  EXPECT_EQ(document.get_cnt("/v"), 0);
}

TEST_F(JsonDocument, TextOfTheDocumentIsCompactAndKeepsOrderAndDuplicates) {
  ASSERT_TRUE(document.set_str(
      " { \"b\" : [ 1 , 2.50 , 0.30000000000000004 , { } , [ ] ] , \"a\" : null , \"b\" : \"\\u00e9\\/\\n\" } "));
  EXPECT_EQ(document.get_str(0), "{\"b\":[1,2.5,0.30000000000000004,{},[]],\"a\":null,\"b\":\"\xC3\xA9/\\n\"}");
}

TEST_F(JsonDocument, WritesBuildObjectsAndArraysInTheOrderFirstWritten) {
  document.set_v("/View/ID", 7);
  document.set_v("/View/Pages[1]/Type", -1);
  document.set_v("/View/Pages[1]/Item[1]/Name", std::string("\"\xC3\xA9\0", 4));
  document.set_v("/View/Pages[1]/Item[2]/Name", std::string());
  document.set_v("/View/Pages[2]/Type", 3);
  document.set_v("/View/Flat[1]", 1);
  document.set_v("/View/Flat[2]", "x");
  document.set_v("/View/ID", "replaced in place");
  EXPECT_EQ(
      document.get_str(0),
      "{\"View\":{\"ID\":\"replaced in place\",\"Pages\":[{\"Type\":-1,\"Item\":[{\"Name\":\"\\\"\xC3\xA9\\u0000\"},"
      "{\"Name\":\"\"}]},{\"Type\":3}],\"Flat\":[1,\"x\"]}}");
}

TEST_F(JsonDocument, WritesGiveWayOnlyWhereAPathNeedsIt) {
  const struct {
    const char* before;
    const char* path;
    const char* after;
  } cases[] = {
      {"{}", "/a/b[2]/c", "{}"},
      {"{}", "/a/b[1]/c[0]", "{}"},
      {"{}", "/a//b", "{}"},
      {"{}", "/a/", "{}"},
      {"{}", "a", "{}"},
      {"{}", "", "{}"},
      {"{}", "/a[4000000000]", "{}"},
      {"{\"a\":[1]}", "/a[3]/b", "{\"a\":[1]}"},
      {"{\"a\":[1]}", "/a[2]/b", "{\"a\":[1,{\"b\":5}]}"},
      {"{\"a\":[1]}", "/a[1]/b", "{\"a\":[{\"b\":5}]}"},
      {"{\"a\":[1]}", "/a/b", "{\"a\":{\"b\":5}}"},
      {"{\"a\":[1]}", "/a", "{\"a\":5}"},
      {"{\"a\":1}", "/a/b", "{\"a\":{\"b\":5}}"},
      {"{\"a\":{\"c\":1}}", "/a[1]/b", "{\"a\":{\"c\":1,\"b\":5}}"},
      {"{\"a\":{\"c\":1}}", "/a[2]/b", "{\"a\":[{\"c\":1},{\"b\":5}]}"},
      {"{\"a\":{\"c\":1}}", "/a[3]/b", "{\"a\":{\"c\":1}}"},
      {"{\"a\":null}", "/a[1]/b", "{\"a\":{\"b\":5}}"},
      {"{\"a\":null}", "/a[2]/b", "{\"a\":null}"},
      {"{\"a\":1,\"a\":2}", "/a", "{\"a\":5,\"a\":2}"},
      {"[1]", "/a", "{\"a\":5}"},
      {"[1]", "/a[2]", "[1]"},
  };
  for (const auto& c : cases) {
    ASSERT_TRUE(document.set_str(c.before));
    document.set_v(c.path, 5);
    EXPECT_EQ(document.get_str(0), c.after) << c.before << " " << c.path;
  }
}

TEST_F(JsonDocument, ReadsAndWritesTakeTurns) {
  document.set_v("/a/b/c", 1);
  EXPECT_EQ(document.get_cnt("/a/b"), 1);
  document.set_v("/a/b", 2);
  EXPECT_EQ(document.get_int_v("/a/b/c", kNone), kNone);
  EXPECT_EQ(document.get_int_v("/a/b", kNone), 2);
  // Enough members and elements to move what is behind the levels that the reads remember.
  for (int i = 1; i <= 100; ++i) {
    const std::string n = std::to_string(i);
    document.set_v("/a/list[" + n + "]/x", i);
    document.set_v("/a/m" + n, i);
    EXPECT_EQ(document.get_int_v("/a/list[1]/x", kNone), 1);
    EXPECT_EQ(document.get_int_v("/a/list[" + n + "]/x", kNone), i);
  }
  EXPECT_EQ(document.get_cnt("/a/list"), 100);
}

TEST_F(JsonDocument, DepthOfNestingCostsNoStack) {
  constexpr int kDepth = 500000;
  std::string arrays(kDepth, '[');
  arrays.append(kDepth, ']');
  ASSERT_TRUE(Holding(arrays).get_cnt("/v") == 1);
  EXPECT_EQ(document.get_str(0), "{\"v\":" + arrays + "}");
  EXPECT_FALSE(document.set_str(std::string(kDepth, '[')));

  std::string objects;
  std::string path;
  for (int i = 0; i < kDepth; ++i) {
    objects += "{\"a\":";
    path += "/a";
  }
  objects.append("1").append(kDepth, '}');
  ASSERT_TRUE(document.set_str(objects));
  EXPECT_EQ(document.get_int_v(path, kNone), 1);
  EXPECT_EQ(document.get_cnt(path.substr(0, path.size() / 2)), 1);
  document.set_v("/a/b", 2);
  document.set_v(path + "/a", 3);
  EXPECT_EQ(document.get_int_v(path + "/a", kNone), 3);
  CRapidJsonProto written;
  written.set_v(path, 1);
  EXPECT_EQ(written.get_str(0), objects);
}

}  // namespace
