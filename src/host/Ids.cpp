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

std::string RequireId(const std::string& text, const std::string& what) {
  if (!IsId(text)) throw Failure(kUsage, "\"" + text + "\" is not the id of a " + what);
  return text;
}

}  // namespace host
