// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace host {

// The whole content of a file; "-" is standard input. Throws Failure kUsage when it cannot be read.
std::string ReadInput(const std::string& name);

}  // namespace host
