// SPDX-License-Identifier: Apache-2.0
#include "host/Ids.h"

#include <charconv>
#include <cstdint>

#include "host/Failure.h"

namespace host {

bool IsId(const std::string& text) {
  uint32_t id = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, id);
  return error == std::errc() && rest == end && std::to_string(id) == text;
}

std::string RequireId(const std::string& text, const std::string& what) {
  if (!IsId(text)) throw Failure(kUsage, "\"" + text + "\" is not the id of a " + what);
  return text;
}

QualifiedId ParseQualifiedId(const std::string& text) {
  for (const auto& [prefix, of] : {std::pair("view:", QualifiedId::Of::kView), {"group:", QualifiedId::Of::kGroup}}) {
    const std::string name = prefix;
    if (text.compare(0, name.size(), name) == 0) {
      return {of, RequireId(text.substr(name.size()), name.substr(0, name.size() - 1))};
    }
  }
  return {QualifiedId::Of::kEither, RequireId(text, "view or group")};
}

}  // namespace host
