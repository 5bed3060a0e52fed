// SPDX-License-Identifier: Apache-2.0
// What people read and write: log lines, safe names, ids, the tree and a view in words, scripts.
#include <gtest/gtest.h>

#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/LogFile.h"
#include "host/Notices.h"
#include "host/RawJson.h"
#include "host/ScriptLine.h"
#include "host/Terminal.h"
#include "host/TreeText.h"
#include "host/ViewText.h"

namespace host {
namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

TEST(ReadableTextTest, ALogLineStaysOneLine) {
  const Rows rows = {
      {"[F]plain", "3 M [F]plain"}, {"a\nb\r\nc\rd", "3 M a\\nb\\nc\\rd"}, {"C:\\n\n", "3 M C:\\\\n\\n"}, {"", "3 M "}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(LogLine(3, "M", text), expected) << text;
}

TEST(ReadableTextTest, ALogLineMayHaveItsTimeAndFitsTheTerminal) {
  EXPECT_EQ(TimeText(std::chrono::system_clock::time_point(std::chrono::milliseconds(1772694489012))),
            "2026-03-05T07:08:09.012Z ");
  EXPECT_EQ(CutLine("Überführung", 11), "Überführung");
  EXPECT_EQ(CutLine("Überführung", 10), "Überführu…");
  EXPECT_EQ(CutLine("Überführung", 0), "Überführung");
}

TEST(ReadableTextTest, NamesCannotSteerATerminal) {
  const Rows rows = {{"Gate 1, Überführung きっぷ 🚲", "Gate 1, Überführung きっぷ 🚲"},
                     {"a\x1b[2Jb", "a\\u001b[2Jb"},
                     {"a\nb\tc\x7f", "a\\u000ab\\u0009c\\u007f"},
                     {"csi \xC2\x9b", "csi \\u009b"},
                     {"turned \xE2\x80\xAE txt", "turned \\u202e txt"},
                     {"isolated \u2066\u2069", "isolated \\u2066\\u2069"},
                     {"line \xE2\x80\xA8", "line \\u2028"},
                     {"broken \xff", "broken \xEF\xBF\xBD"}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(Printable(text), expected) << expected;
}

TEST(ReadableTextTest, EachByteThatIsNoUtf8IsReplacedAndNothingElse) {
  const std::string r(kReplacement);
  const std::string whole =
      "\xEF\xBB\xBF\x7f\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
  const Rows rows = {{whole, whole},
                     {std::string("\0", 1), std::string("\0", 1)},
                     {"a\xff\x80z", "a" + r + r + "z"},
                     {"\xC2\"", r + "\""},
                     {"\xE2\x82", r + r},
                     {"\xE2\x82\xC2\xA9", r + r + "\xC2\xA9"},
                     {"\xC1\xBF", r + r},          // longer than need be
                     {"\xE0\x9F\xBF", r + r + r},  // likewise
                     {"\xF0\x8F\xBF\xBF", r + r + r + r},
                     {"\xED\xA0\x80", r + r + r},          // a surrogate
                     {"\xF4\x90\x80\x80", r + r + r + r},  // beyond the last character
                     {"\xF5\x80\x80\x80", r + r + r + r}};
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(ValidUtf8(text), expected) << expected;
    EXPECT_EQ(IsUtf8(text), text == expected) << expected;
  }
  rapidjson::Document document;
  ASSERT_TRUE(ParseAnswer("{\"Name\":\"\xF0\x9F\"}", document));
  EXPECT_EQ(TextOf(document, "Name"), r + r);
}

TEST(ReadableTextTest, ARequestIsReadAsThePluginReadsIt) {
  for (const std::string& text : {std::string("{}"), std::string("\"\xff\""), std::string("{}\0x", 4)}) {
    EXPECT_TRUE(IsReadAsRequest(text)) << text;
  }
  for (const char* text : {"", "{", "{} {}", "\xEF\xBB\xBF{}", "1e999"}) EXPECT_FALSE(IsReadAsRequest(text)) << text;
}

TEST(ReadableTextTest, AnEventIsTheSameByIdStateAndChild) {
  Notice added("1", 3), other = added;
  added.child_id = other.child_id = "140";
  other.name = "whatever";
  EXPECT_TRUE(SameEvent(added, other));
  for (const auto change : {+[](Notice& notice) { notice.id = "2"; }, +[](Notice& notice) { notice.enum_state = 4; },
                            +[](Notice& notice) { notice.child_id = "141"; }}) {
    other = added;
    change(other);
    EXPECT_FALSE(SameEvent(added, other));
  }
}

TEST(ReadableTextTest, IdsAreDecimalAndWithin32Bits) {
  for (const char* id : {"0", "5", "4294967295"}) EXPECT_TRUE(IsId(id)) << id;
  for (const char* text : {"", "-1", "05", "5 ", "4294967296", "5x", "view:5"}) EXPECT_FALSE(IsId(text)) << text;
}

TEST(ReadableTextTest, TheTreeIsDrawnAndWritten) {
  const ViewTree tree{{{"-1", "public", kPublic, 0, {3}, {{"9", "Loose", false}}},
                       {"-1", "private", kPrivate, 1, {}, {}},
                       {"-1", "shared", kShared, 2, {}, {{"7", "From \"maria\"", true}}},
                       {"4", "North", kPublic, 0, {4}, {{"8", "Gate", false}}},
                       {"5", "Roof\n", kPublic, 3, {}, {}}}};
  EXPECT_EQ(DescribeTree(tree),
            "public\n"
            "├── North/  (group 4)\n"
            "│   ├── Roof\\u000a/  (group 5)\n"
            "│   └── Gate  (view 8)\n"
            "└── Loose  (view 9)\n"
            "private\n"
            "shared\n"
            "└── From \"maria\"  (view 7, shared with you)\n");
  EXPECT_EQ(
      TreeJson(tree),
      R"([{"ID":"-1","Name":"public","Type":0,"Folders":[{"ID":"4","Name":"North","Type":0,"Folders":)"
      R"([{"ID":"5","Name":"Roof\n","Type":0,"Folders":[],"Views":[]}],)"
      R"("Views":[{"ID":"8","Name":"Gate","Shared":false}]}],"Views":[{"ID":"9","Name":"Loose","Shared":false}]},)"
      R"({"ID":"-1","Name":"private","Type":1,"Folders":[],"Views":[]},)"
      R"({"ID":"-1","Name":"shared","Type":2,"Folders":[],)"
      R"("Views":[{"ID":"7","Name":"From \"maria\"","Shared":true}]}])");
}

