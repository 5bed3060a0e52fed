// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/base/TextConversion.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <locale>
#include <random>
#include <sstream>
#include <vector>

namespace QorviViewPlugin {
namespace {

// What a stream in the classic locale makes of the text.
template <class Number>
Number Extracted(const std::string& text) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  Number value = 0;
  stream >> value;
  return value;
}

void ExpectAsStreamsRead(const std::string& text) {
  EXPECT_EQ(StringToUInt(text), Extracted<unsigned int>(text)) << '"' << text << '"';
  EXPECT_EQ(StringToInt(text), Extracted<int>(text)) << '"' << text << '"';
  // The bits, so that -0.0 is told from 0.0 and a NaN equals itself.
  EXPECT_EQ(std::bit_cast<uint32_t>(StringToFloat(text)), std::bit_cast<uint32_t>(Extracted<float>(text))) << text;
}

// Beside what streams make of them: the values themselves.
TEST(TextsToNumbers, GiveTheValuesThatHostsRelyOn) {
  const std::pair<const char*, unsigned int> rows[] = {
      {"-1", 0xFFFFFFFFu}, {"-4294967295", 1}, {"", 0}, {"root", 0}, {" \t\n12abc", 12}};
  for (const auto& [text, number] : rows) EXPECT_EQ(StringToUInt(text), number) << text;
  EXPECT_EQ(AsSigned(StringToUInt("-4")), -4);
  EXPECT_EQ(StringToFloat("0.250000"), 0.25f);
  EXPECT_EQ(StringToFloat(std::string_view("1e-5").substr(0, 2)), Extracted<float>("1e")) << "ends within its text";
}

TEST(TextsToNumbers, AreReadAsByStreamExtraction) {
  for (const char* text :
       {"1'000", "\u00a03", "0x1F", "inf", "nan", "-1e400", "1e-45", "\v\f\r 3", "4294967296", "-4294967296",
        "4294967295", "-4294967295", "-2147483649", "99999999999999999999", "16777217",
        "340282350000000000000000000000000000000", "340282360000000000000000000000000000001"}) {
    ExpectAsStreamsRead(text);
  }
  ExpectAsStreamsRead(std::string("3\0004", 3));
  std::mt19937 random(20240611);
  for (int n = 0; n < 100000; ++n) {
    std::string decimal = std::to_string(random() >> (random() % 32));
    decimal.insert(random() % (decimal.size() + 1), 1, '.');
    ExpectAsStreamsRead((n % 2 ? "-" : "") + decimal);
    if (HasFailure()) return;
  }
  const std::string alphabet = "00123456789+-..eE xX,\t\n";
  for (int n = 0; n < 60000; ++n) {
    std::string text(random() % 14, ' ');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    ExpectAsStreamsRead(text);
    if (HasFailure()) return;
  }
}

TEST(NumbersToTexts, HaveSixDecimals) {
  std::mt19937 random(7);
  std::vector<float> values = {0.0f,  -0.0f,  0.25f,   -1.0f,    1 / 128.0f, 3 / 128.0f, 8e12f,
                               1e13f, 1e-30f, FLT_MAX, -FLT_MAX, INFINITY,   -INFINITY};
  for (int n = 0; n < 20000; ++n) {
    const float value = std::bit_cast<float>(static_cast<uint32_t>(random()));
    if (!std::isnan(value)) values.push_back(value);
  }
  for (float value : values) {
    char expected[64];
    std::snprintf(expected, sizeof expected, "%f", static_cast<double>(value));
    ASSERT_EQ(FloatToString(value), expected);
  }
  EXPECT_EQ(IntToString(-1), "-1");
  EXPECT_EQ(UIntToString(0xFFFFFFFFu), "4294967295");
}

TEST(NumbersAndTexts, DoNotDependOnTheLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  // A machine may have no such locale; the global one above is always set.
  for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE"}) {
    if (std::setlocale(LC_ALL, name)) break;
  }
  EXPECT_EQ(FloatToString(1234.5f), "1234.500000");
  EXPECT_EQ(StringToFloat("1234.5"), 1234.5f);
  EXPECT_EQ(StringToFloat("1e400"), FLT_MAX);
  EXPECT_EQ(StringToUInt("1.234"), 1u);
  EXPECT_EQ(IntToString(1234567), "1234567");
  std::locale::global(before);
  std::setlocale(LC_ALL, "C");
}

TEST(Thousandths, AreTruncatedTowardZeroAndSaturate) {
  constexpr int kMin = INT_MIN, kMax = INT_MAX;
  const std::pair<float, int> rows[] = {
      {0.25f, 250},        {0.1234f, 123}, {-0.1239f, -123}, {-1.0f, -1000},    {0.0009f, 0}, {3e6f, kMax},
      {2147483.75f, kMax}, {-3e6f, kMin},  {INFINITY, kMax}, {-INFINITY, kMin}, {NAN, 0}};
  for (const auto& [value, milli] : rows) EXPECT_EQ(ToMilli(value), milli) << value;
  EXPECT_EQ(FromMilli(123), 0.123f);
  EXPECT_EQ(FromMilli(-1), -0.001f);
}

TEST(Thousandths, LoseOneOnTheWayInTheseTenPlacesOnly) {
  std::vector<int> losing;
  for (int milli = -1000; milli <= 1000; ++milli) {
    const int back = ToMilli(FromMilli(milli));
    if (back != milli) losing.push_back(milli);
    EXPECT_LE(std::abs(milli) - std::abs(back), 1) << milli;
    EXPECT_EQ(ToMilli(FromMilli(back)), back) << "and not again";
  }
  EXPECT_EQ(losing, (std::vector<int>{-511, -506, -502, -253, -251, 251, 253, 502, 506, 511}));
}

}  // namespace
}  // namespace QorviViewPlugin
