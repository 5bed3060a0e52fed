// SPDX-License-Identifier: Apache-2.0
// Where the server's resources are, and the form of its replies. For the platform's own libraries, not for hosts.
#pragma once

#include <string>

#include "NetLink/RapidJsonProto.h"
#include "VantBase/Error.h"

namespace BizShared::details {

inline constexpr const char* kPlatformUrl = "/NXAPI/Vantorel/Platform/";

// Parses a reply into `document` and answers what its envelope says: sub error 0 is success; -1 and -1 without one.
inline Vant::Base::Error::ErrorCode ReadEnvelope(const std::string& text, NetLink::CRapidJsonProto& document) {
  document.set_str(text);
  Vant::Base::Error::ErrorCode error(document.get_int_v("/ResponseStatus/ErrorModule", -1),
                                     document.get_int_v("/ResponseStatus/ErrorCode", -1), 1,
                                     document.get_v("/ResponseStatus/CascadingErrorInfo", ""));
  return error.GetSubError() == 0 ? Vant::Base::Error::ErrorCode() : error;
}

// Calls `take` with the path of each element of a reply's list ("AreaList/Area" and the like), up to its last '/'.
template <class Take>
void ForEachElement(const NetLink::CRapidJsonProto& reply, const char* list, Take take) {
  const std::string path = std::string("/ResponseStatus/Data/") + list;
  const int count = reply.get_cnt(path);
  for (int i = 1; i <= count; ++i) take(path + '[' + std::to_string(i) + "]/");
}

}  // namespace BizShared::details
