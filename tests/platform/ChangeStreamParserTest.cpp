// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/ChangeStreamParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "../Cases.h"

namespace {

using ResourceStore::details::ChangeEvent;
using ResourceStore::details::ChangeStreamParser;

// One line an event: id|type|data, "-" for no id and "OVERSIZE" for what was too long.
std::string Describe(const std::vector<ChangeEvent>& events) {
  std::string text;
  for (const ChangeEvent& event : events) {
    text += event.id.value_or("-") + "|" + event.type + "|" + (event.oversize ? "OVERSIZE" : event.data) + "\n";
  }
  return text;
}

std::string ParseWhole(std::string_view stream, size_t limit = ChangeStreamParser::kDefaultLimit) {
  ChangeStreamParser parser(limit);
  std::vector<ChangeEvent> events;
  parser.Feed(stream, events);
  return Describe(events);
}

TEST(ChangeStreamParserTest, YieldsTheEventsOfAStream) {
  for (const auto& [written, expected] : testing_support::Cases(STREAM_TEXTS)) {
    std::string stream = written, events;
    std::ranges::replace(stream, '~', '\n');
    std::ranges::replace(stream, '^', '\r');
    for (const std::string& line : expected) events += line + "\n";
    EXPECT_EQ(ParseWhole(stream), events) << stream;
  }
}

TEST(ChangeStreamParserTest, AnOversizeEventCostsItsDataAndNothingElse) {
  const std::string longText(200, 'x'), piece = "data: " + std::string(50, 'y') + "\n", good = "id: 9\ndata: good\n\n";
  for (const std::string& event : {"id: 1\ndata: " + longText + "\n\n", "data: " + longText + "\ndata: b\nid: 1\n\n",
                                   "id: 1\n" + piece + piece + piece + "\n"}) {
    EXPECT_EQ(ParseWhole(event + good, 100), "1|message|OVERSIZE\n9|message|good\n") << event;
  }
  // One byte more than there is room for makes the difference: of data, line ends included, and of a line.
  for (const size_t more : {0, 1}) {
    const std::string whole(99, 'x'), rest(50 + more, 'x'), id(112 + more, '7');
    const std::string one = whole + std::string(more, 'x'), two = std::string(49, 'x') + "\n" + rest;
    EXPECT_EQ(ParseWhole("data: " + one + "\n\n", 100), "-|message|" + (more ? "OVERSIZE" : one) + "\n");
    EXPECT_EQ(ParseWhole("data: " + two.substr(0, 50) + "data: " + rest + "\n\n", 100),
              "-|message|" + (more ? "OVERSIZE" : two) + "\n");
    EXPECT_EQ(ParseWhole("id: " + id + "\ndata: a\n\n", 100), (more ? "-" : id) + "|message|a\n");
  }
  EXPECT_EQ(ParseWhole(": " + longText + "\n" + longText + "\nid: " + longText + "\n" + good, 100), "9|message|good\n");
  constexpr size_t kUsualLimit = size_t{64} << 20;
  for (const size_t size : {kUsualLimit - 1, kUsualLimit}) {
    EXPECT_EQ(ParseWhole("data: " + std::string(size, 'x') + "\n\n") == "-|message|OVERSIZE\n", size == kUsualLimit);
  }
}

TEST(ChangeStreamParserTest, TheSameEventsComeHoweverTheStreamIsCut) {
  const std::string pieces[] = {
      "id: ",  "17",      "\n",           "\r\n", "\r",      "\n\n",         "\r\n\r\n",
      "data:", "data: x", "event: Views", ":",    "rubbish", "\xEF\xBB\xBF", std::string(70, 'z')};
  std::mt19937 random(20240607);
  auto pick = [&](size_t count) { return std::uniform_int_distribution<size_t>(0, count - 1)(random); };
  for (int round = 0; round < 400; ++round) {
    std::string stream;
    for (size_t i = 0, n = pick(40) + 1; i < n; ++i) stream += pieces[pick(std::size(pieces))];
    std::string whole = ParseWhole(stream, 60);
    ChangeStreamParser parser(60);
    std::vector<ChangeEvent> events;
    size_t longest = round % 2 == 0 ? 1 : 7;
    for (size_t at = 0; at < stream.size();) {
      size_t length = 1 + pick(longest);
      parser.Feed(std::string_view(stream).substr(at, length), events);
      at += length;
    }
    ASSERT_EQ(Describe(events), whole) << stream;
  }
}

}  // namespace
