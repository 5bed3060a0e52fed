// SPDX-License-Identifier: Apache-2.0
// What the server sessions share: one request cycle and three ways of reading the reply. Everything runs on the calling
// thread and blocks until the transport returns; no lock may be held by the caller.
#pragma once

#include <functional>
#include <string>

#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "VantBase/Error.h"

namespace QorviViewPlugin {

using Vant::Base::Error::ErrorCode;

inline constexpr char kInfoModule[] = "ClientVFPluginInfo";
inline constexpr char kErrorModule[] = "ClientVFPluginError";
inline constexpr int kInfoLevel = 3;
inline constexpr int kErrorLevel = 5;
inline constexpr int kSubSystemCode = 1;

// How a session logs: its full name, and its formats. A format takes the name first and the source place last; the two
// failure formats take main and sub error in between.
struct SessionTexts {
  const char* function;
  const char* success;
  const char* transportFailed;
  const char* refused;
  const char* emptyReply;  // null where an empty reply is read like any other
};

struct SessionRequest {
  const char* method;
  std::string url;
  std::string body;
  // Listings hand their body over as request data and set a time-out of their own.
  bool isListing = false;
  // The subsystem code is set as soon as a reply has arrived, also when it turns out to be empty.
  bool marksSubSystemEarly = false;
};

// Reads the data of a reply whose status is success.
using ReplyReader = std::function<void(NetLink::CRapidJsonProto&)>;

// All three answer whether the server accepted. On failure `error` is the transport's record as it stands, or the
// reply's status with subsystem code 1, and one line has been logged; a reply without a readable status fails with
// -1/-1.

// Modify, delete and order: the status, cascading text included. `readData` may be empty.
bool RunStatusSession(const SessionRequest& request, const SessionTexts& texts, ErrorCode& error,
                      const ReplyReader& readData = nullptr);

// Add and list: status and data. An empty reply fails and leaves `error` as it was.
enum class CascadingText { Kept, Ignored };
bool RunDataSession(const SessionRequest& request, const SessionTexts& texts, CascadingText cascading, ErrorCode& error,
                    const ReplyReader& readData);

// Default view configuration: an empty reply counts as success. `readData` runs before the status is looked at, so a
// refusal reaches it too; it may be empty.
bool RunConfigSession(const SessionRequest& request, const SessionTexts& texts, ErrorCode& error,
                      const ReplyReader& readData);

// Reads the status of a reply or a downloaded document into `error`, with subsystem code 1; whether it is success.
bool ReadResponseStatus(const NetLink::CRapidJsonProto& reply, CascadingText cascading, ErrorCode& error);

// The number of the change that an accepted edit made, 0 where the reply says none; or, of a list, the number up to
// which it is complete.
ChangeNumber ReadDataNumber(const NetLink::CRapidJsonProto& reply);

}  // namespace QorviViewPlugin
