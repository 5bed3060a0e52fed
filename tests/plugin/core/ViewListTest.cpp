// SPDX-License-Identifier: Apache-2.0
// The reader of view lists beside the plain one, which asks the platform's document for every value by its path.
#include "QorviViewPlugin/ViewDataManager/document/ViewList.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <ctime>
#include <random>
#include <sstream>

#include "../../Cases.h"
#include "CoreFixture.h"
#include "ModelText.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;
using Reader = bool (*)(const std::string&, ErrorCode&, ViewList&);

// Everything that a reader makes of a text.
std::string Outcome(Reader read, const std::string& text) {
  ErrorCode error;
  ViewList list{std::vector<ViewInfo>(1)};
  std::string outcome = read(text, error, list) ? "read " : "refused ";
  outcome += Text(error) + " up to " + std::to_string(list.completeUpTo);
  for (const ViewInfo& view : list.views) {
    outcome += "\n" + Difference(ViewInfo(), view);
    for (const ViewPage& page : view.vcPages) {
      for (const CameraGridStruct& window : page.vcWindows) outcome += "\n  " + Difference(CameraGridStruct(), window);
    }
  }
  return outcome;
}

void ExpectSame(const std::string& text) {
  ASSERT_EQ(Outcome(ReadViewList, text), Outcome(ReadViewListByPaths, text)) << text;
}

const auto kTexts = testing_support::Cases(LIST_DOCUMENTS, "A view of windows, a window, and one with an e-map");
const std::string kWindow = kTexts.at(1).text, kEmap = kTexts.at(2).text;

std::string Filled(std::string text, const std::string& name, const std::string& part) {
  const size_t at = text.find(name);
  return at == std::string::npos ? text : text.replace(at, name.size(), part);
}

std::string ViewText(const std::string& windows) {
  return Filled(kTexts.at(0).text, "<windows>", windows);
}

// How a view is read: the result would be the same in any way, but not the cost.
std::string WayOfReading(const std::string& view) {
  UsualText text(view);
  TextCursor cursor(text);
  const auto isRead = [&](TextCursor::Order order) {
    cursor.Begin(text.Begin(), order);
    ReadView(cursor, DocumentOrigin::Download);
    return cursor.End() == text.End();
  };
  if (isRead(TextCursor::Order::AsAsked)) return "as asked";
  return cursor.MayBeInOtherOrder() && isRead(TextCursor::Order::Any) ? "in any order" : "by paths";
}

// What no view's reader does or shows: a member that was found and is the last one is not read, and a text that had
// escapes stands in the place of the last object's.
TEST(TextCursor, PassesOverWhatIsLeftAndForgetsTextsWithEachObject) {
  const std::string object = R"({"Name":"\n","ID":1})";
  UsualText text(object);
  TextCursor cursor(text);
  cursor.Begin(text.Begin(), TextCursor::Order::AsAsked);
  const void* const place = cursor.TextInPlace("Name").data();
  cursor.PassOver("ID");
  EXPECT_TRUE(cursor.End() == text.End());
  cursor.Begin(text.Begin(), TextCursor::Order::AsAsked);
  EXPECT_EQ(static_cast<const void*>(cursor.TextInPlace("Name").data()), place);
}

// The members of each object in another order, some of them left out.
void Shuffle(rapidjson::Value& value, rapidjson::Document::AllocatorType& memory, std::mt19937& random) {
  if (value.IsArray()) {
    for (auto& element : value.GetArray()) Shuffle(element, memory, random);
  }
  if (!value.IsObject()) return;
  std::vector<rapidjson::Value::Member*> members;
  for (auto& member : value.GetObject()) members.push_back(&member);
  for (size_t n = members.size(); n > 1; --n) {
    if (random() % 2 == 0) std::swap(members[n - 1], members[random() % n]);
  }
  rapidjson::Value shuffled(rapidjson::kObjectType);
  for (auto* member : members) {
    if (random() % 16 == 0) continue;
    Shuffle(member->value, memory, random);
    shuffled.AddMember(member->name, member->value, memory);
  }
  value = shuffled;
}