TEST(ReadableTextTest, AViewIsToldWithEveryExtraOfItsWindows) {
  rapidjson::Document detail;
  ASSERT_TRUE(ParseJson(
      R"({"ID":"12","Name":"Gate","AutoCycle":1,"RoundTime":20,"AppCode":"g-1","is_share_view":true,
      "share_user_name":"maria","PlanPages":[{"windowDivision":4,"customWindowDivision":"1+3","PlanItems":[
      {"Sequence":0,"ResourceType":1001,"ResourceID":"5","ResourceName":"North","StreamType":1,"PresetId":2,
       "PresetName":"Door","CruiseIndex":-1,"Xtop":"0.250000","Ytop":"0.000000","Xbottom":"0.500000",
       "Ybottom":"1.000000","FishEye":{"is_fisheye_open":true,"mount_type":1,"expand_mode":2,"window_no":3,
       "FisheyeWndParam":[{"WndNo":1,"PosX":"0.500000","PosY":"0.100000","Zoom":"2.000000"}]},
       "CenterMark":{"TopX":250,"TopY":250,"BottomX":750,"BottomY":750},
       "ZoomWindowList":{"ZoomWindow":[{"No":1,"TopX":1,"TopY":2,"BottomX":3,"BottomY":4}]},
       "RelatedZoomWindow":{"ViewItemWindowNo":"0","ZoomWindowNo":1},
       "RelateResourceType":4,"RelateResourceID":77,"RelateResourceName":"Side door",
       "CycleInfo":{"cycle_type":1,"cycle_time":9,"CycleName":"Rounds",
       "CycleResourceID":[{"SiteID":"1","ResourceID":"31","ResourceName":"Yard"}]}},
      {"Sequence":1,"ResourceType":7001,"ResourceID":"6","ResourceName":"Map","RelateResourceID":-1,
       "Emap":{"LoadMode":1,"PosX":"52.1","PosY":"11.6","ScaleSize":15,"ExtendInfo":"floor 2"}},
      {"Sequence":2,"ResourceType":0,"ResourceID":"-1","Xtop":"-1.000000","Xbottom":"-1.000000"}]}]})",
      detail));
  EXPECT_EQ(DescribeView(detail, {"Public views", "North\x1b"}),
            "\"Gate\"  (view 12)\n"
            "  lies in    Public views / North\\u001b\n"
            "  shared by  maria\n"
            "  pages      1, turned every 20 s\n"
            "  GUID       g-1\n"
            "\n"
            "Page 1: layout 4 \"1+3\", 3 windows\n"
            "  0. camera \"North\", id 5, stream 1\n"
            "       preset 2 \"Door\"\n"
            "       digital zoom from 0.25,0 to 0.5,1\n"
            "       fisheye: mount 1, expansion 2, window 3\n"
            "         part 1 at 0.5,0.1, zoom 2\n"
            "       cycles \"Rounds\" through 1 area, 9 s each\n"
            "         area 31 \"Yard\"\n"
            "       centre mark 250,250 to 750,750 thousandths\n"
            "       zoom window 1 1,2 to 3,4 thousandths\n"
            "       shows zoom window 1 of window 0\n"
            "       related door 77 \"Side door\"\n"
            "  1. map \"Map\", id 6\n"
            "       map centre 52.1,11.6, scale 15, load mode 1\n"
            "       map info \"floor 2\"\n"
            "  2. empty\n");
  // What does not turn has no time to turn after, and 0 is nobody's id.
  ASSERT_TRUE(ParseJson(R"({"ID":"0","Name":"n","AutoCycle":0,"RoundTime":20,
                         "PlanPages":[{"PlanItems":[{"ResourceType":1001,"ResourceID":"0"}]}]})",
                        detail));
  EXPECT_EQ(DescribeView(detail, {"Top"}),
            "\"n\"  (view 0)\n"
            "  lies in    Top\n"
            "  pages      1\n"
            "\n"
            "Page 1: layout 0, 1 window\n"
            "  0. camera\n");
}

// --- Lines of a script, and JSON that must stay as it was written

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
