// SPDX-License-Identifier: Apache-2.0
// What stands around the data of a reply and of a downloaded document: the status, and the number of a change. Any
// thread.
#pragma once

#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "VantBase/Error.h"

namespace QorviViewPlugin {

using Vant::Base::Error::ErrorCode;

// The subsystem code of every error that the server reports.
inline constexpr int kSubSystemCode = 1;

// Whether the status's cascading text goes into the error record.
enum class CascadingText { Kept, Ignored };

// Reads the status into `error`, with subsystem code 1; whether it is success. A status that cannot be read is -1/-1.
bool ReadResponseStatus(const NetLink::CRapidJsonProto& reply, CascadingText cascading, ErrorCode& error);

// The number of the change that an accepted edit made, or, of a list, the number up to which it is complete; 0 where
// the document says none.
ChangeNumber ReadDataNumber(const NetLink::CRapidJsonProto& reply);

}  // namespace QorviViewPlugin
