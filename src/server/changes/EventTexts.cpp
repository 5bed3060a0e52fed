// SPDX-License-Identifier: Apache-2.0
#include "server/changes/EventTexts.h"

#include <optional>

#include "server/documents/Json.h"
#include "server/documents/Replies.h"

namespace server {

namespace {

// What an object's change is to one user, by its number in an event.
enum class Method { kAdded = 0, kChanged = 1, kDeleted = 2 };

// Added is what comes into the user's sight, deleted what goes out of it; nothing: the user hears nothing of the
// change.
std::optional<Method> MethodFor(const Change& change, Sight before, Sight after) {
  if (before == Sight::kNone && after == Sight::kNone) return std::nullopt;
  if (after == Sight::kNone) return Method::kDeleted;
  if (before == Sight::kNone) return Method::kAdded;
  if (before == after && !change.contentChanged) return std::nullopt;
  return Method::kChanged;
}

// A list reply of one element with "Method", on one line.
std::string DataOf(const Change& change, Sight sight, Method method) {
  std::string text = EventPrefix(change.kind);
  if (method == Method::kDeleted) {
    text += '{' + wire::Members({{"ID", change.id}, {kChangeNumber, std::to_string(change.number)}});
  } else {
    text += sight == Sight::kShared ? change.sharedHead : change.head;
    if (change.document) text += *change.document;
  }
  return text + ',' + wire::Members({{"Method", static_cast<int32_t>(method)}}) + '}' + ListSuffix();
}

}  // namespace

Text EventTexts::For(const Caller& listener) {
  const Sight sight = m_change.after.Of(listener.userId);
  const std::optional<Method> method = MethodFor(m_change, m_change.before.Of(listener.userId), sight);
  if (!method) return nullptr;
  const bool own = m_change.sessionId != 0 && m_change.sessionId == listener.sessionId;
  Text& text = m_texts[static_cast<int>(*method)][sight == Sight::kShared ? 1 : 0][own ? 1 : 0];
  if (!text) {
    std::string event = "id: " + std::to_string(m_change.number) + "\nevent: " + (own ? "Own" : "");
    event += m_change.kind == ObjectKind::kView ? "Views\ndata: " : "ViewGroups\ndata: ";
    text = std::make_shared<std::string>(event + DataOf(m_change, sight, *method) + "\n\n");
  }
  return text;
}

}  // namespace server
