// SPDX-License-Identifier: Apache-2.0
#include "server/faults/FaultHandler.h"

#include <rapidjson/pointer.h>

#include <boost/asio/steady_timer.hpp>
#include <cstdio>
#include <deque>
#include <utility>

#include "json/ParseText.h"
#include "server/api/Api.h"
#include "server/documents/Json.h"

namespace server {

namespace {

using Clock = std::chrono::steady_clock;
using rapidjson::Document;
using rapidjson::Value;

constexpr uint32_t kHeadBytes = 80;  // any head of an answer is longer

std::string_view BelowRoot(std::string_view path) {
  return path.starts_with(kRoot) ? path.substr(kRoot.size()) : path;
}

void Tell(const FaultRule& rule, const std::string& where) {
  std::fprintf(stderr, "viewserver: fault %s, %s\n", rule.name.c_str(), where.c_str());
}

// Whether it says no more than how far the listener has come: an `id` alone. When such comes is chance.
bool IsNote(const std::string& event) {
  return event.compare(event.find('\n'), std::string::npos, "\n\n") == 0;
}

// A body that can be changed: lists are made while they are sent.
void Materialise(HttpReply& reply) {
  if (!reply.source) return;
  reply.body.clear();
  for (std::string chunk; reply.source->Next(chunk);) reply.body += chunk;
  reply.source = nullptr;
}

// --- wrong kinds -----------------------------------------------------------------------------------------------------

// All values below `value`, in document order. As deep as what the server parsed, so that recursion is safe.
void CollectValues(Value& value, std::vector<Value*>& values) {
  if (value.IsObject()) {
    for (auto& member : value.GetObject()) {
      values.push_back(&member.value);
      CollectValues(member.value, values);
    }
  } else if (value.IsArray()) {
    for (Value& element : value.GetArray()) {
      values.push_back(&element);
      CollectValues(element, values);
    }
  }
}

void GiveOtherKind(Value& value, uint32_t random) {
  Value others[] = {
      Value(), Value(true), Value(7), Value("text"), Value(rapidjson::kArrayType), Value(rapidjson::kObjectType)};
  constexpr uint32_t kCount = std::size(others);
  uint32_t at = random % kCount;
  const auto isSameKind = [&](const Value& other) {
    return other.GetType() == value.GetType() || (other.IsBool() && value.IsBool());
  };
  while (isSameKind(others[at])) at = (at + 1) % kCount;
  value = std::move(others[at]);
}

// One value of the answer, whichever, becomes one of another kind.
void GiveWrongKind(std::string& body, uint32_t random) {
  Document document;
  std::vector<Value*> values;
  if (::json::Parse(body, document)) CollectValues(document, values);
  if (values.empty()) return;
  const auto count = static_cast<uint32_t>(values.size());
  GiveOtherKind(*values[random % count], random / count);
  body = wire::Serialise(document);
}

void RemoveErrorCode(std::string& body) {
  Document document;
  if (!::json::Parse(body, document)) return;
  if (Value* const envelope = rapidjson::Pointer("/ResponseStatus").Get(document)) envelope->RemoveMember("ErrorCode");
  body = wire::Serialise(document);
}

void Spoil(HttpReply& reply, const FaultPlan::Hit& hit) {
  Materialise(reply);
  switch (hit.rule->fault) {
    case Fault::kDelay:
      reply.delay += hit.rule->time;
      break;
    case Fault::kDropAfter:
      reply.cut = 0;
      break;
    case Fault::kTruncate:
      reply.cut = 1 + hit.random % (static_cast<uint32_t>(reply.body.size()) + kHeadBytes);
      break;
    case Fault::kEmptyBody:
      reply.body.clear();
      break;
    case Fault::kMissingErrorCode:
      RemoveErrorCode(reply.body);
      break;
    case Fault::kWrongKinds:
      GiveWrongKind(reply.body, hit.random);
      break;
    default:
      break;
  }
}

}  // namespace

// A change stream whose events come twice, late, in part or not at all.
class FaultHandler::Events : public EventSource, public std::enable_shared_from_this<Events> {
 public:
  Events(std::shared_ptr<EventSource> inner, FaultPlan& plan, boost::asio::thread_pool& timers)
      : m_inner(std::move(inner)), m_plan(plan), m_timers(timers) {}