template <class Writer>
std::string Written(const rapidjson::Document& document) {
  rapidjson::StringBuffer out;
  Writer writer(out);
  document.Accept(writer);
  return out.GetString();
}

std::string Shuffled(const std::string& view, std::mt19937& random) {
  rapidjson::Document document;
  document.Parse(view.c_str());
  Shuffle(document, document.GetAllocator(), random);
  return Written<rapidjson::Writer<rapidjson::StringBuffer>>(document);
}

std::string Pretty(const std::string& view) {
  rapidjson::Document document;
  document.Parse(view.c_str());
  return Written<rapidjson::PrettyWriter<rapidjson::StringBuffer>>(document);
}

// Members that no reader knows, of names that take long to tell apart.
std::string Unknown(int from, int to) {
  std::string members;
  for (int n = from; n < to; ++n)
    members += R"("a long name of )" + std::to_string(1000 + n) + R"( that nobody asks for":0,)";
  return members;
}

TEST(AView, IsReadInOnePassWhereItIsUsual) {
  const std::string usual = ViewText(kWindow + "," + kEmap);
  std::string windows = kWindow;
  for (int n = 1; n < 8; ++n) windows += "," + kWindow;
  std::mt19937 random(28);
  std::vector<testing_support::Case> views = testing_support::Cases(LIST_DOCUMENTS);
  views.insert(views.end(), {{usual, {"as asked"}},
                             {Pretty(usual), {"as asked"}},
                             {"{\"ID\":1,\r\n\t\"Name\":\"n\"}", {"as asked"}},
                             {Pretty(Shuffled(usual, random)), {"in any order"}},
                             {R"({"PlanPages":[{"PlanViewItem":[)" + windows + R"(]}],"ID":1})", {"in any order"}},
                             {R"({"Name":"n",)" + Unknown(0, 254) + R"("ID":1})", {"in any order"}},
                             {R"({"Name":"n",)" + Unknown(0, 255) + R"("ID":1})", {"by paths"}},
                             {R"({"Name":"n",)" + Unknown(0, 50) + Unknown(30, 31) + R"("ID":1})", {"by paths"}}});
  for (const auto& [view, way] : views) {
    EXPECT_EQ(WayOfReading(view), way.at(0)) << view;
    ExpectSame(ViewsDocument(view));
  }
}

// It is compared in pieces that depend on its length.
TEST(AName, IsTheSameOnlyIfEachOfItsCharactersIs) {
  const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMN";
  for (size_t size = 0; size <= letters.size(); ++size) {
    const std::string name = letters.substr(0, size);
    EXPECT_TRUE(IsSameName(name, letters.substr(0, size))) << name;
    EXPECT_FALSE(IsSameName(name, name + "-")) << name;
    for (size_t at = 0; at < size; ++at) {
      std::string other = name;
      other[at] = '-';
      EXPECT_FALSE(IsSameName(name, other)) << other;
    }
  }
}

TEST(ADecodedText, StandsWhereForgottenOnesStood) {
  const std::string document = R"("\n")";
  UsualText texts(document);
  std::string_view first, second;
  texts.Text(texts.Begin(), first);
  texts.ForgetTexts();
  texts.Text(texts.Begin(), second);
  EXPECT_EQ(second, "\n");
  EXPECT_TRUE(first.data() == second.data()) << "memory is taken for every text of a list";
}

TEST(ViewList, IsReadAsByPathsInWhateverOrderItsMembersStand) {
  std::mt19937 random(27);
  const std::string view = ViewText(kWindow + "," + kEmap + "," + kWindow);
  int inAnyOrder = 0;
  for (int round = 0; round < 1000; ++round) {
    const std::string first = Shuffled(view, random), second = Shuffled(view, random);
    ASSERT_NO_FATAL_FAILURE(ExpectSame(ViewsDocument(first + "," + second)));
    inAnyOrder += WayOfReading(first) == "in any order";
  }
  EXPECT_GT(inAnyOrder, 950);
}

