// SPDX-License-Identifier: Apache-2.0
// qorvi_load LIBRARY (init|all): prints the milliseconds of InitEnvir, or of loading and InitEnvir, in a fresh process.
// qorvi_load LIBRARY... : those of loading these libraries, one after another.
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <cstring>

namespace {

using Clock = std::chrono::steady_clock;

int Print(Clock::duration time) {
  std::printf("%f\n", std::chrono::duration<double, std::milli>(time).count());
  return 0;
}

void* Load(const char* file) {
  void* const library = dlopen(file, RTLD_NOW);
  if (!library) std::fprintf(stderr, "%s\n", dlerror());
  return library;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const bool isAll = argc == 3 && std::strcmp(argv[2], "all") == 0;
  const bool isInit = argc == 3 && std::strcmp(argv[2], "init") == 0;
  const auto begin = Clock::now();
  for (int n = 1; n < (isAll || isInit ? 2 : argc); ++n) {
    if (!Load(argv[n])) return 1;
  }
  const auto loaded = Clock::now();
  if (!isAll && !isInit) return Print(loaded - begin);
  const auto initEnvir = reinterpret_cast<bool (*)()>(dlsym(Load(argv[1]), "InitEnvir"));
  if (!initEnvir || !initEnvir()) return 1;
  return Print(Clock::now() - (isAll ? begin : loaded));
}
