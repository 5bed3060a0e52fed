// SPDX-License-Identifier: Apache-2.0
#include "host/InputFile.h"

#include <fstream>
#include <iostream>
#include <iterator>

#include "base/system/Files.h"
#include "host/Failure.h"

namespace host {

std::string ReadInput(const std::string& name) {
  std::ifstream file;
  if (name != "-") file.open(base::PathOf(name), std::ios::binary);
  std::istream& stream = name == "-" ? std::cin : file;
  std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  const bool isRead = !stream.bad() && (name == "-" || file.is_open());
  if (!isRead) throw Failure(kUsage, "The file " + name + " cannot be read: is it there, and yours to read?");
  return text;
}

}  // namespace host
