// SPDX-License-Identifier: Apache-2.0
// Shared libraries of this process, whichever system it has.
#pragma once

#include <string>

namespace test_libraries {

// Whether one is loaded whose file has that name, folders before it left out.
bool IsLoaded(const std::string& name);

}  // namespace test_libraries
