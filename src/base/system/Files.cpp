// SPDX-License-Identifier: Apache-2.0
#include "base/system/Files.h"

namespace base {

// A path of narrow characters would be taken for one of the locale's on Windows.
std::filesystem::path PathOf(const std::string& name) {
  return std::u8string(name.begin(), name.end());
}

std::string NameOf(const std::filesystem::path& path) {
  const std::u8string name = path.u8string();
  return {name.begin(), name.end()};
}

}  // namespace base
