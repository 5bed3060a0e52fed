// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace host {

// The options that every command takes. Empty means "not given" unless a default is named.
struct GlobalOptions {
  std::string server;   // root URL; empty: an embedded server
  std::string caFile;   // CA certificates for an https server
  std::string dataDir;  // folder of the embedded server's store; empty: below the user's data directory
  std::string user = "admin";
  std::string passwordFile;  // first line is the password; empty: VIEWCTL_PASSWORD
  std::string plugin;        // the library to load; empty: the one beside the program
  std::string logFile;
  int timeout = 10;  // seconds that the first load may take
  bool verbose = false;
};

}  // namespace host
