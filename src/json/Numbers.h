// SPDX-License-Identifier: Apache-2.0
// Numbers out of texts, whatever the locale, and what becomes of those that are out of range. Stateless: any thread.
#pragma once

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

namespace json {

// A text that is wholly an integer of that type: digits, for a signed one perhaps behind a '-'.
template <class Integer>
std::optional<Integer> WholeNumber(std::string_view text) {
  Integer value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

// --- Integers from -2^31 to 2^32-1, signed or unsigned. Any other number gives nullopt.

inline std::optional<std::int64_t> Of32Bits(std::int64_t number) {
  const bool fits =
      number >= std::numeric_limits<std::int32_t>::min() && number <= std::numeric_limits<std::uint32_t>::max();
  return fits ? std::optional(number) : std::nullopt;
}

// Truncated toward zero.
inline std::optional<std::int64_t> Of32Bits(double number) {
  // Compared before the conversion, which is undefined for what does not fit.
  const bool fits = std::abs(std::trunc(number)) <= std::numeric_limits<std::uint32_t>::max();
  return fits ? Of32Bits(static_cast<std::int64_t>(number)) : std::nullopt;
}

// A text that is nothing but such a number.
inline std::optional<std::int64_t> Of32Bits(std::string_view text) {
  const std::optional<std::int64_t> number = WholeNumber<std::int64_t>(text);
  return number ? Of32Bits(*number) : std::nullopt;
}

// The signed number of the same bits.
inline int AsSigned(std::int64_t numberOf32Bits) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(numberOf32Bits));
}

// --- Doubles.

// Whether a decimal number that is out of a double's range is too large for it; else it is too small. std::from_chars
// does not tell the two apart; the decimal exponent of the first digit that counts does.
inline bool IsTooLarge(std::string_view number) {
  const std::size_t mark = number.find_first_of("eE");
  const std::string_view digits = number.substr(0, mark);
  std::int64_t exponent = 0;
  if (mark != std::string_view::npos) {
    std::string_view text = number.substr(mark + 1);
    if (text.front() == '+') text.remove_prefix(1);
    const std::optional<std::int64_t> value = WholeNumber<std::int64_t>(text);
    if (!value) return text.front() != '-';
    exponent = *value;
  }
  const auto first = static_cast<std::int64_t>(digits.find_first_of("123456789"));
  const auto point = static_cast<std::int64_t>(digits.substr(0, digits.find('.')).size());
  return exponent >= first - point;
}

// A text that is wholly -?[0-9]+(.[0-9]+)?([eE][+-]?[0-9]+)?; what a double cannot hold becomes its largest value of
// that sign, or zero.
inline std::optional<double> Saturated(std::string_view text) {
  const auto isDigit = [text](std::size_t at) { return at < text.size() && text[at] >= '0' && text[at] <= '9'; };
  const std::size_t point = text.find('.');
  if (!isDigit(text.starts_with('-') ? 1 : 0) || (point != std::string_view::npos && !isDigit(point + 1))) {
    return std::nullopt;
  }
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (stop != end) return std::nullopt;
  if (error == std::errc()) return value;
  return std::copysign(IsTooLarge(text) ? std::numeric_limits<double>::max() : 0.0, text.front() == '-' ? -1.0 : 1.0);
}

}  // namespace json
