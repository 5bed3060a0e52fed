// SPDX-License-Identifier: Apache-2.0
// The values of a row, each of the kind that it was written with. A damaged one throws Damage.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "server/documents/Json.h"
#include "server/documents/Requests.h"
#include "server/store/Database.h"
#include "server/store/Findings.h"

namespace server {

struct Damage {
  std::string what;  // "its name is not a text"
};

class SoundRow {
 public:
  explicit SoundRow(Query& row) : m_row(row) {}

  int64_t Int64(int column, const char* name, int64_t least, int64_t most) const {
    const int64_t value = m_row.Int64(column);
    if (!m_row.IsInteger(column) || value < least || value > most)
      throw Damage{std::string("its ") + name + " is no such number"};
    return value;
  }
  int32_t Int(int column, const char* name, int32_t least = std::numeric_limits<int32_t>::min()) const {
    return static_cast<int32_t>(Int64(column, name, least, std::numeric_limits<int32_t>::max()));
  }
  int32_t Id(int column) const { return Int(column, "id", 1); }
  std::string Text(int column, const char* name) const {
    std::string text = m_row.String(column);
    if (!m_row.IsText(column) || !wire::IsUtf8(text)) throw Damage{std::string("its ") + name + " is not a text"};
    return text;
  }
  std::string Name(int column) const {
    std::string name = Text(column, "name");
    if (!IsName(name)) throw Damage{"its name is not 1 to 256 characters without control characters"};
    return name;
  }

 private:
  Query& m_row;
};

// `use` gets each row; one whose damage it meets is a finding: "view 12 is left out: its name is not a text".
template <class Use>
void ForEachSoundRow(Query& rows, const char* kind, Findings& findings, const Use& use) {
  while (rows.Next()) {
    try {
      use(SoundRow(rows));
    } catch (const Damage& damage) {
      findings.Add(std::string(kind) + ' ' + std::to_string(rows.Int64(0)) + " is left out: " + damage.what);
    }
  }
}

}  // namespace server
