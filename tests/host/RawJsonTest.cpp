// SPDX-License-Identifier: Apache-2.0
// JSON that must stay as it was written.
#include "host/RawJson.h"

#include <gtest/gtest.h>

#include <string>

namespace host {
namespace {

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
