// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace host {

// The lines that `viewctl script` understands.
struct CallLine {
  std::string function;
  std::string request;   // a string's content, any other value's text without blanks, empty when absent
  std::string response;  // what the response text holds before the call
};
struct LoadLine {};
struct ObserveLine {
  std::string request;  // the object without blanks, with "IsRegister" as its last member
};
struct SettleLine {
  int milliseconds = 0;
};
struct WrongLine {
  std::string reason;
};
using ScriptLine = std::variant<CallLine, LoadLine, ObserveLine, SettleLine, WrongLine>;

// Of members with the same name the first counts. A member that a line of its kind does not have makes it a wrong one.
ScriptLine ParseScriptLine(std::string_view text);

}  // namespace host
