// SPDX-License-Identifier: Apache-2.0
// Numbers as texts, by the rules of stream extraction in the classic locale: leading blanks are skipped, reading stops
// at the first character that cannot continue the number, and what follows is ignored. A text that is empty or does
// not begin with a number gives 0. Any thread; none depends on the locale.
#pragma once

#include <string>
#include <string_view>

namespace QorviViewPlugin {

// A leading minus sign wraps around: "-1" gives 0xFFFFFFFF. A number out of range gives the largest value.
unsigned int StringToUInt(std::string_view text);
// A number out of range gives the nearest limit.
int StringToInt(std::string_view text);
float StringToFloat(std::string_view text);

std::string IntToString(int value);
std::string UIntToString(unsigned int value);
// Fixed notation with six decimals, as printf's "%f".
std::string FloatToString(float value);

// The host's records and the wire are signed, the model's ids unsigned: the same 32 bits read the other way.
constexpr int AsSigned(unsigned int id) {
  return static_cast<int>(id);
}
constexpr unsigned int AsUnsigned(int number) {
  return static_cast<unsigned int>(number);
}
// The low 32 bits of a 64-bit model field, and a 32-bit number widened with its sign.
constexpr int LowBits(unsigned long long value) {
  return static_cast<int>(static_cast<unsigned int>(value));
}
constexpr unsigned long long SignExtended(int number) {
  return static_cast<unsigned long long>(static_cast<long long>(number));
}

// A float corner in thousandths, multiplied in single precision and truncated toward zero; out of range it saturates
// and a NaN gives 0. And back, divided in double precision.
int ToMilli(float value);
float FromMilli(int milli);

}  // namespace QorviViewPlugin
