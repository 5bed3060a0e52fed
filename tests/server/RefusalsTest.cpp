// SPDX-License-Identifier: Apache-2.0
// Requests that are wrong in themselves, and what may be asked by whom; texts that are nearly JSON, in every place
// where the server reads it: each is refused whole, and changes nothing.
#include "../Cases.h"
#include "TestClient.h"
#include "server/documents/Json.h"
#include "server/documents/Requests.h"
#include "server/faults/FaultPlan.h"
#include "server/login/Secrets.h"
#include "server/site/SeedFile.h"

namespace server::test {
namespace {

class RefusalsTest : public ServerTest {};

TEST_F(RefusalsTest, EachFaultHasItsCodeAndStatusInAWholeEnvelope) {
  ann.AddView("V", -1, kAnn);
  const auto named = [](const std::string& name) { return "POST V0/Views " + ViewBody(name, -1, 1); };
  const auto with = [](const std::string& members) { return R"(POST V0/Views {"View":{"Name":"x",)" + members + "}}"; };
  const auto deep = [&with](size_t lists) {
    return with(R"("Deep":)" + std::string(lists, '[') + std::string(lists, ']'));
  };
  std::string longName(255, 'n');
  longName += "\xF0\x9F\x93\xB7";  // the limit is code points, not bytes
  std::vector<testing_support::Case> cases = testing_support::Cases(TABLES "Refusals.txt");
  for (const auto& [request, outcome] : {std::pair(named(longName), "0/0 200"),
                                         {named(longName + "n"), "100/3 400"},
                                         {named("\xff"), "100/6 400"},
                                         {with(R"("CycleTime":0.)" + std::string(400, '0') + "1"), "100/6 400"},
                                         {deep(wire::kMaxJsonDepth - 2), "0/0 200"},
                                         {deep(wire::kMaxJsonDepth - 1), "100/6 400"},
                                         {named("x") + std::string("\0{", 2), "100/6 400"}}) {
    cases.push_back({request, {outcome}});
  }
  for (const auto& [request, outcome] : cases) {
    EXPECT_EQ(ann.Do(request).Outcome(), outcome.at(0)) << request.substr(0, 200);
  }
}

TEST_F(RefusalsTest, NothingButLoggingInGoesWithoutAToken) {
  for (const std::string& token : {std::string(), std::string("wrong"), std::string(100, 'A')}) {
    const Client stranger(m_server->Port(), token);
    EXPECT_EQ(stranger.Get("V0/Views").Outcome(), "101/2 401");
    EXPECT_EQ(stranger.Post("V0/Views", "{").Outcome(), "101/2 401");
    EXPECT_EQ(stranger.Post("V0/Views", std::string(1 << 20, ' ')).Outcome(), "101/2 401");
    EXPECT_EQ(stranger.Post("V0/Sessions", std::string(1 << 20, ' ')).Outcome(), "100/7 413");
    EXPECT_EQ(stranger.Listen(0).Status(), 401);
  }
}

TEST_F(RefusalsTest, ResourcesAreListedWholeOrByTypeAndId) {
  RestartWithSeed(R"({"Areas":[{"ID":2,"Name":"Yard"},{"ID":1,"Name":"Hall"}],
      "Elements":[{"ID":9,"Type":1001,"Name":"Gate \"1\"","SiteID":2},{"ID":4,"Type":1002,"Name":"Door"},
                  {"ID":5,"Type":1001,"Name":"Roof","SiteID":1}]})");
  Play(TABLES "Refusals.txt");
}

// Those of the table, and what does not stand well in a file of texts.
std::vector<std::string> Values(const char* name, std::initializer_list<std::string> others) {
  std::vector<std::string> values = others;
  for (const auto& value : testing_support::Cases(TABLES "JsonValues.txt", name)) values.push_back(value.text);
  return values;
}

std::vector<std::string> FaultyValues() {
  return Values(
      "Faulty",
      {"", "\"line\nline\"", "\"tab\t\"", "1//c\n", std::string("\"nul\0\"", 6), std::string("\0", 1),
       // bytes that are no UTF-8: alone, too long for what they say, halves of pairs, beyond the last, cut off
       "\"\xff\"", "\"\x80\"", "\"\xc0\x80\"", "\"\xe0\x80\x80\"", "\"\xed\xa0\x80\"", "\"\xf4\x90\x80\x80\"",
       "\"\xf8\x88\x80\x80\x80\"", "\"\xe2\x82\"", "\xff",
       // deep
       std::string(150, '[') + std::string(150, ']'), std::string(50000, '[')});
}

std::vector<std::string> GoodValues() {
  return Values("Good",
                {"\"\xf4\x8f\xbf\xbf\"", "\"\x7f\"", " \t[ 1 , 2 ] ", std::string(50, '[') + std::string(50, ']')});
}

std::string With(const std::string& text, const std::string& value) {
  std::string filled = text;
  return filled.replace(filled.find('@'), 1, value);
}

// Whole texts made of one that is right.
std::vector<std::string> FaultyTexts(const std::string& right) {
  std::vector<std::string> texts = {
      "", " ", "null", "5", "\"text\"", "[]", "[" + right + "]", right.substr(1), right.substr(0, right.size() - 1)};
  for (const char* before : {"\xef\xbb\xbf", "\xff\xfe"}) texts.push_back(before + right);
  for (const std::string& after : {std::string("x"), right, std::string(","), std::string(1, '\0')}) {
    texts.push_back(right + after);
  }
  for (size_t length = 1; length < right.size(); length += 7) texts.push_back(right.substr(0, length));
  std::string wide;
  for (char c : right) (wide += c) += '\0';
  texts.push_back(wide);
  return texts;
}

// Those made of a text with a good value in its place, and the text with each faulty one there.
std::vector<std::string> FaultyOnes(const std::string& text, const std::string& good) {
  std::vector<std::string> texts = FaultyTexts(With(text, good));
  for (const std::string& value : FaultyValues()) texts.push_back(With(text, value));
  return texts;
}

class FaultyJsonTest : public ServerTest {};

TEST_F(FaultyJsonTest, ABodyThatIsNearlyJsonIsRefusedAndChangesNothing) {
  ann.AddGroup("G", -1, kAnn);
  ann.AddView("V", -1, kAnn);
  const auto state = [this] {
    return ann.Get("V0/Views").body + ann.Get("V0/ViewGroups").body + ann.Get("V1/View/Default/Config").body;
  };
  const std::string before = state();
  for (const std::string& right : Values("Bodies", {})) {
    const size_t body = right.find('{');
    for (const std::string& faulty : FaultyOnes(right.substr(body), "1")) {
      const std::string request = right.substr(0, body) + faulty;
      ASSERT_EQ(ann.Do(request).Outcome(), "100/6 400") << request.substr(0, 300);
    }
  }
  EXPECT_EQ(state(), before);
  for (const std::string& right : Values("Bodies", {})) {
    for (const std::string& value : GoodValues()) {
      if (right.starts_with("POST V0/Sessions") && value != "null") continue;  // a log-in takes its time
      EXPECT_EQ(ann.Do(With(right, value)).Outcome(), "0/0 200") << With(right, value);
    }
  }
}

TEST_F(FaultyJsonTest, AFileThatIsNearlyJsonIsRefusedWithOneLine) {
  const auto seed = [this](const std::string& text) { ReadSeed(WriteFile("file.json", text)); };
  const auto plan = [this](const std::string& text) { FaultPlan taken(WriteFile("file.json", text)); };
  const std::pair<std::function<void(const std::string&)>, std::string> files[] = {
      {seed, R"({"Users":[{"ID":9,"Name":"u","Password":"p","More":@}]})"},
      {seed, R"({"ViewGroups":[{"ID":9,"Name":"g","More":@}],"Views":[]})"},
      {seed, R"({"Views":[{"ID":9,"Name":"v","PlanPages":[{"More":@}]}]})"},
      {plan, R"({"Rules":[{"Fault":"ColleagueEdit","Colleague":{"User":"bob","Method":"PUT","Path":"p","Body":@}}]})"},
  };
  for (const auto& [read, text] : files) {
    for (const std::string& content : FaultyOnes(text, "{}")) {
      const std::string why = FailureOf([&, use = read] { use(content); });
      ASSERT_NE(why, "") << content.substr(0, 300);
      ASSERT_EQ(why.find('\n'), std::string::npos) << why;
    }
    EXPECT_EQ(FailureOf([&, use = read, right = With(text, "{}")] { use(right); }), "");
  }
}

TEST(StoredJson, WhatIsNearlyJsonIsNoDocumentAndNoHead) {
  for (const char* place : {R"(,"More":@)", R"(,"PlanPages":[{"More":@}],"Other":1)"}) {
    for (const std::string& value : FaultyValues()) {
      EXPECT_NE(WhyNoDocument(With(place, value)), nullptr) << value.substr(0, 300);
    }
    for (const std::string& value : GoodValues()) {
      if (value.find('\t') != std::string::npos) continue;  // nothing is written so
      EXPECT_EQ(WhyNoDocument(With(place, value)), nullptr) << value;
    }
  }
  for (const std::string& value : FaultyValues()) EXPECT_FALSE(IsHead(With(R"({"ID":1,"Name":@)", value))) << value;
  EXPECT_TRUE(IsHead(R"({"ID":1,"Name":"x")"));
  EXPECT_FALSE(IsHead("") || IsHead("{"));
  EXPECT_EQ(WhyNoDocument(""), nullptr);
}

}  // namespace
}  // namespace server::test
