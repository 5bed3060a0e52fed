// SPDX-License-Identifier: Apache-2.0
// What is wrong with a request before it is sent: the library takes any, and uses the defaults for what it cannot read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// One line for each fault, with its place in the request; empty where there is none. An empty request asks with all
// defaults, so it has none, but for an exchange that would empty a view by it. Not checked: what the server decides.
std::vector<std::string> FaultsOf(std::string_view exchange, const std::string& request);

std::vector<std::string> ExchangeNames();

// Whether the exchange changes something on the server.
bool IsEdit(std::string_view exchange);

}  // namespace host
