// SPDX-License-Identifier: Apache-2.0
// Replies, and those of edits, which go out once the edit is safe.
#pragma once

#include <functional>
#include <string>

#include "server/http/HttpHandler.h"
#include "server/model/Refusal.h"
#include "server/site/Site.h"

namespace server {

HttpReply Reply(std::string body);
HttpReply RefusedReply(const Refusal& refusal);
// `make` gives the reply while it makes the edit, for nothing may fail once that is safe.
HttpReply EditReply(Site& site, std::function<HttpReply(Editor&)> make);

}  // namespace server
