// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace host {

// The manual page of viewctl itself, or of one of its commands, in the language of man; from what --help says.
std::string ManPageOf(const CLI::App& app);
std::string ManPageOf(const CLI::App& app, const CLI::App& command);

}  // namespace host
