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

// How a session logs: its full name, and what stands between that and "success" or "failed" in its lines.
struct SessionTexts {
  const char* function;
  const char* prefix;
  const char* transportPrefix = prefix;  // in the line about a transport failure
};

// The texts of most sessions, by the literal "class::function"; a transport prefix may follow.
#define QORVI_SESSION_TEXTS(name, ...) \
  { "QorviViewPlugin::" name, "[" name "] " __VA_OPT__(, ) __VA_ARGS__ }

struct SessionRequest {
  const char* method;
  std::string url;
  std::string body;
  // Listings hand their body over as request data and set a time-out of their own.
  bool isListing = false;
  // The error record gets its subsystem code as soon as a reply has arrived, even an empty one.
  bool marksSubSystemEarly = false;
};

// Sends the request and answers the reply's body; after a transport failure nothing, and `error` is the transport's
// record. Nothing is logged.
std::optional<std::string> SendRequest(const SessionRequest& request, ErrorCode& error);

// Reads the data of a reply.
using ReplyReader = std::function<void(const NetLink::CRapidJsonProto&)>;

// The three ways of reading a reply. Each answers whether the server accepted, and logs one line about it. On failure
// `error` is the transport's record as it stands, or the reply's status with subsystem code 1; a reply without a
// readable status fails with -1/-1.

// Modify, delete and order: the status, cascading text included, and of what is accepted the number of the change,
// where it is asked for.
bool RunStatusSession(const SessionRequest& request, const SessionTexts& texts, ErrorCode& error,
                      ChangeNumber* changeNumber = nullptr);

// Add and list: the status, and of what is accepted the data. An empty reply fails and leaves `error` as it was.
bool RunDataSession(const SessionRequest& request, const SessionTexts& texts, CascadingText cascading, ErrorCode& error,
                    const ReplyReader& readData);

// Default view configuration. An empty reply counts as success but is logged as failed. `readData` runs before the
// status is looked at, so a refusal reaches it too; it may be empty.
bool RunConfigSession(const SessionRequest& request, const SessionTexts& texts, ErrorCode& error,
                      const ReplyReader& readData);

}  // namespace QorviViewPlugin
