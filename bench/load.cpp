// SPDX-License-Identifier: Apache-2.0
// qorvi_load LIBRARY (init|all): prints the milliseconds of InitEnvir, or of loading and InitEnvir, in a fresh process.
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
  using Clock = std::chrono::steady_clock;
  if (argc != 3) return 2;
  const auto begin = Clock::now();
  void* const library = dlopen(argv[1], RTLD_NOW);
  const auto loaded = Clock::now();
  if (!library) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  const auto initEnvir = reinterpret_cast<bool (*)()>(dlsym(library, "InitEnvir"));
  if (!initEnvir || !initEnvir()) return 1;
  const auto end = Clock::now();
  const auto from = std::strcmp(argv[2], "all") == 0 ? begin : loaded;
  std::printf("%f\n", std::chrono::duration<double, std::milli>(end - from).count());
  return 0;
}
