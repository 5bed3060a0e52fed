// SPDX-License-Identifier: Apache-2.0
// The option of commands that list: as a table, with more columns, or as JSON.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "host/Failure.h"
#include "host/commands/Checks.h"

namespace host {

enum class Format { kText, kWide, kJson };

struct FormatOptions {
  std::string word;
  bool json = false;

  Format Chosen() const {
    return json || word == "json" ? Format::kJson : word == "wide" ? Format::kWide : Format::kText;
  }
};

// `wide` says what is added.
inline void AddFormatOptions(CLI::App& command, FormatOptions& options, const std::string& wide) {
  command.add_option("-o", options.word, "wide: " + wide + "; json: as JSON")
      ->type_name("FORMAT")
      ->check(OneOf({"wide", "json"}));
  command.add_flag("--json", options.json, "as JSON");
}

inline void AddOutcomesAsJson(CLI::App& command, bool& json) {
  command.add_flag("--json", json, "each outcome, and the sum, as a JSON object");
}

inline void AddSumAsJson(CLI::App& command, bool& json) {
  command.add_flag("--json", json, "what was written, as a JSON object");
}

// Throws Failure kUsage where both would go to stdout.
inline void RequireStdoutForJson(bool json, const std::string& output) {
  if (json && output == "-") throw Failure(kUsage, "--json and -o - both write to stdout: name a file with -o");
}

}  // namespace host
