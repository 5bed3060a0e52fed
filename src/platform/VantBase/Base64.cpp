// SPDX-License-Identifier: Apache-2.0
#include "VantBase/Base64.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Vant::Base::Encrypt {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::int8_t kNotInAlphabet = -1;

constexpr std::array<std::int8_t, 256> MakeValues() {
  std::array<std::int8_t, 256> values{};
  values.fill(kNotInAlphabet);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::int8_t>(i);
  }
  return values;
}

constexpr std::array<std::int8_t, 256> kValues = MakeValues();

}  // namespace

std::string Base64Encode(const std::string& bytes) {
  std::string text;
  std::uint32_t bits = 0;
  int bitCount = 0;
  for (const char byte : bytes) {
    bits = (bits << 8) | static_cast<unsigned char>(byte);
    bitCount += 8;
    while (bitCount >= 6) {
      bitCount -= 6;
      text += kAlphabet[(bits >> bitCount) & 0x3F];
    }
  }
  if (bitCount > 0) text += kAlphabet[(bits << (6 - bitCount)) & 0x3F];
  while (text.size() % 4 != 0) text += '=';
  return text;
}

std::string Base64Decode(const std::string& text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int bitCount = 0;
  for (const char character : text) {
    const std::int8_t value = kValues[static_cast<unsigned char>(character)];
    if (value == kNotInAlphabet) break;
    bits = (bits << 6) | static_cast<std::uint32_t>(value);
    bitCount += 6;
    if (bitCount >= 8) {
      bitCount -= 8;
      bytes += static_cast<char>((bits >> bitCount) & 0xFF);
    }
  }
  return bytes;
}

}  // namespace Vant::Base::Encrypt
