// SPDX-License-Identifier: Apache-2.0
// The lines of a script, and JSON that must stay as it was written.
#include "host/ScriptLine.h"

#include <gtest/gtest.h>

#include <string>

#include "host/RawJson.h"

namespace host {
namespace {

// A line as "KIND|PART|PART", so that a case is one row.
struct Describe {
  std::string operator()(const CallLine& line) {
    return "call|" + line.function + "|" + line.request + "|" + line.response;
  }
  std::string operator()(const LoadLine&) { return "load"; }
  std::string operator()(const ObserveLine& line) { return "observe|" + line.request; }
  std::string operator()(const SettleLine& line) { return "settle|" + std::to_string(line.milliseconds); }
  std::string operator()(const WrongLine&) { return "wrong"; }
};

std::string Parsed(const std::string& text) {
  return std::visit(Describe(), ParseScriptLine(text));
}

using Rows = std::vector<std::pair<const char*, const char*>>;

TEST(ScriptLineTest, CallsKeepTheirRequestAsItWasWritten) {
  const Rows rows = {
      {R"({"call":"F"})", "call|F||"},
      {R"({"call":"F","request":"{ \"ID\" : \"5\" }"})", R"(call|F|{ "ID" : "5" }|)"},
      {R"({"request":{ "b": 1.0, "a":[ ], "b" :2},"call":"F"})", R"(call|F|{"b":1.0,"a":[],"b":2}|)"},
      {R"({"call":"F","request":null})", "call|F|null|"},
      {R"({"call":"F","request":"","response":"kept"})", "call|F||kept"},
      {R"({"call":"F","request": [ 1 , "a b" ] , "response":"\n"})", "call|F|[1,\"a b\"]|\n"},
      {R"({"request":{"a":[1,"}"],"b":"x,\"y"} ,"call":"F"})", R"(call|F|{"a":[1,"}"],"b":"x,\"y"}|)"},
      {R"({"call":"F","call":"G","request":1,"request":2})", "call|F|1|"},
      {R"( { "c\u0061ll" : "F" } )", "call|F||"},
  };
  for (const auto& [text, parsed] : rows) EXPECT_EQ(Parsed(text), parsed) << text;
}

TEST(ScriptLineTest, OtherLines) {
  const Rows rows = {
      {R"({"load":true})", "load"},
      {R"({"settle":0})", "settle|0"},
      {R"({"settle": 250 })", "settle|250"},
      {R"({"observe":{"ResourceType":16001, "ID":"5"}})",
       R"(observe|{"ResourceType":16001,"ID":"5","IsRegister":true})"},
      {R"({"unobserve":{ "ID" : "5" }})", R"(observe|{"ID":"5","IsRegister":false})"},
      {R"({"observe":{ }})", R"(observe|{"IsRegister":true})"},
  };
  for (const auto& [text, parsed] : rows) EXPECT_EQ(Parsed(text), parsed) << text;
}

TEST(ScriptLineTest, AnythingElseIsWrong) {
  for (const char* text :
       {"", "hello", "[]", "{}", R"("call")", R"({"call":7})", R"({"call":"F","reqest":{}})",
        R"({"call":"F","response":{}})", R"({"call":"F","load":true})", R"({"load":false})", R"({"load":1})",
        R"({"load":true,"settle":1})", R"({"settle":-1})", R"({"settle":1.5})", R"({"settle":99999999999})",
        R"({"observe":"5"})", R"({"observe":{"ID":"5","IsRegister":false}})", R"({"call":"F"} {"call":"G"})"}) {
    EXPECT_EQ(Parsed(text), "wrong") << text;
  }
}

TEST(RawJsonTest, OnlyBlanksBetweenTokensGoAway) {
  const std::pair<const char*, const char*> cases[] = {
      {"{ \"a\" : 1 }", R"({"a":1})"},
      {"\t[ 1 ,\r\n 2 ]\n", "[1,2]"},
      {R"({"b":1, "a":2, "b":3})", R"({"b":1,"a":2,"b":3})"},
      {R"([1.0, 1e2, -0, 10.50])", R"([1.0,1e2,-0,10.50])"},
      {R"({"a b" : "c  d"})", R"({"a b":"c  d"})"},
      {R"([ "\" , \\" , "x" ])", R"(["\" , \\","x"])"},
      {R"([ "\\" , 1 ])", R"(["\\",1])"},
      {R"("\u0041\/")", R"("\u0041\/")"},
      {" null ", "null"},
      {"{ }", "{}"},
  };
  for (const auto& [text, stripped] : cases) {
    ASSERT_TRUE(IsJson(text)) << text;
    EXPECT_EQ(WithoutBlanks(text), stripped) << text;
  }
}

TEST(RawJsonTest, WhatIsNotOneJsonValueIsRefused) {
  const std::string withNul("{}\0x", 4);
  const std::string cases[] = {"",      " ",       "{",           "{\"a\":1,}",     "[1,]",
                               "{} {}", "{'a':1}", "\"\xff\"",    "\xEF\xBB\xBF{}", "[1 2]",
                               "nul",   "+1",      "\"\\ud800\"", withNul};
  for (const std::string& text : cases) {
    EXPECT_FALSE(IsJson(text)) << text;
    EXPECT_FALSE(SplitObject(text)) << text;
  }
}

TEST(RawJsonTest, DepthCostsNoStack) {
  const size_t depth = 1000000;
  const std::string deep = "{\"a\":" + std::string(depth, '[') + " " + std::string(depth, ']') + "}";
  const auto members = SplitObject(deep);
  ASSERT_TRUE(members);
  EXPECT_EQ(WithoutBlanks(members->front().value).size(), 2 * depth);
}

}  // namespace
}  // namespace host
