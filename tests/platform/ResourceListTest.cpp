// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/ResourceList.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include "ResourceStore/details/ListDocument.h"

namespace {

using ResourceStore::details::kViewNames;
using ResourceStore::details::ListDocument;
using ResourceStore::details::ReadListDocument;
using ResourceStore::details::ResourceList;

std::string Document(const std::string& elements, int errorCode = 0) {
  return R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":)" + std::to_string(errorCode) +
         R"(,"CascadingErrorInfo":"","Data":{"ViewList":{"View":[)" + elements + "]}}}}";
}

// The texts of the elements, one a line, with their ids and methods in front.
std::string Read(const std::string& text) {
  ListDocument document;
  if (!ReadListDocument(text, kViewNames, true, document)) return "not JSON";
  std::string lines;
  for (const auto& element : document.elements) {
    lines += (element.id ? std::to_string(*element.id) : "-") + " " + std::to_string(element.method) + " " +
             element.text + "\n";
  }
  return lines;
}

TEST(ListDocumentTest, FindsTheElementsOfAListAndNothingElse) {
  const std::pair<std::string, std::string> cases[] = {
      {Document(R"({"ID":1,"A":{"ID":9,"Method":2,"B":[{"Method":1}]}},{"ID":2})"),
       "1 0 {\"ID\":1,\"A\":{\"ID\":9,\"Method\":2,\"B\":[{\"Method\":1}]}}\n2 0 {\"ID\":2}\n"},
      {Document(R"({"Method":1,"ID":1},{"ID":2,"Method":2},{"ID":3,"Method":1,"N":"x"},{"Method":2})"),
       "1 1 {\"ID\":1}\n2 2 {\"ID\":2}\n3 1 {\"ID\":3,\"N\":\"x\"}\n- 2 {}\n"},
      {Document("{ \"Method\" : 1 , \"Method\" : 2 , \"ID\" : 1 , \"ID\" : 2 }"), "1 1 { \"ID\" : 1 , \"ID\" : 2 }\n"},
      {Document(R"({"ID":-1},{"ID":4294967295},{"ID":"12"},{"ID":5.0},{"ID":"x"},{"ID":null},{"ID":1e30},{"N":1})"),
       "4294967295 0 {\"ID\":-1}\n4294967295 0 {\"ID\":4294967295}\n12 0 {\"ID\":\"12\"}\n5 0 {\"ID\":5.0}\n"
       "- 0 {\"ID\":\"x\"}\n- 0 {\"ID\":null}\n- 0 {\"ID\":1e30}\n- 0 {\"N\":1}\n"},
      {Document(R"(1,null,"x",[{"ID":1}],{"ID":2})"), "2 0 {\"ID\":2}\n"},
      {Document(R"({"N":"}],\"ID\":{","ID":1,"Method":{"a":[1]}})"), "1 0 {\"N\":\"}],\\\"ID\\\":{\",\"ID\":1}\n"},
      {R"({"ResponseStatus":{"ErrorCode":0,"Data":{"ViewList":{"View":{"ID":1}}}}})", "1 0 {\"ID\":1}\n"},
      {R"({"Data":{"ViewList":{"View":[{"ID":1}]}},"ResponseStatus":[{"Data":{"ViewList":{"View":[{"ID":2}]}}}]})", ""},
      {R"({"ResponseStatus":{"Data":{"ViewGroupList":{"ViewGroup":[{"ID":1}]},"View":[{"ID":2}]}}})", ""},
      {R"({"ResponseStatus":{"x":{"Data":{"ViewList":{"View":[{"ID":1}]}}}}})", ""},
      {Document(R"({"ID":1})").substr(1), "not JSON"},
      {Document(R"({"ID":1})") + "x", "not JSON"},
      {Document("") + std::string("\0{}", 3), "not JSON"},
      {"", "not JSON"},
  };
  for (const auto& [text, elements] : cases) EXPECT_EQ(Read(text), elements) << text;
}

