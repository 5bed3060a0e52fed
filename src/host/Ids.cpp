// SPDX-License-Identifier: Apache-2.0
#include "host/Ids.h"

#include <cstdint>

#include "host/Failure.h"
#include "json/Numbers.h"

namespace host {

bool IsId(const std::string& text) {
  const auto id = json::WholeNumber<uint32_t>(text);
  return id && std::to_string(*id) == text;
}

bool IsOfSomething(const std::string& id) {
  return !id.empty() && id != "0" && id != kNoId;
}

std::string SignedId(const std::string& unsignedId) {
  return IsId(unsignedId) ? std::to_string(json::AsSigned(*json::Of32Bits(unsignedId))) : unsignedId;
}

std::string UnsignedId(const std::string& signedId) {
  const auto number = json::WholeNumber<int32_t>(signedId);
  return number ? std::to_string(static_cast<uint32_t>(*number)) : signedId;
}

std::string RequireId(const std::string& text, const std::string& what) {
  if (!IsId(text)) throw Failure(kUsage, "\"" + text + "\" is not the id of a " + what);
  return text;
}

}  // namespace host
