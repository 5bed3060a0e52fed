// SPDX-License-Identifier: Apache-2.0
// The three streams of a program and the terminal that may be behind them.
#pragma once

#include <optional>
#include <string>

namespace base {

enum class Stream { kIn, kOut, kErr };

// A program's first act on Windows, and nothing elsewhere: what it writes is shown as the UTF-8 that it is, with the
// escape sequences that terminals know, and no line end is changed on its way.
void PrepareStreams();

bool IsTerminal(Stream stream);
// How wide the terminal is; 0 where there is none, or it does not say.
int ColumnsOf(Stream stream);
// Whether a terminal, if there is one, shows colours.
bool HasColours(Stream stream);

// Asks on stderr for one line, which is not shown while it is typed; what was typed before is thrown away. Empty after
// Ctrl-C, which ends nothing else. Nothing where that cannot be done. REQUIRES: stdin is a terminal.
std::optional<std::string> ReadUnseen(const std::string& question);

}  // namespace base
