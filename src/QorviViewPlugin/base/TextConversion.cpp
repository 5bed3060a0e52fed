// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/base/TextConversion.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>

namespace QorviViewPlugin {
namespace {

bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// A sign and decimal digits at the start of a text, as stream extraction sees them.
struct IntegerText {
  bool negative = false;
  bool tooLarge = false;  // the magnitude exceeds 32 bits, and is not told
  uint32_t magnitude = 0;
};

IntegerText ScanInteger(std::string_view text) {
  IntegerText result;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end && IsBlank(*at)) ++at;
  if (at != end && (*at == '-' || *at == '+')) result.negative = *at++ == '-';
  for (; at != end && IsDigit(*at) && !result.tooLarge; ++at) {
    const uint64_t next = uint64_t{result.magnitude} * 10 + static_cast<uint64_t>(*at - '0');
    result.tooLarge = next > std::numeric_limits<uint32_t>::max();
    result.magnitude = static_cast<uint32_t>(next);
  }
  return result;
}

// The longest start of [at, end) that stream extraction would gather for a floating-point number.
const char* ScanFloat(const char* at, const char* end) {
  bool mantissa = false;
  bool point = false;
  bool exponent = false;
  if (at != end && (*at == '-' || *at == '+')) ++at;
  for (; at != end; ++at) {
    if (IsDigit(*at)) {
      mantissa = true;
    } else if (*at == '.' && !point && !exponent) {
      point = true;
    } else if ((*at == 'e' || *at == 'E') && mantissa && !exponent) {
      exponent = true;
      if (at + 1 != end && (at[1] == '-' || at[1] == '+')) ++at;
    } else {
      break;
    }
  }
  return at;
}

// Digits, a point, digits, at most seven of them in all, as servers write decimals. Both numbers of that fraction are
// floats without loss, so that one division rounds as it has to.
std::optional<float> ShortDecimal(std::string_view text) {
  constexpr float kPowers[] = {1.0f, 10.0f, 100.0f, 1000.0f, 10000.0f, 100000.0f, 1000000.0f};
  const bool isNegative = text.starts_with('-');
  if (isNegative) text.remove_prefix(1);
  if (text.size() > std::size(kPowers) + 1) return std::nullopt;
  int digits = 0;
  size_t point = 0;
  for (size_t at = 0; at < text.size(); ++at) {
    if (IsDigit(text[at])) {
      digits = digits * 10 + (text[at] - '0');
    } else if (text[at] == '.' && at > 0 && point == 0) {
      point = at;
    } else {
      return std::nullopt;
    }
  }
  if (point == 0 || point + 1 == text.size()) return std::nullopt;
  const float value = static_cast<float>(digits) / kPowers[text.size() - 1 - point];
  return isNegative ? -value : value;
}

float ExtractFloat(std::string_view text) {
  std::istringstream stream{std::string(text)};
  stream.exceptions(std::ios::badbit);  // want of memory is no number
  stream.imbue(std::locale::classic());
  float value = 0.0f;
  stream >> value;
  return value;
}

int TruncatedToInt(float value) {
  if (std::isnan(value)) return 0;
  // The float limits are powers of two, hence exact.
  if (value >= 2147483648.0f) return std::numeric_limits<int>::max();
  if (value < -2147483648.0f) return std::numeric_limits<int>::min();
  return static_cast<int>(value);
}

}  // namespace

unsigned int StringToUInt(std::string_view text) {
  const IntegerText number = ScanInteger(text);
  if (number.tooLarge) return std::numeric_limits<uint32_t>::max();
  return number.negative ? 0u - number.magnitude : number.magnitude;
}

int StringToInt(std::string_view text) {
  const IntegerText number = ScanInteger(text);
  constexpr uint32_t kLimit = 0x80000000u;
  if (number.negative)
    return number.tooLarge || number.magnitude >= kLimit ? std::numeric_limits<int>::min()
                                                         : -static_cast<int>(number.magnitude);
  return number.tooLarge || number.magnitude >= kLimit ? std::numeric_limits<int>::max()
                                                       : static_cast<int>(number.magnitude);
}

float StringToFloat(std::string_view text) {
  if (const auto value = ShortDecimal(text)) return *value;
  const char* begin = text.data();
  const char* const end = begin + text.size();
  while (begin != end && IsBlank(*begin)) ++begin;
  const char* const stop = ScanFloat(begin, end);
  if (begin != stop && *begin == '+') ++begin;
  if (begin == stop) return 0.0f;
  float value = 0.0f;
  const std::from_chars_result result = std::from_chars(begin, stop, value);
  // Streams saturate where from_chars only reports, and refuse what stops in the middle of an exponent.
  if (result.ec == std::errc::result_out_of_range) return ExtractFloat(text);
  return result.ec == std::errc() && result.ptr == stop ? value : 0.0f;
}

std::string IntToString(int value) {
  return std::to_string(value);
}

std::string UIntToString(unsigned int value) {
  return std::to_string(value);
}

std::string FloatToString(float value) {
  // The largest float has 39 digits before the point.
  char text[64];
  // The product is exact in a double (24 + 20 bits) and fits a long long. So the value is rounded once, as printf does;
  // the rest is integer digits.
  constexpr float kExactBelow = 9e12f;
  if (std::fabs(value) < kExactBelow) {
    const long long millionths = std::llrint(std::fabs(static_cast<double>(value)) * 1e6);
    char* at = text;
    if (std::signbit(value)) *at++ = '-';
    at = std::to_chars(at, text + sizeof text, millionths / 1000000).ptr;
    *at = '.';
    long long rest = millionths % 1000000;
    for (int place = 6; place > 0; --place, rest /= 10) at[place] = static_cast<char>('0' + rest % 10);
    return std::string(text, at + 7);
  }
  const std::to_chars_result result =
      std::to_chars(text, text + sizeof text, static_cast<double>(value), std::chars_format::fixed, 6);
  return std::string(text, result.ptr);
}

int ToMilli(float value) {
  return TruncatedToInt(value * 1000.0f);
}

float FromMilli(int milli) {
  return static_cast<float>(milli / 1000.0);
}

}  // namespace QorviViewPlugin
