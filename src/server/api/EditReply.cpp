// SPDX-License-Identifier: Apache-2.0
#include "server/api/EditReply.h"

#include <memory>
#include <new>
#include <utility>

#include "server/documents/Replies.h"

namespace server {

namespace {

// For where nothing may be thrown: without memory the connection ends.
void RefuseInto(HttpReply& reply, const Refusal& refusal) noexcept {
  try {
    reply = RefusedReply(refusal);
  } catch (const std::bad_alloc&) {
    reply = HttpReply();
    reply.cut = 0;
  }
}

}  // namespace

HttpReply Reply(std::string body) {
  HttpReply reply;
  reply.body = std::move(body);
  return reply;
}

HttpReply RefusedReply(const Refusal& refusal) {
  HttpReply reply = Reply(Envelope(refusal));
  reply.status = refusal.httpStatus;
  reply.headers.emplace_back("Error-Detail", refusal.detail);
  if (refusal.retryAfter > 0) reply.headers.emplace_back("Retry-After", std::to_string(refusal.retryAfter));
  return reply;
}

HttpReply EditReply(Site& site, std::function<HttpReply(Editor&)> make) {
  HttpReply answer;
  answer.pending = std::make_shared<PendingReply>();
  const auto reply = std::make_shared<HttpReply>();
  site.Submit([make = std::move(make), reply](Editor& editor) { *reply = make(editor); },
              [pending = answer.pending, reply](const Refusal* refusal) {
                if (refusal) RefuseInto(*reply, *refusal);
                pending->Give(std::move(*reply));
              });
  return answer;
}

}  // namespace server
