// SPDX-License-Identifier: Apache-2.0
// The query of a request: `name=value` pairs joined by "&", percent-encoded.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace server {

// The value of the first parameter of that name. Throws a Refusal where it is not well encoded.
std::optional<std::string> Parameter(std::string_view query, std::string_view name);

}  // namespace server
