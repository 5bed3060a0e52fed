// SPDX-License-Identifier: Apache-2.0
// What the server sessions share: one request cycle and three ways of reading the reply. Everything runs on the calling
// thread and blocks until the transport returns. REQUIRES: the caller holds no lock.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/ViewDataManager/document/ReplyEnvelope.h"

namespace QorviViewPlugin {

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

// Sends the request and answers the reply's body; after a transport failure nothing, and `error` is the transport's
// record. Nothing is logged.
std::optional<std::string> SendRequest(const SessionRequest& request, ErrorCode& error);

// Reads the data of a reply whose status is success.
using ReplyReader = std::function<void(NetLink::CRapidJsonProto&)>;

// All three answer whether the server accepted. On failure `error` is the transport's record as it stands, or the
// reply's status with subsystem code 1, and one line has been logged; a reply without a readable status fails with
// -1/-1.

// Modify, delete and order: the status, cascading text included. `readData` may be empty.
bool RunStatusSession(const SessionRequest& request, const SessionTexts& texts, ErrorCode& error,
                      const ReplyReader& readData = nullptr);

// Add and list: status and data. An empty reply fails and leaves `error` as it was.
bool RunDataSession(const SessionRequest& request, const SessionTexts& texts, CascadingText cascading, ErrorCode& error,
                    const ReplyReader& readData);

// Default view configuration: an empty reply counts as success. `readData` runs before the status is looked at, so a
// refusal reaches it too; it may be empty.
bool RunConfigSession(const SessionRequest& request, const SessionTexts& texts, ErrorCode& error,
                      const ReplyReader& readData);

}  // namespace QorviViewPlugin
