// SPDX-License-Identifier: Apache-2.0
// What people read and write: log lines, safe names, ids, the tree and a view in words, scripts.
#include <gtest/gtest.h>

#include "../Cases.h"
#include "host/Failure.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/LogFile.h"
#include "host/Notices.h"
#include "host/RawJson.h"
#include "host/ScriptLine.h"
#include "host/Terminal.h"
#include "host/TreeText.h"
#include "host/ViewText.h"
#include "host/report/Html.h"
#include "host/report/SharedPaths.h"

namespace host {
namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

TEST(ReadableTextTest, ALogLineStaysOneLine) {
  const Rows rows = {{"[F]plain", "3 M [F]plain"},
                     {"a\nb\r\nc\rd", "3 M a\\nb\\nc\\rd"},
                     {"C:\\n\n", "3 M C:\\\\n\\n"},
                     {"\r\n", "3 M \\n"},
                     {"\r", "3 M \\r"},
                     {"", "3 M "}};
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
  EXPECT_EQ(ValidUtf8(std::string_view("\xC2\xA9").substr(0, 1)), r) << "what lies behind a text is none of it";
  rapidjson::Document document;
  ASSERT_TRUE(ParseAnswer("{\"Name\":\"\xF0\x9F\"}", document));
  EXPECT_EQ(TextOf(document, "Name"), r + r);
  EXPECT_FALSE(ParseJson("{", document));
  EXPECT_TRUE(document.IsNull()) << "nothing is left of what was parsed before";
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
  const auto cases = testing_support::Cases(TABLES "Readable.txt");
  EXPECT_EQ(DescribeTree(tree), Joined(cases.at(0).expected));
  EXPECT_EQ(TreeJson(tree), cases.at(1).expected.at(0));
  // The list's end counts, whatever lay behind it once.
  ViewTree shorter{{{"-1", "public", kPublic, 0, {}, {}}, {"-1", "private", kPrivate, 1, {}, {}}}};
  shorter.folders.pop_back();
  EXPECT_EQ(DescribeTree(shorter), "public\n");
}

TEST(ReadableTextTest, AViewIsToldWithEveryExtraOfItsWindows) {
  for (const auto& [text, expected] : testing_support::Cases(TABLES "Readable.txt")) {
    rapidjson::Document detail;
    ASSERT_TRUE(ParseJson(text, detail)) << text;
    EXPECT_EQ(DescribeView(detail, {"Public views", "North\x1b"}), Joined(expected));
  }
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
  std::string operator()(const WrongLine& line) { return "wrong: " + line.reason; }
};

std::string Parsed(const std::string& text) {
  return std::visit(Describe(), ParseScriptLine(text));
}

TEST(ScriptLineTest, EachIsOneKindAndCallsKeepTheirRequestAsItWasWritten) {
  for (const auto& [text, expected] : testing_support::Cases(TABLES "Readable.txt")) {
    EXPECT_EQ(Parsed(text), expected.at(0)) << text;
  }
  EXPECT_EQ(Parsed(""), "wrong: the line is not JSON");
}

TEST(RawJsonTest, OnlyBlanksBetweenTokensGoAway) {
  for (const auto& [text, stripped] : testing_support::Cases(TABLES "Readable.txt")) {
    ASSERT_TRUE(IsJson(text)) << text;
    EXPECT_EQ(WithoutBlanks(text), stripped.at(0)) << text;
  }
  EXPECT_EQ(WithoutBlanks("\t[ 1 ,\r\n 2 ]\n"), "[1,2]");
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

TEST(HtmlTest, WhatIsReadFromTheRightStandsByItselfAndNothingElseIsMarked) {
  EXPECT_EQ(HtmlWords("2. Gate; رصيف <1>\n-1. a; ٣; b"), "2. Gate; <bdi>رصيف &lt;1&gt;</bdi>\n-1. a; <bdi>٣</bdi>; b");
  EXPECT_EQ(HtmlWords("שער; 2. x"), "<bdi>שער</bdi>; 2. x");
  EXPECT_EQ(HtmlName(" \t"), "<span class=\"none\">(no name)</span>");
  EXPECT_EQ(HtmlName("a\x1b<b>"), "<bdi>a\\u001b&lt;b&gt;</bdi>");
  EXPECT_EQ(Tagged("a href=\"x\"", "t"), "<a href=\"x\">t</a>");
}

TEST(SharedPathsTest, LongSignsStandOnceAndAreReferredTo) {
  const std::string sign = "m0,0l2.5,0 0,2c0,1 0.5,2 1.5,2 1,0 2,0 3";  // just long enough
  const auto path = [](const std::string& place, const std::string& d) {
    return "<path transform=\"translate(" + place + ")\" d=\"" + d + "\"/>";
  };
  SharedPaths paths;
  EXPECT_EQ(paths.Refer("<g>" + path("1 2", sign) + "<g/>" + path("3 4", sign + "z") + "</g>" + path("5 6", sign)),
            "<g><use href=\"#d0\" transform=\"translate(1 2)\"/><g/>"
            "<use href=\"#d1\" transform=\"translate(3 4)\"/></g><use href=\"#d0\" transform=\"translate(5 6)\"/>");
  const std::string shorter = path("1 2", sign.substr(1)) + "<rect/>";
  EXPECT_EQ(paths.Refer(shorter + path("7 8", sign)), shorter + "<use href=\"#d0\" transform=\"translate(7 8)\"/>");
  EXPECT_EQ(paths.Refer("<path transform=\"translate(1 2)\"/>" + path("1 2", "m")),
            "<path transform=\"translate(1 2)\"/>" + path("1 2", "m"));
  EXPECT_EQ(paths.Definitions(),
            "<svg class=\"drawing\" width=\"0\" height=\"0\" aria-hidden=\"true\"><defs><path id=\"d0\" d=\"" + sign +
                "\"/><path id=\"d1\" d=\"" + sign + "z\"/></defs></svg>");
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