TEST(ViewList, IsReadAsByPathsWhateverItsForm) {
  const std::string view = ViewText(kWindow + "," + kEmap);
  const std::string list = R"("Data":{"ViewList":{"View":[)" + view + "]}}";
  const std::string status = R"("ErrorModule":100,"ErrorCode":0,"CascadingErrorInfo":"c")";
  constexpr size_t kDepth = 200000;
  const std::string deep = std::string(kDepth, '[') + std::string(kDepth, ']');
  for (const std::string& document : std::initializer_list<std::string>{
           " \r\n\t" + ViewsDocument(" " + view + "\n,\t" + view + " ") + " \n", "",
           ViewsDocument(view) + std::string(1, '\0'), ViewsDocument(view) + " \n",
           ViewsDocument(R"({"Other":)" + deep + R"(,"PlanPages":)" + deep + "}"),
           R"({"Other":)" + deep + R"(,"ResponseStatus":{"ErrorCode":)" + deep + "," + list + "}}",
           ViewsDocument(deep.substr(0, kDepth)),
           ViewsDocument(R"({"ID":1e-99999999999,"UserID":0.)" + std::string(400, '0') + "1}")}) {
    ExpectSame(document);
  }
  for (const auto& [document, none] : testing_support::Cases(LIST_DOCUMENTS)) {
    ExpectSame(Filled(Filled(Filled(document, "<view>", view), "<list>", list), "<status>", status));
  }
}

// What stands where another kind is wanted, and a second member of the name.
void ExpectSameWith(const std::string& key, const std::string& value) {
  const std::string text = ViewText(kWindow + "," + kEmap);
  const std::string name = "\"" + key + "\":";
  for (size_t at = 0; (at = text.find(name, at)) != std::string::npos; at += name.size()) {
    std::string before = text, replaced = text;
    before.insert(at, name + value + ",");
    ExpectSame(ViewsDocument(before));
    replaced.insert(at + name.size(), value + ",\"Was" + key + "\":");
    ExpectSame(ViewsDocument(replaced));
  }
  ExpectSame(ViewsDocument(text.substr(0, text.size() - 1) + "," + name + value + "}"));
}

TEST(ViewList, IsReadAsByPathsWhateverAWindowHolds) {
  for (const char* value : {"null", "true", "3", "-2.75", "\"7\"", "\"\"", "[]", "[{}]", "[1,2]", "{}", "{\"No\":1}"}) {
    std::istringstream keys(
        "SequenceIndex ResourceType ResourceID RelateResourceName Xtop FishEye PresetPointIndex FishEyeInfo CenterMark "
        "ZoomWindowList ZoomWindow Cycle ID Emap RelatedZoomWindow ViewItemWindowNo ExtendInfo PlanViewItem PlanPages "
        "CustomSplite SharedUserID ChangeNumber");
    for (std::string key; keys >> key;) ExpectSameWith(key, value);
  }
  // Members in other orders: the type behind everything that depends on it.
  ExpectSame(ViewsDocument(ViewText(R"({"Emap":{"PosX":"1"},"ZoomWindowList":{"ZoomWindow":{"No":1}},)"
                                    R"("Xtop":"1","SequenceIndex":"2","ResourceType":7001})")));
  ExpectSame(ViewsDocument(ViewText(R"({"ZoomWindowList":{"ZoomWindow":[{"No":1}]},"ResourceType":1001},1,null,[])")));
}

