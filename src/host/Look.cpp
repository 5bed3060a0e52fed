// SPDX-License-Identifier: Apache-2.0
#include "host/Look.h"

#include <QtGlobal>

#include "base/system/Console.h"
#include "host/Terminal.h"

namespace host {
namespace {

Look g_look;

bool WantsColours(base::Stream stream) {
  return qEnvironmentVariableIsEmpty("NO_COLOR") && base::HasColours(stream);
}

std::string Styled(Style style, const std::string& text) {
  constexpr const char* kCodes[] = {"1", "1;34", "31", "33"};
  return "\033[" + std::string(kCodes[static_cast<int>(style)]) + "m" + text + "\033[0m";
}

}  // namespace

void SetLook(const Look& look) {
  g_look = look;
}

bool IsAscii() {
  return g_look.isAscii;
}

bool IsQuiet() {
  return g_look.isQuiet;
}

void Mention(const std::string& line) {
  if (!IsQuiet()) Say(line);
}

std::string StyledOut(Style style, const std::string& text) {
  return IsTerminalOut() && WantsColours(base::Stream::kOut) ? Styled(style, text) : text;
}

std::string StyledErr(Style style, const std::string& text) {
  return IsTerminalErr() && WantsColours(base::Stream::kErr) ? Styled(style, text) : text;
}

const char* Ellipsis() {
  return IsAscii() ? "..." : "…";
}

}  // namespace host
