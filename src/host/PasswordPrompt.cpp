// SPDX-License-Identifier: Apache-2.0
#include "host/PasswordPrompt.h"

#include <cstdio>

#include "base/system/Console.h"
#include "host/Failure.h"

namespace host {

std::string AskForPassword(const std::string& question) {
  const std::optional<std::string> password = base::ReadUnseen(question + ": ");
  if (!password) throw Failure(kRefused, "No password can be asked for");
  std::fputc('\n', stderr);
  if (password->empty()) throw Failure(kUsage, "No password was given");
  return *password;
}

}  // namespace host
