// SPDX-License-Identifier: Apache-2.0
#include "server/changes/EventTexts.h"

#include <utility>

#include "server/documents/Json.h"
#include "server/documents/Replies.h"

namespace server {

namespace {

// A list reply of one element with "Method", on one line.
// Appended, not returned: a large one is to be held once.
void AppendData(std::string& text, const Change& change, Sight sight, Method method) {
  if (method != Method::kDeleted && change.document) text.reserve(text.size() + change.document->size() + 1024);
  text += EventPrefix(change.kind);
  if (method == Method::kDeleted) {
    text += '{' + wire::Members({{"ID", change.id}, {kChangeNumber, std::to_string(change.number)}});
  } else {
    text += sight == Sight::kShared ? change.sharedHead : change.head;
    if (change.document) text += *change.document;
  }
  text.append(",").append(wire::Members({{"Method", static_cast<int32_t>(method)}}));
  text.append(1, '}').append(ListSuffix());
}

}  // namespace

Text EventTexts::For(const Caller& listener) {
  const std::optional<Method> method = MethodFor(m_change, listener.userId);
  if (!method) return nullptr;
  const Sight sight = m_change.after.Of(listener.userId);
  const bool own = m_change.sessionId != 0 && m_change.sessionId == listener.sessionId;
  Text& text = m_texts[static_cast<int>(*method)][sight == Sight::kShared ? 1 : 0][own ? 1 : 0];
  if (!text) {
    std::string event = "id: " + std::to_string(m_change.number) + "\nevent: " + (own ? "Own" : "");
    event += m_change.kind == ObjectKind::kView ? "Views\ndata: " : "ViewGroups\ndata: ";
    AppendData(event, m_change, sight, *method);
    text = std::make_shared<std::string>(std::move(event += "\n\n"));
  }
  return text;
}

}  // namespace server
