// SPDX-License-Identifier: Apache-2.0
// How output looks, for the whole program.
#pragma once

#include <string>

namespace host {

struct Look {
  bool isAscii = false;  // what viewctl draws itself; names stay as they are
  bool isQuiet = false;  // only what was asked for, and what went wrong
};

// To be set before anything is said; one thread.
void SetLook(const Look& look);
bool IsAscii();
bool IsQuiet();

// One line to stderr that is not missed under --quiet.
void Mention(const std::string& line);

enum class Style { kHead, kFolder, kBad, kLeft };

// The text in that style where stdout, or stderr, is a terminal with colours and NO_COLOR is not set; else as it is.
std::string StyledOut(Style style, const std::string& text);
std::string StyledErr(Style style, const std::string& text);

// The rest of a text that was cut.
const char* Ellipsis();

}  // namespace host
