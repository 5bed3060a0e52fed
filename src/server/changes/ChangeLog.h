// SPDX-License-Identifier: Apache-2.0
// The numbered changes that clients may still ask for, and which history of the store their numbers belong to. None of
// it is thread-safe: the owner locks, and opens the transaction.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "server/changes/Change.h"
#include "server/store/Database.h"

namespace server {

// Which changes are kept.
struct LogRange {
  int64_t oldest = 1;  // last + 1 where none is
  int64_t last = 0;    // 0 before the first change
  int64_t bytes = 0;   // that they hold, each document once

  // Whether everything after change `number` is still here (and `number` was ever given).
  bool Reaches(int64_t number) const { return number >= oldest - 1 && number <= last; }
};

struct LogLimits {
  uint64_t changes = 100000;
  uint64_t bytes = uint64_t{256} << 20;  // of documents and what is said of them; the last change is kept all the same
};

// Writes the log.
class ChangeLog {
 public:
  ChangeLog(Database& database, const LogLimits& limits);

  const LogRange& Range() const { return m_range; }
  // Back to what it was, where the changes since are undone.
  void Reset(const LogRange& range) { m_range = range; }

  // REQUIRES: it has the number after the last one.
  void Append(const Change& change);
  // Drops what is over the limits; much of it in several transactions, lest one takes long.
  void Trim();

 private:
  bool HasChangeWith(int64_t documentId);
  void Trim(int64_t upTo);
  void CountLater(int64_t upTo);
  int64_t FirstToKeep();

  Database& m_database;
  const int64_t m_maxChanges, m_maxBytes;
  LogRange m_range;
  int64_t m_appended = 0;  // since it was trimmed
};

// A part of the log, as one listener may read it.
struct ChangePiece {
  std::vector<Change> changes;  // what the listener hears of, in order
  int64_t upTo = 0;             // the last change that was looked at
};
// The document of a view where it is at hand, null where it is not.
using DocumentAtHand = std::function<Text(int32_t viewId, int64_t documentId)>;
// Whether nothing is damaged in what listeners are told of it.
bool IsSound(const Change& change);
// Reads on after `after`, up to change `last` or so far that others need not wait long. What the listener does not hear
// of is not read but for its audience.
ChangePiece ReadChangePiece(Database& database, int32_t listener, int64_t after, int64_t last,
                            const DocumentAtHand& atHand);

// Each start of a server begins an epoch with a name of its own. A copy of the store that is put back in its place does
// not know the epochs since, and where it has gone on by itself it knows where: so numbers of the one history are not
// taken for the other's.
class Epochs {
 public:
  // Begins one. Waits for another process that is writing.
  Epochs(Database& database, int64_t lastChange);

  const std::string& Current() const { return m_epochs.back().id; }
  // Whether that change was the store's last, or was behind it, at some moment of that epoch.
  bool Holds(const std::string& epoch, int64_t number, int64_t lastChange) const;

 private:
  struct Epoch {
    std::string id;
    int64_t firstChange;
  };
  void Add(Query& row, int64_t lastChange);

  std::vector<Epoch> m_epochs;  // ascending
};

}  // namespace server
