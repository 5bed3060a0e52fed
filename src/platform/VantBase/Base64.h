// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "VantBase/Export.h"

namespace Vant::Base::Encrypt {

// RFC 4648 with padding.
VANTBASE_API std::string Base64Encode(const std::string& bytes);
// Stops at the first character outside the alphabet (padding included) and answers what was decoded so far.
VANTBASE_API std::string Base64Decode(const std::string& text);

}  // namespace Vant::Base::Encrypt
