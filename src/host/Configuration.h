// SPDX-License-Identifier: Apache-2.0
// The user's file of named servers:
//
//   default = site
//
//   [site]
//   url = https://site:8090
//   user = maria
//   ca-file = site.pem
//   password-command = secret-tool lookup server site
//
// Lines that begin with # say nothing. Relative names of files count from the file's folder.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace host {

struct NamedServer {
  std::string url;
  std::string user;
  std::string caFile;
  std::string passwordCommand;  // what it prints first is the password
};

struct Configuration {
  std::string file;         // where it is, or would be
  std::string defaultName;  // empty: the own server
  std::map<std::string, NamedServer> servers;
};

// In VIEWCTL_CONFIG, else "viewctl/config" in the user's folder of configurations.
std::string ConfigurationFile();
// Empty where there is no such file. Throws Failure kUsage, naming the line, when it cannot be read.
Configuration ReadConfiguration(const std::string& file);
Configuration ParseConfiguration(const std::string& file, std::string_view text);

}  // namespace host