TEST(ViewList, IsReadAsByPathsWhenCutOffOrChangedAnywhere) {
  std::mt19937 random(20);
  const std::string text = Accepted(R"({"ChangeNumber":"52","ViewList":{"View":[)" + ViewText(kWindow) + "," +
                                    Shuffled(ViewText(kEmap), random) + "]}}");
  for (size_t size = 0; size < text.size(); ++size) ExpectSame(text.substr(0, size));
  const auto below = [&random](size_t limit) { return static_cast<size_t>(random() % limit); };
  const std::string letters = "{}[]\",:\\0159-.eE tfnu" + std::string(1, '\0');
#ifdef NDEBUG
  constexpr int kRounds = 50000;
#else
  constexpr int kRounds = 4000;
#endif
  for (int round = 0; round < kRounds; ++round) {
    std::string changed = text;
    for (size_t edits = 1 + below(3); edits > 0; --edits) {
      const size_t at = below(changed.size());
      const size_t length = std::min(below(30), changed.size() - at);
      const size_t kind = below(4);
      if (kind == 0) changed[at] = letters[below(letters.size())];
      if (kind == 1) changed.insert(at, 1, letters[below(letters.size())]);
      if (kind == 2) changed.erase(at, length);
      if (kind == 3) changed.insert(below(changed.size()), changed.substr(at, length));
    }
    ExpectSame(changed);
  }
}

TEST(ViewList, HoldsNoMoreThanItsViewsNeed) {
  std::string pages;
  for (const int count : {3, 1, 70, 2}) {
    std::string windows = kEmap;
    for (int n = 1; n < count; ++n) windows += "," + kEmap;
    pages += std::string(pages.empty() ? "" : ",") + R"({"PlanViewItem":[)" + windows + "]}";
  }
  ErrorCode error;
  ViewList list;
  ASSERT_TRUE(ReadViewList(ViewsDocument(R"({"ID":1,"PlanPages":[)" + pages + "]}"), error, list));
  ASSERT_EQ(list.views.at(0).vcPages.size(), 4u);
  for (const ViewPage& page : list.views[0].vcPages) EXPECT_EQ(page.vcWindows.capacity(), page.vcWindows.size());
}

double Cost(Reader read, const std::string& text) {
  ErrorCode error;
  ViewList list;
  const std::clock_t begin = std::clock();
  read(text, error, list);
  return static_cast<double>(std::clock() - begin);
}

// Some 0.4 and 0.7 of it; more than the whole, were it tried in vain.
TEST(ViewList, OfTheUsualFormIsNotReadByPaths) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "a build with sanitizers costs otherwise";
#endif
  std::mt19937 random(29);
  const std::string view = ViewText(kWindow + "," + kEmap + "," + kWindow);
  std::string usual = view, shuffled = Shuffled(view, random);
  for (int n = 1; n < 300; ++n) {
    usual += (n < 9 ? R"(,{"ID":"5"},)" : ",") + view;
    shuffled += "," + Shuffled(view, random);
  }
  // Nothing that stands about the views makes a list another form, nor do a few odd views.
  const std::string among =
      R"( { "Other" : 1 , "ResponseStatus" : { "ErrorModule" : 0 , "ErrorCode" : 0 , "CascadingErrorInfo" : "c" , )"
      R"("Data" : { "ChangeNumber" : "52" , "ViewList" : { "View" : [ {"ID":"5"} , )" +
      usual + " ] } } } } ";
  for (const std::string& text : {among, ViewsDocument(shuffled)}) {
    // Turn and turn about, and the lowest of each: the machine may do other work.
    double cost = Cost(ReadViewList, text), byPaths = Cost(ReadViewListByPaths, text);
    for (int round = 0; round < 40; ++round) {
      cost = std::min(cost, Cost(ReadViewList, text));
      byPaths = std::min(byPaths, Cost(ReadViewListByPaths, text));
    }
    EXPECT_LT(cost, 0.85 * byPaths);
  }
}

