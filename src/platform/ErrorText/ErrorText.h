// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "ErrorText/Export.h"
#include "VantBase/Error.h"

namespace ErrorText {

// The display text of an error record, translated by the host's translator where one is installed. Sub error 0
// gives the empty text; a pair of numbers without an entry gives "Error <main>-<sub>"; the record's cascading text,
// if any, is appended after ": ". Any thread.
ERRORTEXT_API std::string GetErrorInfoByErrorCode(const Vant::Base::Error::ErrorCode& error);

}  // namespace ErrorText
