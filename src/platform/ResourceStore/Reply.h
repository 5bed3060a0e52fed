// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "NetLink/RapidJsonProto.h"
#include "VantBase/Error.h"

namespace ResourceStore {

inline constexpr const char* kPlatformUrl = "/NXAPI/Vantorel/Platform/";

// Parses a reply into `document` and answers what its envelope says: sub error 0 is success; -1 and -1 without one.
inline Vant::Base::Error::ErrorCode ReadEnvelope(const std::string& text, NetLink::CRapidJsonProto& document) {
  document.set_str(text);
  Vant::Base::Error::ErrorCode error(document.get_int_v("/ResponseStatus/ErrorModule", -1),
                                     document.get_int_v("/ResponseStatus/ErrorCode", -1), 1,
                                     document.get_v("/ResponseStatus/CascadingErrorInfo", ""));
  return error.GetSubError() == 0 ? Vant::Base::Error::ErrorCode() : error;
}

}  // namespace ResourceStore
