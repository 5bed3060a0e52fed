// SPDX-License-Identifier: Apache-2.0
// The pieces of which answers are made: elements, lists, events, and the envelope around all of them.
#pragma once

#include <string>

#include "server/model/Model.h"
#include "server/model/Refusal.h"

namespace server {

// The member that holds a change number, as decimal text.
constexpr char kChangeNumber[] = "ChangeNumber";

// An element up to what follows: the document of a view, the closing brace of a group.
std::string GroupHead(const Group& group);
std::string ViewHead(const View& view);
std::string SharedViewHead(const View& view, const std::string& ownerName);

// `data` is the content of "Data" with its braces.
std::string Envelope(const std::string& data);
std::string Envelope(const Refusal& refusal);
// What stands before and after the elements of a list reply, which says up to which change it is complete, and before
// and after the one element of an event.
std::string ListPrefix(ObjectKind kind, int64_t changeNumber);
std::string EventPrefix(ObjectKind kind);
std::string ListSuffix();

}  // namespace server