  bool Take(std::vector<Text>& events) override {
    if (m_ended) return false;
    if (m_silent && !m_wakeAt) return true;
    if (m_wakeAt && Clock::now() < *m_wakeAt) return true;
    m_wakeAt.reset();
    if (m_silent) return false;
    if (m_waiting.empty()) {
      std::vector<Text> fresh;
      if (!m_inner->Take(fresh)) return false;
      m_waiting.assign(fresh.begin(), fresh.end());
    }
    while (!m_waiting.empty() && Give(events)) {
    }
    return true;
  }
  bool HasMore() const override { return m_waiting.empty() && !m_wakeAt && !m_silent && m_inner->HasMore(); }
  bool KeepAlive() override { return m_inner->KeepAlive(); }
  bool IsSilent() const override { return m_silent; }
  void OnReady(std::function<void()> wake) override {
    m_wake = wake;
    m_inner->OnReady(std::move(wake));
  }

 private:
  // Gives the first waiting event, right or wrong; false when no other may follow it now.
  bool Give(std::vector<Text>& events) {
    const Text event = m_waiting.front();
    const bool isSpared = std::exchange(m_isLate, false) || IsNote(*event);
    const FaultPlan::Hit hit = isSpared ? FaultPlan::Hit() : m_plan.DrawChange();
    if (hit) Tell(*hit.rule, event->substr(0, event->find('\n')));
    if (hit && hit.rule->fault == Fault::kLateChange) {
      m_isLate = true;
      WakeAfter(hit.rule->time);
      return false;
    }
    if (hit && hit.rule->fault == Fault::kStallStream) {
      m_silent = true;
      if (hit.rule->time.count() > 0) WakeAfter(hit.rule->time);
      return false;
    }
    m_waiting.pop_front();
    if (hit && hit.rule->fault == Fault::kTruncateChange) {
      events.push_back(std::make_shared<std::string>(event->substr(0, 1 + hit.random % (event->size() - 1))));
      m_ended = true;
      return false;
    }
    events.push_back(event);
    if (m_again) events.push_back(std::exchange(m_again, nullptr));
    if (hit) events.push_back(m_again = event);  // kDuplicateChange: the other three have returned
    return true;
  }

  void WakeAfter(std::chrono::milliseconds time) {
    m_wakeAt = Clock::now() + time;
    auto timer = std::make_shared<boost::asio::steady_timer>(m_timers, *m_wakeAt);
    timer->async_wait([timer, weak = weak_from_this()](const boost::system::error_code& error) {
      if (error) return;
      if (const auto self = weak.lock()) self->m_wake();
    });
  }

  const std::shared_ptr<EventSource> m_inner;
  FaultPlan& m_plan;
  boost::asio::thread_pool& m_timers;
  std::function<void()> m_wake;
  std::deque<Text> m_waiting;  // taken from the site and not given yet
  Text m_again;                // comes once more after the next one
  std::optional<Clock::time_point> m_wakeAt;
  bool m_isLate = false;  // the first waiting event has been held back already
  bool m_silent = false;
  bool m_ended = false;
};

FaultHandler::FaultHandler(HttpHandler& inner, const std::string& planFile, OpenSession openSession)
    : m_inner(inner), m_plan(planFile), m_openSession(std::move(openSession)) {}

FaultHandler::~FaultHandler() {
  m_timers.stop();
  m_timers.join();
}

HttpReply FaultHandler::Handle(const HttpRequest& request) {
  const FaultPlan::Hit hit = m_plan.DrawExchange(request.method, BelowRoot(request.path));
  if (hit) Tell(*hit.rule, request.method + " " + request.path);
  if (hit && hit.rule->fault == Fault::kDropBefore) {
    HttpReply nothing;
    nothing.cut = 0;
    return nothing;
  }
  if (hit && hit.rule->fault == Fault::kColleagueEdit) EditAsColleague(hit);
  HttpReply reply = m_inner.Handle(request);
  if (hit && reply.pending) {
    reply.pending->Change([hit](HttpReply& given) { Spoil(given, hit); });
  } else if (hit) {
    Spoil(reply, hit);
  }
  if (reply.events && m_plan.HasChangeFaults()) {
    reply.events = std::make_shared<Events>(std::move(reply.events), m_plan, m_timers);
  }
  return reply;
}

void FaultHandler::EditAsColleague(const FaultPlan::Hit& hit) {
  const auto& colleague = hit.rule->colleague;
  HttpRequest request;
  request.method = colleague.method;
  request.path = std::string(kRoot) + colleague.path;
  request.body = colleague.body;
  request.token = m_openSession(colleague.user);
  const size_t hole = request.path.find('#');
  if (hole != std::string::npos) request.path.replace(hole, 1, hit.id);
  HttpReply reply = m_inner.Handle(request);
  if (reply.pending) reply = reply.pending->Wait();
  std::fprintf(stderr, "viewserver: the colleague's %s %s was answered %d\n", request.method.c_str(),
               request.path.c_str(), reply.status);
}

}  // namespace server
