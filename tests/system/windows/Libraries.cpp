// SPDX-License-Identifier: Apache-2.0
#include "system/Libraries.h"

#include <windows.h>

namespace test_libraries {

bool IsLoaded(const std::string& name) {
  return GetModuleHandleA(name.c_str()) != nullptr;
}

}  // namespace test_libraries
