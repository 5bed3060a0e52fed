// SPDX-License-Identifier: Apache-2.0
// The JSON documents that are addressed by slash paths: what every form of value and path reads as, and what writing
// builds.
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <random>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "../Cases.h"
#include "NetLink/RapidJsonProto.h"

namespace {

using NetLink::CRapidJsonProto;
using testing_support::Cases;
using namespace std::string_literals;

constexpr int kNone = -77;

class JsonDocument : public testing::Test {
 protected:
  // The document whose "/v" this is.
  CRapidJsonProto& Holding(const std::string& json) {
    EXPECT_TRUE(document.set_str("{\"v\":" + json + "}")) << json;
    return document;
  }

  static int Int(const std::vector<std::string>& expected) {
    return expected[0] == "none" ? kNone : std::stoi(expected[0]);
  }

  CRapidJsonProto document;
};

TEST_F(JsonDocument, AnIntegerIsReadFromWhatFitsThirtyTwoBits) {
  for (const auto& [json, expected] : Cases(JSON_TEXTS)) {
    EXPECT_EQ(Holding(json).get_int_v("/v", kNone), Int(expected)) << json;
  }
}

TEST_F(JsonDocument, ATextIsReadFromTextsAndNumbers) {
  for (const auto& [json, expected] : Cases(JSON_TEXTS))
    EXPECT_EQ(Holding(json).get_v("/v", "none"), expected[0]) << json;
  EXPECT_EQ(Holding(R"("a\u00e9\ud83d\ude00")").get_v("/v", "none"), "a\xC3\xA9\xF0\x9F\x98\x80");
  EXPECT_EQ(Holding(R"("a\u0000b")").get_v("/v", "none"), "a\0b"s);
}

TEST_F(JsonDocument, AFloatIsReadFromNumbersAndTextsThatAreWhollyOne) {
  constexpr float kMax = std::numeric_limits<float>::max();
  const std::string zeros(400, '0');
  const std::map<std::string, float> named{{"none", kNone}, {"max", kMax}, {"-max", -kMax}};
  for (const auto& [json, expected] : Cases(JSON_TEXTS)) {
    const auto name = named.find(expected[0]);
    EXPECT_EQ(Holding(std::regex_replace(json, std::regex("Z"), zeros)).get_float_v("/v", kNone),
              name == named.end() ? std::stof(expected[0]) : name->second)
        << json;
  }
  // Too small for a double: zero. Digits and exponents of any number make no difference.
  for (const std::string& tiny : {"0." + zeros + "1", "0." + zeros + "1e-20", "-0.0000000001e-2147483639"s,
                                  "0e" + zeros, "1e-99999999999999999999"s}) {
    EXPECT_EQ(Holding(tiny).get_float_v("/v", kNone), 0.0F) << tiny;
    EXPECT_EQ(Holding(tiny).get_int_v("/v", kNone), 0) << tiny;
  }
}

TEST_F(JsonDocument, OnlyTrueAndFalseAreRead) {
  for (const auto& [json, expected] : Cases(JSON_TEXTS)) {
    for (const bool otherwise : {true, false}) {
      EXPECT_EQ(Holding(json).get_bool_v("/v", otherwise), expected[0] == "none" ? otherwise : expected[0] == "true")
          << json;
    }
  }
}

TEST_F(JsonDocument, CountsElements) {
  for (const auto& [json, expected] : Cases(JSON_TEXTS)) EXPECT_EQ(Holding(json).get_cnt("/v"), Int(expected)) << json;
  EXPECT_EQ(document.get_cnt("/absent"), 0);
}

TEST_F(JsonDocument, PathsAddressMembersElementsAndLoneObjects) {
  ASSERT_TRUE(document.set_str(R"({"a":{"b":[{"c":1},{"c":2},[{"c":9}]],"b":[{"c":8}]},"lone":{"x":3},"n":4,"a":0})"));
  EXPECT_EQ(document.get_int_v("", kNone), kNone);
  // Twice: what the first reads remembered must not change what the second ones answer.
  for (int round = 0; round < 2; ++round) {
    for (const auto& [path, expected] : Cases(JSON_TEXTS))
      EXPECT_EQ(document.get_int_v(path, kNone), Int(expected)) << path;
  }
}

TEST_F(JsonDocument, ATextThatIsNotJsonLeavesNothingToRead) {
  std::vector<std::string> texts = {"", R"({"v":1)" + std::string(299, '3') + "e308}", "{\"v\":\"a\nb\"}",
                                    "{\"v\":1}\0"s, "{\"v\":1}\0{}"s};
  for (const auto& [text, expected] : Cases(JSON_TEXTS)) texts.push_back(text);
  for (const std::string& text : texts) {
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

TEST_F(JsonDocument, WritesKeepTextsWholeAndGiveWayOnlyWhereAPathNeedsIt) {
  document.set_v("/View/ID", 7);
  document.set_v("/View/Item[1]/Name", "\"\xC3\xA9\0"s);
  document.set_v("/View/Item[2]/Name", std::string());
  document.set_v("/View/ID", "replaced in place");
  EXPECT_EQ(document.get_str(0),
            "{\"View\":{\"ID\":\"replaced in place\",\"Item\":[{\"Name\":\"\\\"\xC3\xA9\\u0000\"},{\"Name\":\"\"}]}}");
  for (const auto& [before, expected] : Cases(JSON_TEXTS)) {
    ASSERT_TRUE(document.set_str(before));
    document.set_v(expected[0], 5);
    EXPECT_EQ(document.get_str(0), expected[1]) << before << " " << expected[0];
  }
}

TEST_F(JsonDocument, WritesThatMoveWhatReadsRememberAreReadAsWritten) {
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
  const std::string arrays = std::string(kDepth, '[') + std::string(kDepth, ']');
  ASSERT_TRUE(Holding(arrays).get_cnt("/v") == 1);
  EXPECT_EQ(document.get_str(0), "{\"v\":" + arrays + "}");
  EXPECT_FALSE(document.set_str(std::string(kDepth, '[')));

  std::string objects, path;
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

// --- Read and written at random, whatever was read or written before

class RandomDocuments : public testing::Test {
 protected:
  std::size_t Below(std::size_t limit) { return m_random() % limit; }

  // Few names, so that duplicates and hits are frequent; two of them alike in length, first and last letter.
  std::string Name() {
    static const std::string names[] = {"a", "b", "abcd", "aXcd", "acbd", "Xtop", "Ytop", ""};
    return names[Below(40) == 0 ? 7 : Below(7)];
  }

  std::string Tree(int depth) {
    static const std::string scalars[] = {"null", "true", "false", "0", "1", "\"1\""};
    if (depth == 0 || Below(4) == 0) return scalars[Below(6)];
    const bool isObject = Below(2) == 0;
    std::string text;
    for (std::size_t size = Below(6); size > 0; --size) {
      text += (text.empty() ? "" : ",") + (isObject ? "\"" + Name() + "\":" : "") + Tree(depth - 1);
    }
    return isObject ? "{" + text + "}" : "[" + text + "]";
  }

  // Mostly a neighbour of the path before, as callers read.
  std::string NextPath() {
    while (!m_steps.empty() && Below(3) != 0) m_steps.pop_back();
    while (m_steps.size() < 5 && (m_steps.empty() || Below(2) != 0)) {
      m_steps.push_back("/" + Name() + (Below(2) ? "[" + std::to_string(Below(4)) + "]" : ""));
    }
    std::string path;
    for (const std::string& step : m_steps) path += step;
    return path;
  }

 private:
  std::mt19937 m_random{7};
  std::vector<std::string> m_steps;
};

std::string Reads(const CRapidJsonProto& document, const std::string& path) {
  return std::to_string(document.get_cnt(path)) + " " + std::to_string(document.get_int_v(path, -7)) + " " +
         document.get_v(path, "none") + (document.get_bool_v(path, false) ? " true" : "");
}

TEST_F(RandomDocuments, AnswerAndTakeAWriteAsAFreshOneOfTheSameTextDoes) {
  for (int round = 0; round < 150 && !HasFailure(); ++round) {
    CRapidJsonProto document;
    ASSERT_TRUE(document.set_str(round % 2 ? Tree(4) : "{}"));
    for (int edit = 0; edit < 60 && !HasFailure(); ++edit) {
      const std::string before = document.get_str(0);
      CRapidJsonProto fresh;
      ASSERT_TRUE(fresh.set_str(before));
      const std::string path = NextPath();
      document.set_v(path, edit);
      fresh.set_v(path, edit);
      ASSERT_EQ(document.get_str(0), fresh.get_str(0)) << before << " " << path;
      for (int read = 0; read < 4; ++read) {
        const std::string place = NextPath();
        ASSERT_TRUE(fresh.set_str(document.get_str(0)));
        EXPECT_EQ(Reads(document, place), Reads(fresh, place)) << document.get_str(0) << " " << place;
      }
    }
  }
}

}  // namespace
