// SPDX-License-Identifier: Apache-2.0
#include "system/Libraries.h"

#include <fstream>
#include <stdexcept>

namespace test_libraries {

bool IsLoaded(const std::string& name) {
  std::ifstream maps("/proc/self/maps");
  if (!maps) throw std::runtime_error("/proc/self/maps cannot be read");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("/" + name) != std::string::npos) return true;
  }
  return false;
}

}  // namespace test_libraries
