// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/ResourceList.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <regex>
#include <string>

#include "../Cases.h"
#include "ResourceStore/details/ListDocument.h"
#include "ScriptedSite.h"

namespace {

using ResourceStore::details::kViewNames;
using ResourceStore::details::ListDocument;
using ResourceStore::details::ListElement;
using ResourceStore::details::ReadListDocument;
using ResourceStore::details::ResourceList;
using testing_support::Cases;
using testing_support::Envelope;
using testing_support::Views;

// The texts of the elements, one a line, with their ids, methods and numbers in front.
std::string Read(const std::string& text) {
  ListDocument document;
  if (!ReadListDocument(text, kViewNames, true, document)) return "not JSON";
  std::string lines;
  for (const auto& element : document.elements) {
    lines += (element.id ? std::to_string(*element.id) : "-") + " " + std::to_string(element.method) + " " +
             (element.number != 0 ? "#" + std::to_string(element.number) + " " : "") + element.text + "\n";
  }
  return lines;
}

TEST(ListDocumentTest, FindsTheElementsOfAListTheirNumbersAndNothingElse) {
  for (const auto& [text, expected] : Cases(LIST_TEXTS)) {
    std::string lines;
    for (const std::string& line : expected) lines += line.empty() ? "" : line + "\n";
    EXPECT_EQ(Read(text.front() == '[' ? Views(text.substr(1, text.size() - 2)) : text), lines) << text;
  }
  EXPECT_EQ(Read(R"([{"ResponseStatus":0},{"Data":{"ViewList":{"View":[{"ID":1}]}}}])"), "") << "no object holds it";
  const std::string one = Views(R"({"ID":1})");
  for (const std::string& text : {one.substr(1), one + "x", one + std::string("\0{}", 3), std::string()}) {
    EXPECT_EQ(Read(text), "not JSON") << text;
  }
}

TEST(ListDocumentTest, ReadsTheNumberOfTheListItself) {
  const std::string list = R"("ViewList":{"View":[{"ID":1,"ChangeNumber":"9"}],"ChangeNumber":"8"})";
  for (const auto& [text, expected] : Cases(LIST_TEXTS)) {
    const std::string data = std::regex_replace(text, std::regex("LIST"), list);
    for (const bool withElements : {false, true}) {
      ListDocument document;
      ASSERT_TRUE(ReadListDocument(Envelope("{" + data + "}"), kViewNames, withElements, document)) << data;
      EXPECT_EQ(document.saysNumber ? std::to_string(document.number) : "none", expected[0]) << data;
    }
  }
}

TEST(ListDocumentTest, ReadsTheEnvelopeAtAnyDepthOfNesting) {
  ListDocument document;
  ASSERT_TRUE(ReadListDocument(Envelope("{}", 7), kViewNames, false, document));
  EXPECT_EQ(document.errorCode, 7);
  ASSERT_TRUE(ReadListDocument(R"({"ErrorCode":0,"ResponseStatus":{"Data":{"ErrorCode":0},"More":{"ErrorCode":0}}})",
                               kViewNames, false, document));
  EXPECT_EQ(document.errorCode, -1) << "an absent code is an error";
  const std::string deep = std::string(300000, '[') + std::string(300000, ']');
  ASSERT_TRUE(ReadListDocument(Views(R"({"ID":1,"Deep":)" + deep + "}"), kViewNames, true, document));
  EXPECT_EQ(document.elements.size(), 1u);
}

TEST(ResourceListTest, KeepsTheReplyAsItCameUntilTheFirstChange) {
  ResourceList list(kViewNames);
  EXPECT_EQ(list.Text(), nullptr);
  std::string reply = " " + Views(R"({"ID":1,"N":"a"}, {"ID":2,"N":"b"},{"Method":0,"ID":3})");
  list.Set(reply);
  EXPECT_EQ(*list.Text(), reply);
  EXPECT_FALSE(list.Apply("rubbish"));
  EXPECT_FALSE(list.Apply(Envelope(R"({"ViewList":{"View":[{"ID":1,"Method":2}]}})", 5)))
      << "a document with an error is no change";
  EXPECT_EQ(*list.Text(), reply);
  EXPECT_TRUE(list.Apply(Views(R"({"ID":2,"N":"B","Method":1},{"ID":4,"N":"d","Method":0},{"ID":1,"Method":2},)"
                               R"({"ID":9,"Method":2},{"ID":3,"N":"?","Method":7},{"N":"no id"})")));
  EXPECT_EQ(*list.Text(), Views(R"({"ID":2,"N":"B"},{"ID":3},{"ID":4,"N":"d"})"));
}

TEST(ResourceListTest, ManyChangesLeaveWhatAPlainMapHolds) {
  std::mt19937 random(7);
  auto pick = [&](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
  auto element = [](int id, int value, const std::string& rest) {
    return "{\"ID\":" + std::to_string(id) + ",\"N\":" + std::to_string(value) + rest + "}";
  };
  std::map<uint32_t, int> model;
  ResourceList list(kViewNames), older(kViewNames);
  list.Set(Views(""));
  older.Set(Views(""));
  for (int i = 0; i < 3000; ++i) {
    int id = pick(150);
    if (i == 1500) older.Set(*list.Text());
    if (pick(3) == 0 || (i > 2000 && pick(2) == 0)) {
      model.erase(static_cast<uint32_t>(id));
      ASSERT_TRUE(list.Apply(Views("{\"ID\":" + std::to_string(id) + ",\"Method\":2}")));
    } else {
      model[static_cast<uint32_t>(id)] = i;
      ASSERT_TRUE(list.Apply(Views(element(id, i, i % 2 == 0 ? ",\"Method\":0" : ",\"Method\":1"))));
    }
  }
  auto matches = [&](ResourceList& candidate) {
    ListDocument document;
    ASSERT_TRUE(ReadListDocument(*candidate.Text(), kViewNames, true, document));
    ASSERT_EQ(document.elements.size(), model.size());
    for (const auto& present : document.elements) {
      ASSERT_TRUE(model.contains(*present.id));
      EXPECT_EQ(present.text, element(static_cast<int>(*present.id), model[*present.id], ""));
    }
  };
  matches(list);
  // The difference to a newer list, applied to the older one, gives the newer one.
  ResourceList::Difference difference = older.DifferenceTo(list);
  ASSERT_TRUE(older.Apply(difference.removed));
  ASSERT_TRUE(older.Apply(difference.present));
  matches(older);
  ResourceList::Difference none = older.DifferenceTo(list);
  EXPECT_EQ(none.present + none.removed, "");
}

TEST(ResourceListTest, ATextOfNumbersGoesOnSayingTrueOnes) {
  const std::string elements = R"({"ID":1,"ChangeNumber":"4","N":"a"},{"ID":2,"N":"b"},{"ID":3,"ChangeNumber":"6"},)"
                               R"({"ChangeNumber":"7"},{"ID":"x","ChangeNumber":"8"})";
  const std::string change = R"({"ID":2,"N":"B","ChangeNumber":"12","Method":1},{"ID":4,"ChangeNumber":"12"},)"
                             R"({"ID":3,"ChangeNumber":"12","Method":2},{"ID":1,"N":"A","Method":1})";
  // Nobody can refer to what has no ID: its number is not kept.
  const std::string changed = R"({"ID":1,"N":"A"},{"ID":2,"N":"B","ChangeNumber":"12"},{},{"ID":"x"},)"
                              R"({"ID":4,"ChangeNumber":"12"})";
  for (const bool isNumbered : {true, false}) {
    const auto text = [&](int number, const std::string& of) { return Views(of, isNumbered ? number : 0); };
    ResourceList list(kViewNames);
    list.Set(text(10, elements), 10);
    ListElement last;
    ASSERT_TRUE(list.Apply(Views(change), 12, last));
    EXPECT_EQ(*list.Text(), text(12, changed));
    EXPECT_EQ(*last.id, 1u);
    ASSERT_TRUE(list.Apply(Views(""), 13, last));
    EXPECT_FALSE(list.Apply("rubbish", 14, last));
    EXPECT_EQ(list.Number(), 14u);
    EXPECT_EQ(*list.Text(), text(14, changed));
  }
}

TEST(ResourceListTest, TheDifferenceSaysWhatIsNewChangedOrGoneAndNoneThatDiffersInItsNumberOnly) {
  const std::string before = R"({"ID":1,"ChangeNumber":"1"},{"ID":2,"N":"b","ChangeNumber":"2"},{"ID":3},{"ID":5})";
  const std::string after = R"({"ID":1,"ChangeNumber":"9"},{"ID":3},{"ID":4,"ChangeNumber":"12"},)"
                            R"({"ID":2,"N":"B","ChangeNumber":"11"},{"ID":6})";
  const std::string present =
      R"({"ID":4,"ChangeNumber":"12","Method":0},{"ID":2,"N":"B","ChangeNumber":"11","Method":1},{"ID":6,"Method":0})";
  const std::string unnumbered = R"({"ID":4,"Method":0},{"ID":2,"N":"B","Method":1},{"ID":6,"Method":0})";
  using Numbers = ResourceList::Numbers;
  const std::tuple<Numbers, std::string, std::string, std::string> cases[] = {
      {Numbers::Kept, Views(after, 20), present, R"({"ID":5,"ChangeNumber":"20","Method":2})"},
      {Numbers::Kept, Views(after), present, R"({"ID":5,"Method":2})"},
      {Numbers::LeftOut, Views(after, 20), unnumbered, R"({"ID":5,"Method":2})"},
  };
  for (const auto& [numbers, list, stays, goes] : cases) {
    ResourceList older(kViewNames), newer(kViewNames);
    older.Set(Views(before, 10), 10);
    newer.Set(list, 20);
    const ResourceList::Difference difference = older.DifferenceTo(newer, numbers);
    EXPECT_EQ(difference.present, Views(stays));
    EXPECT_EQ(difference.removed, Views(goes));
  }
}

TEST(ResourceListTest, TheStateOfAnObjectIsSaidWhereItHasANumber) {
  ResourceList list(kViewNames);
  EXPECT_EQ(list.StateOf(1, 1), "");
  list.Set(Views(R"({"ID":1,"N":"a","ChangeNumber":"4"},{"ID":2,"N":"b"})", 10), 10);
  EXPECT_EQ(list.StateOf(1, 0), Views(R"({"ID":1,"N":"a","ChangeNumber":"4","Method":0})"));
  EXPECT_EQ(list.StateOf(1, 1), Views(R"({"ID":1,"N":"a","ChangeNumber":"4","Method":1})"));
  EXPECT_EQ(list.StateOf(2, 1), "");
  EXPECT_EQ(list.StateOf(3, 1), Views(R"({"ID":3,"ChangeNumber":"10","Method":2})"));
  list.Set(Views(R"({"ID":1,"ChangeNumber":"4"})"), 10);
  EXPECT_EQ(list.StateOf(3, 1), "") << "a list without a number";
  EXPECT_EQ(list.Nothing(), Views(""));
}

}  // namespace