TEST(ViewList, OfAnyLengthIsReadAsByPaths) {
  std::string many = kWindow;
  for (int n = 0; n < 250; ++n) many += "," + kEmap;
  std::string views;
  for (int n = 0; n < 120; ++n) views += (n ? "," : "") + ViewText(n % 40 == 39 ? many : kWindow);
  const std::string text = ViewsDocument(views);
  ExpectSame(text);
  std::string escapes;
  for (int n = 0; n < 10000; ++n) escapes += "\\u00e9";
  const std::string longName = R"({"ID":1,"Name":")" + escapes + "\"}";
  ExpectSame(ViewsDocument(longName + "," + longName));
  const std::string odd = R"({"ID":"5","UserID":1.5})";
  for (int count : {7, 8, 9}) {
    std::string first = odd;
    for (int n = 1; n < count; ++n) first += "," + odd;
    ExpectSame(ViewsDocument(first));
    ExpectSame(ViewsDocument(first + "," + ViewText(kWindow) + "," + odd));
    std::string reversed = R"({"Name":"n","ID":1})";
    for (int n = 1; n < count; ++n) reversed += R"(,{"Name":"n","ID":2})";
    ExpectSame(ViewsDocument(reversed + "," + ViewText(kWindow) + "," + odd + R"(,{"Name":"a","ID":1,"Name":"b"})"));
  }
  for (size_t size : {65535, 65536, 131072, 200000}) ExpectSame(text.substr(0, size));
  for (size_t blanks = 65480; blanks < 65530; ++blanks) {
    ExpectSame(R"({"ResponseStatus":)" + std::string(blanks, ' ') + R"({"ErrorModule":12345,"ErrorCode":0}})");
  }
}

// Texts are read many characters at a time: whatever ends one or may not stand in it, at every place.
TEST(ViewList, IsReadAsByPathsWhateverStandsInATextAndWhere) {
  std::vector<std::string> inner{"\x1f", "\x7f", "\xc3\xa9", std::string(1, '\0')};
  std::istringstream escapes(
      R"(\n \u00e9 \u20AC \u0000 \" \\ \/ \b\f\r\t \ud83d\ude00 \ud83d \ude00 \u12g4 \u00`0 \u12 \x \ " )"
      R"(\u007f\u0080 \u07ff\u0800 \ud7ff\ue000 \uffff)");
  for (std::string escape; escapes >> escape;) inner.push_back(escape);
  for (const std::string& part : inner) {
    for (size_t before = 0; before <= 34; ++before) {
      const std::string text = '"' + std::string(before, 'b') + part + std::string(before % 3 * 8, 'a') + '"';
      ASSERT_NO_FATAL_FAILURE(ExpectSame(ViewsDocument(R"({"ID":5,"Name":)" + text + "}")));
      ASSERT_NO_FATAL_FAILURE(ExpectSame(ViewsDocument("{" + text + R"(:1,"ID":5})")));
      ASSERT_NO_FATAL_FAILURE(ExpectSame(R"({"ResponseStatus":{"ErrorCode":0,"CascadingErrorInfo":)" + text));
    }
  }
}

TEST(ViewList, IsReadAsByPathsWhateverItsNumbersAndItsDepth) {
  std::istringstream numbers(
      "0 -0 - 00 01 -01 +1 .5 1. 1.5 -1.5 1.e5 1.5e3 1.5E+3 1e 1e+ 2147483647 2147483648 -2147483648 -2147483649 "
      "9223372036854775808 -9223372036854775808 999999999999999999 -999999999999999999 1000000000000000000 "
      "18446744073709551615 18446744073709551616 "
      "123456789012345678.5 1234567890123456789.5 tru True nul nullx false NaN");
  for (std::string number; numbers >> number;) {
    ExpectSame(ViewsDocument(R"({"ID":5,"UserID":)" + number + "}"));
    ExpectSame(ViewsDocument(R"({"ID":5,"Other":[)" + number + "]}"));
  }
  for (size_t depth = 55; depth < 75; ++depth) {
    ExpectSame(ViewsDocument(R"({"ID":5,"Other":)" + std::string(depth, '[') + std::string(depth, ']') + "}"));
    ExpectSame(ViewsDocument(R"({"ID":5,"Other":)" + std::string(depth, '[') + std::string(depth - 1, ']') + "}"));
  }
}

}  // namespace
}  // namespace core_test
