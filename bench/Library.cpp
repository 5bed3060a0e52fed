// SPDX-License-Identifier: Apache-2.0
// The library's file, and how long it takes to load. In a process of its own, so that what it needs is loaded too.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "Report.h"
#include "Suites.h"

namespace bench {

namespace {

double RunAndRead(const std::string& command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> child(popen(command.c_str(), "r"), pclose);
  double value = 0;
  if (!child || std::fscanf(child.get(), "%lf", &value) != 1) throw std::runtime_error("failed: " + command);
  return value;
}

}  // namespace

void LibrarySuite() {
  const std::string stripped = TheOptions().outputFolder + "/stripped.so";
  const std::string strip = std::string(STRIP_PROGRAM) + " --strip-unneeded -o '" + stripped + "' '" + PLUGIN_LIBRARY +
                            "' && stat -c %s '" + stripped + "'";
  AddFigure({"library, stripped", "", "MB"}, {2}, 1, [&] { return RunAndRead(strip) / 1e6; });
  std::filesystem::remove(stripped);
  const std::string load = std::string("'") + LOAD_PROGRAM + "' '" + PLUGIN_LIBRARY + "' ";
  const int samples = TheOptions().isShort ? 3 : 15;
  AddFigure({"InitEnvir after load", "", "ms"}, {5}, samples, [&] { return RunAndRead(load + "init"); });
  AddFigure({"load and InitEnvir, everything it links included", "", "ms"}, {}, samples,
            [&] { return RunAndRead(load + "all"); });
  AddFigure({"the same, beside loading only what it links", "", ""}, {}, samples, [&] {
    return RunAndRead(load + "all") / RunAndRead(std::string("'") + LOAD_PROGRAM + "' " + PLUGIN_LINKS);
  });
}

}  // namespace bench
