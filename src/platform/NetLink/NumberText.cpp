// SPDX-License-Identifier: Apache-2.0
#include "NetLink/NumberText.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace NetLink {
namespace {

struct NumberParts {
  bool negative = false;
  std::string_view whole;
  std::string_view fraction;
  std::string_view exponent;  // With its sign.
};

std::string_view TakeDigits(std::string_view& text) {
  const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
  const std::string_view digits = text.substr(0, count);
  text.remove_prefix(count);
  return digits;
}

bool TakeOneOf(std::string_view& text, std::string_view characters) {
  if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

std::optional<NumberParts> Split(std::string_view text) {
  NumberParts parts;
  parts.negative = TakeOneOf(text, "-");
  parts.whole = TakeDigits(text);
  if (parts.whole.empty()) return std::nullopt;
  if (TakeOneOf(text, ".")) {
    parts.fraction = TakeDigits(text);
    if (parts.fraction.empty()) return std::nullopt;
  }
  if (TakeOneOf(text, "eE")) {
    const std::string_view signedExponent = text;
    TakeOneOf(text, "+-");
    if (TakeDigits(text).empty()) return std::nullopt;
    parts.exponent = signedExponent.substr(0, signedExponent.size() - text.size());
  }
  if (!text.empty()) return std::nullopt;
  return parts;
}

std::int64_t ExponentOf(std::string_view exponent) {
  constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max() / 2;
  if (!exponent.empty() && exponent.front() == '+') exponent.remove_prefix(1);
  std::int64_t value = 0;
  const auto result = std::from_chars(exponent.data(), exponent.data() + exponent.size(), value);
  if (result.ec == std::errc::result_out_of_range) return exponent.front() == '-' ? -kHuge : kHuge;
  return std::clamp(value, -kHuge, kHuge);
}

// Whether a number that is not zero is 1 or more, by the place of its first digit.
bool IsLarge(const NumberParts& parts) {
  const std::size_t leading = parts.whole.find_first_not_of('0');
  const std::int64_t place = leading != std::string_view::npos
                                 ? static_cast<std::int64_t>(parts.whole.size() - leading)
                                 : -static_cast<std::int64_t>(parts.fraction.find_first_not_of('0'));
  return place + ExponentOf(parts.exponent) > 0;
}

}  // namespace

std::optional<std::int64_t> IntegerOf(std::string_view text) {
  std::int64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return value;
}

std::optional<double> NumberOf(std::string_view text) {
  const std::optional<NumberParts> parts = Split(text);
  if (!parts) return std::nullopt;
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    value = IsLarge(*parts) ? std::numeric_limits<double>::max() : 0.0;
    if (parts->negative) value = -value;
  }
  return value;
}

}  // namespace NetLink
