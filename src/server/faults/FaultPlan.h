// SPDX-License-Identifier: Apache-2.0
// What shall go wrong: rules read from a file, and the dice that decide when. Any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "base/Mutex.h"

namespace server {

enum class Fault {
  // of an exchange
  kDelay,
  kDropBefore,
  kDropAfter,
  kTruncate,
  kEmptyBody,
  kMissingErrorCode,
  kWrongKinds,
  kColleagueEdit,
  // of an event on a change stream
  kDuplicateChange,
  kLateChange,
  kTruncateChange,
  kStallStream,
};

struct FaultRule {
  Fault fault = Fault::kDelay;
  std::string name;    // of the fault, as the file has it
  std::string method;  // empty: any
  std::string path;    // pattern below the root; empty: any
  double chance = 1;
  uint64_t skip = 0;   // so many that fit are left alone first
  uint64_t times = 0;  // then so many at most are hit; 0: no limit
  std::chrono::milliseconds time{0};
  struct {
    std::string user, method, path, body;
  } colleague;
};

class FaultPlan {
 public:
  // Throws std::runtime_error with one plain line that says what is wrong with the file.
  explicit FaultPlan(const std::string& file);

  struct Hit {
    const FaultRule* rule = nullptr;  // null: nothing goes wrong
    uint32_t random = 0;              // for whatever the fault has to pick
    std::string id;                   // what "#" of the rule's path stands for, or nothing
    explicit operator bool() const { return rule != nullptr; }
  };
  // Each rule that fits rolls its own dice, so that what one rule does depends on nothing but the seed and how many
  // exchanges, or events, fitted before. The first rule that hits counts.
  Hit DrawExchange(std::string_view method, std::string_view path);
  Hit DrawChange();
  bool HasChangeFaults() const;

 private:
  struct Dice {
    std::mt19937 random;
    uint64_t fitted = 0;
    uint64_t hits = 0;
  };
  bool Roll(size_t rule, Hit& hit) REQUIRES(m_mutex);

  std::vector<FaultRule> m_rules;
  base::Mutex m_mutex;  // leaf
  std::vector<Dice> m_dice GUARDED_BY(m_mutex);
};

// Whether `text` is what `pattern` says: "#" stands for a decimal number, which goes to `id`, "*" for any text.
bool FitsPattern(std::string_view pattern, std::string_view text, std::string& id);

}  // namespace server
