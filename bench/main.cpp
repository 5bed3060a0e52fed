// SPDX-License-Identifier: Apache-2.0
// qorvi_bench [--short] [--out FOLDER] [--filter SUITE] [--profile ROW]
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "Report.h"
#include "Scale.h"
#include "Suites.h"

namespace bench {

namespace {

Options s_options;

}  // namespace

const Options& TheOptions() {
  return s_options;
}

namespace {

int Run(int argc, char** argv) {
  for (int n = 1; n < argc; ++n) {
    if (std::strcmp(argv[n], "--memory-child") == 0) return RunMemoryChild();
    if (std::strcmp(argv[n], "--short") == 0) {
      s_options.isShort = true;
    } else if (std::strcmp(argv[n], "--out") == 0 && n + 1 < argc) {
      s_options.outputFolder = argv[++n];
    } else if (std::strcmp(argv[n], "--filter") == 0 && n + 1 < argc) {
      s_options.filter = argv[++n];
    } else if (std::strcmp(argv[n], "--profile") == 0 && n + 1 < argc) {
      s_options.profile = argv[++n];
    } else {
      std::fprintf(stderr, "usage: qorvi_bench [--short] [--out FOLDER] [--filter SUITE] [--profile ROW]\n");
      return 2;
    }
  }
  int count = 1;
  benchmark::Initialize(&count, argv);
  RunSuite("library", LibrarySuite);  // before anything else has made this process large
  RunSuite("memory", MemorySuite);
  RunSuite("first-load", FirstLoadSuite);
  RunSuite("paths", PathsSuite);
  RunSuite("answers", AnswersSuite);
  RunSuite("growth", GrowthSuite);
  RunSuite("server", ServerSuite);
  const int code = PrintTable();
  if (!TellScale(s_options.outputFolder + "/scale.svg")) {
    std::fprintf(stderr, "bench: scale.svg could not be written\n");
    return 1;
  }
  return code;
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  try {
    return bench::Run(argc, argv);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "bench: %s\n", e.what());
    return 1;
  }
}
