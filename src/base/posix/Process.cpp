// SPDX-License-Identifier: Apache-2.0
#include "base/system/Process.h"

#include <sys/resource.h>

#include <cstdlib>

namespace base {

std::vector<const char*> Arguments(int count, char** arguments) {
  return {arguments, arguments + count};
}

std::optional<std::string> Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::uint64_t> RaiseOpenFiles() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return std::nullopt;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  getrlimit(RLIMIT_NOFILE, &limit);
  return limit.rlim_cur;
}

}  // namespace base
