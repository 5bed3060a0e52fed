// SPDX-License-Identifier: Apache-2.0
#include "server/faults/FaultPlan.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "server/documents/Json.h"

namespace server {

namespace {

using rapidjson::Value;

constexpr int32_t kLongestTime = 3600 * 1000;

enum class Time { kNone, kMayBe, kMust };

struct FaultKind {
  const char* name;
  Fault fault;
  Time time;
};

constexpr FaultKind kKinds[] = {
    {"Delay", Fault::kDelay, Time::kMust},
    {"DropBefore", Fault::kDropBefore, Time::kNone},
    {"DropAfter", Fault::kDropAfter, Time::kNone},
    {"Truncate", Fault::kTruncate, Time::kNone},
    {"EmptyBody", Fault::kEmptyBody, Time::kNone},
    {"MissingErrorCode", Fault::kMissingErrorCode, Time::kNone},
    {"WrongKinds", Fault::kWrongKinds, Time::kNone},
    {"ColleagueEdit", Fault::kColleagueEdit, Time::kNone},
    {"DuplicateChange", Fault::kDuplicateChange, Time::kNone},
    {"LateChange", Fault::kLateChange, Time::kMust},
    {"TruncateChange", Fault::kTruncateChange, Time::kNone},
    {"StallStream", Fault::kStallStream, Time::kMayBe},
};

bool ConcernsEvents(const FaultRule& rule) {
  return rule.fault >= Fault::kDuplicateChange;
}

void CheckMembers(const Value& object, std::initializer_list<std::string_view> known) {
  if (!object.IsObject()) throw std::runtime_error("not an object");
  for (const auto& member : object.GetObject()) {
    const std::string_view name(member.name.GetString(), member.name.GetStringLength());
    if (std::find(known.begin(), known.end(), name) == known.end()) {
      throw std::runtime_error("there is no member \"" + std::string(name) + "\"");
    }
  }
}

int32_t Number(const Value& object, const char* key, int32_t absent, int32_t least, int32_t most) {
  const Value* member = wire::Find(object, key);
  if (member == nullptr) return absent;
  if (!member->IsInt() || member->GetInt() < least || member->GetInt() > most) {
    throw std::runtime_error(std::string(key) + " is not a number from " + std::to_string(least) + " to " +
                             std::to_string(most));
  }
  return member->GetInt();
}

std::string TextOf(const Value& object, const char* key) {
  const Value* member = wire::Find(object, key);
  if (member == nullptr) return {};
  if (!member->IsString()) throw std::runtime_error(std::string(key) + " is not a text");
  return {member->GetString(), member->GetStringLength()};
}

double Chance(const Value& rule) {
  const Value* member = wire::Find(rule, "Chance");
  if (member == nullptr) return 1;
  if (!member->IsNumber() || !(member->GetDouble() >= 0 && member->GetDouble() <= 1)) {
    throw std::runtime_error("Chance is not a number from 0 to 1");
  }
  return member->GetDouble();
}

const FaultKind& KindOf(const std::string& name) {
  for (const FaultKind& kind : kKinds) {
    if (kind.name == name) return kind;
  }
  throw std::runtime_error(name.empty() ? "Fault is missing" : "there is no fault \"" + name + "\"");
}

void ReadColleague(const Value& value, FaultRule& rule) {
  const Value* colleague = wire::Find(value, "Colleague");
  if ((colleague != nullptr) != (rule.fault == Fault::kColleagueEdit)) {
    throw std::runtime_error("Colleague goes with ColleagueEdit, and only with it");
  }
  if (colleague == nullptr) return;
  CheckMembers(*colleague, {"User", "Method", "Path", "Body"});
  rule.colleague.user = TextOf(*colleague, "User");
  rule.colleague.method = TextOf(*colleague, "Method");
  rule.colleague.path = TextOf(*colleague, "Path");
  if (rule.colleague.user.empty() || rule.colleague.method.empty() || rule.colleague.path.empty()) {
    throw std::runtime_error("Colleague needs User, Method and Path");
  }
  if (const Value* body = wire::Find(*colleague, "Body")) rule.colleague.body = wire::Serialise(*body);
}

FaultRule ReadRule(const Value& value) {
  CheckMembers(value, {"Fault", "Method", "Path", "Chance", "Skip", "Times", "Milliseconds", "Colleague"});
  FaultRule rule;
  rule.name = TextOf(value, "Fault");
  const FaultKind& kind = KindOf(rule.name);
  rule.fault = kind.fault;
  rule.method = TextOf(value, "Method");
  rule.path = TextOf(value, "Path");
  if (ConcernsEvents(rule) && !(rule.method.empty() && rule.path.empty())) {
    throw std::runtime_error(rule.name + " concerns the events of change streams: it has no Method and no Path");
  }
  rule.chance = Chance(value);
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  rule.skip = static_cast<uint64_t>(Number(value, "Skip", 0, 0, kMost));
  rule.times = static_cast<uint64_t>(Number(value, "Times", 0, 1, kMost));
  rule.time = std::chrono::milliseconds(Number(value, "Milliseconds", 0, 1, kLongestTime));
  if (kind.time == Time::kMust && rule.time.count() == 0) throw std::runtime_error(rule.name + " needs Milliseconds");
  if (kind.time == Time::kNone && rule.time.count() != 0) throw std::runtime_error(rule.name + " has no Milliseconds");
  ReadColleague(value, rule);
  return rule;
}

}  // namespace

bool FitsPattern(std::string_view pattern, std::string_view text, std::string& id) {
  if (pattern.empty()) return text.empty();
  if (pattern[0] == '*') {
    for (size_t taken = 0; taken <= text.size(); ++taken) {
      if (FitsPattern(pattern.substr(1), text.substr(taken), id)) return true;
    }
    return false;
  }
  if (pattern[0] == '#') {
    const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    if (digits == 0 || !FitsPattern(pattern.substr(1), text.substr(digits), id)) return false;
    id = text.substr(0, digits);
    return true;
  }
  return !text.empty() && pattern[0] == text[0] && FitsPattern(pattern.substr(1), text.substr(1), id);
}

FaultPlan::FaultPlan(const std::string& file) {
  const rapidjson::Document document = wire::ReadFile("fault plan " + file, file);
  std::string place;
  try {
    CheckMembers(document, {"Seed", "Rules"});
    const auto seed = static_cast<uint32_t>(Number(document, "Seed", 0, 0, std::numeric_limits<int32_t>::max()));
    const Value* rules = wire::Find(document, "Rules");
    if (rules == nullptr || !rules->IsArray()) throw std::runtime_error("Rules is not a list");
    for (const Value& rule : rules->GetArray()) {
      const auto at = static_cast<uint32_t>(m_rules.size());
      place = "Rules[" + std::to_string(at) + "]: ";
      m_rules.push_back(ReadRule(rule));
      std::seed_seq sequence{seed, at};
      m_dice.push_back({std::mt19937(sequence), 0, 0});
    }
  } catch (const std::runtime_error& e) {
    throw std::runtime_error("fault plan " + file + ": " + place + e.what());
  }
}

bool FaultPlan::Roll(size_t at, Hit& hit) {
  const FaultRule& rule = m_rules[at];
  Dice& dice = m_dice[at];
  // Rolled whether or not they count, so that each exchange that fits takes the same two.
  const uint32_t chance = dice.random();
  const uint32_t pick = dice.random();
  if (dice.fitted++ < rule.skip || (rule.times != 0 && dice.hits >= rule.times)) return false;
  if (chance >= rule.chance * 4294967296.0) return false;
  ++dice.hits;
  if (hit) return true;
  hit.rule = &rule;
  hit.random = pick;
  return true;
}

FaultPlan::Hit FaultPlan::DrawExchange(std::string_view method, std::string_view path) {
  Hit hit;
  const base::MutexLock lock(m_mutex);
  for (size_t at = 0; at < m_rules.size(); ++at) {
    const FaultRule& rule = m_rules[at];
    std::string id;
    if (ConcernsEvents(rule) || (!rule.method.empty() && rule.method != method)) continue;
    if (!rule.path.empty() && !FitsPattern(rule.path, path, id)) continue;
    const bool isFirst = !hit;
    if (Roll(at, hit) && isFirst) hit.id = id;
  }
  return hit;
}

FaultPlan::Hit FaultPlan::DrawChange() {
  Hit hit;
  const base::MutexLock lock(m_mutex);
  for (size_t at = 0; at < m_rules.size(); ++at) {
    if (ConcernsEvents(m_rules[at])) Roll(at, hit);
  }
  return hit;
}

bool FaultPlan::HasChangeFaults() const {
  return std::any_of(m_rules.begin(), m_rules.end(), ConcernsEvents);
}

}  // namespace server
