// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "VantBase/Error.h"
#include "host/Options.h"

namespace host {

// Why a login failed and what to do about it, in one sentence. Of a certificate that is not trusted it finds out, by
// asking the server for it once more, whether its authority or its name is at fault.
std::string LoginAdvice(const Vant::Base::Error::ErrorCode& error, const GlobalOptions& options);

}  // namespace host
