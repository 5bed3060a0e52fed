// SPDX-License-Identifier: Apache-2.0
#include "host/Ids.h"

#include <cstdint>

#include "json/Numbers.h"

namespace host {

bool IsId(const std::string& text) {
  const auto id = json::WholeNumber<uint32_t>(text);
  return id && std::to_string(*id) == text;
}

}  // namespace host