TEST(ListDocumentTest, ReadsTheEnvelopeAtAnyDepthOfNesting) {
  ListDocument document;
  ASSERT_TRUE(ReadListDocument(Document("", 7), kViewNames, false, document));
  EXPECT_EQ(document.errorCode, 7);
  ASSERT_TRUE(
      ReadListDocument(R"({"ErrorCode":0,"ResponseStatus":{"Data":{"ErrorCode":0}}})", kViewNames, false, document));
  EXPECT_EQ(document.errorCode, -1) << "an absent code is an error";
  std::string deep(300000, '[');
  deep += std::string(300000, ']');
  ASSERT_TRUE(ReadListDocument(Document(R"({"ID":1,"Deep":)" + deep + "}"), kViewNames, true, document));
  EXPECT_EQ(document.elements.size(), 1u);
}

TEST(ResourceListTest, KeepsTheReplyAsItCameUntilTheFirstChange) {
  ResourceList list(kViewNames);
  EXPECT_EQ(list.Text(), nullptr);
  std::string reply = " " + Document(R"({"ID":1,"N":"a"}, {"ID":2,"N":"b"},{"Method":0,"ID":3})");
  list.Set(reply);
  EXPECT_EQ(*list.Text(), reply);
  EXPECT_FALSE(list.Apply("rubbish"));
  EXPECT_FALSE(list.Apply(Document(R"({"ID":1,"Method":2})", 5))) << "a document with an error is no change";
  EXPECT_EQ(*list.Text(), reply);
  EXPECT_TRUE(list.Apply(Document(R"({"ID":2,"N":"B","Method":1},{"ID":4,"N":"d","Method":0},{"ID":1,"Method":2},)"
                                  R"({"ID":9,"Method":2},{"ID":3,"N":"?","Method":7},{"N":"no id"})")));
  EXPECT_EQ(*list.Text(), Document(R"({"ID":2,"N":"B"},{"ID":3},{"ID":4,"N":"d"})"));
}

TEST(ResourceListTest, ManyChangesLeaveWhatAPlainMapHolds) {
  std::mt19937 random(7);
  auto pick = [&](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
  auto element = [](int id, int value, const std::string& rest) {
    return "{\"ID\":" + std::to_string(id) + ",\"N\":" + std::to_string(value) + rest + "}";
  };
  std::map<uint32_t, int> model;
  ResourceList list(kViewNames);
  list.Set(Document(""));
  ResourceList older(kViewNames);
  older.Set(Document(""));
  for (int i = 0; i < 3000; ++i) {
    int id = pick(150);
    if (i == 1500) older.Set(*list.Text());
    if (pick(3) == 0 || (i > 2000 && pick(2) == 0)) {
      model.erase(static_cast<uint32_t>(id));
      ASSERT_TRUE(list.Apply(Document("{\"ID\":" + std::to_string(id) + ",\"Method\":2}")));
    } else {
      model[static_cast<uint32_t>(id)] = i;
      ASSERT_TRUE(list.Apply(Document(element(id, i, i % 2 == 0 ? ",\"Method\":0" : ",\"Method\":1"))));
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

TEST(ResourceListTest, TheDifferenceSaysWhatHappenedToEachElement) {
  ResourceList older(kViewNames);
  ResourceList newer(kViewNames);
  older.Set(Document(R"({"ID":1,"N":"a"},{"ID":2,"N":"b"},{"ID":3,"N":"c"})"));
  newer.Set(Document(R"({"ID":3,"N":"c"},{"ID":4,"N":"d"},{"ID":2,"N":"B"})"));
  ResourceList::Difference difference = older.DifferenceTo(newer);
  EXPECT_EQ(difference.present, Document(R"({"ID":4,"N":"d","Method":0},{"ID":2,"N":"B","Method":1})"));
  EXPECT_EQ(difference.removed, Document(R"({"ID":1,"Method":2})"));
}

}  // namespace
