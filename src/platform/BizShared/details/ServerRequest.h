// SPDX-License-Identifier: Apache-2.0
// Requests of the platform's own to the server. For the platform's own libraries, not for hosts. Any thread.
#pragma once

#include <string>

#include "BizShared/Export.h"
#include "BizShared/details/RequestContext.h"
#include "NetLink/ClientMessage.h"
#include "NetLink/RapidJsonProto.h"
#include "VantBase/Error.h"

namespace BizShared::details {

// A GET of "V0/Views" and the like.
BIZSHARED_API NetLink::CClientSendInfo GetRequest(const std::string& resource);

// Sends and waits. False, and why in `error`, when no reply arrived; `error` is untouched otherwise.
BIZSHARED_API bool Ask(const NetLink::CClientSendInfo& send, RequestContext& context, std::string& reply,
                       Vant::Base::Error::ErrorCode& error);
// Reads the reply too: false also when its envelope says an error, and `error` says what the envelope does.
BIZSHARED_API bool Ask(const NetLink::CClientSendInfo& send, RequestContext& context, NetLink::CRapidJsonProto& reply,
                       Vant::Base::Error::ErrorCode& error);

}  // namespace BizShared::details
