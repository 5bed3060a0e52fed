// SPDX-License-Identifier: Apache-2.0
// Measuring and telling. A suite is a function that prepares its data, measures rows and checks the results; every row
// ends in the one table that the program prints, every suite's samples in a JSON file of Google Benchmark's form.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Options {
  bool isShort = false;  // small sites and few samples: for results and growth, not for figures
  std::string outputFolder = ".";
  std::string filter;  // only suites whose name contains it
  // For a profiler: rows whose name contains it run for some seconds without their peers, all others not at all.
  std::string profile;
};
const Options& TheOptions();

// A result that is wrong: told at once, and the program fails at its end.
void Check(bool isRight, const std::string& whatIsWrong);

// What is asked of a row. Without a limit the row is there to be known.
struct Goal {
  double limit = 0;
  bool atLeast = false;
  // A ratio of sizes: the short run fails when it is far over its limit.
  bool isGrowth = false;
};

struct RowText {
  std::string name;
  std::string beside;     // what a ratio is a ratio to; empty for a plain figure
  const char* unit = "";  // of a plain figure
};

// What a side's time is.
enum class Watch {
  kThread,   // this thread's processor time, which other programs disturb least
  kProcess,  // all threads' processor time
  kWall,     // by the clock on the wall: both sides of a ratio need it, of one unit and with nothing after a run
};

// One side of a comparison. `run` is measured; `after`, where there is one, follows each run and is not.
struct Side {
  std::function<void()> run;
  std::function<void()> after = {};
  double units = 1;  // things done in one run: times are given for one of them
  Watch watch = Watch::kThread;
};

// Measures `side` against `peer`, turn and turn about, and adds the row of their ratio.
void AddRatio(const RowText& row, const Goal& goal, const Side& side, const Side& peer);
// Measures a side alone and keeps its times under `key`, for the next two.
void Measure(const std::string& key, const Side& side);
// The row of the time kept under `key` beside the one under `baseKey`.
void AddRatioOfTimes(const RowText& row, const Goal& goal, const std::string& key, const std::string& baseKey);
// Keys of the least that does the same to the memory of sites of these sizes.
struct Yardstick {
  std::string key, baseKey;
};
// The same where both are of one thing in sites of different sizes. A limit of 0 is none. The short run fails by what
// is steeper than the yardstick in that run: how much of a larger site the caches hold is the machine's affair.
void AddGrowth(const RowText& row, double limit, const std::string& key, const std::string& baseKey,
               const Yardstick& yardstick = {});
// The median of the times kept under `key`, in nanoseconds; 0 where there are none.
double MedianTime(const std::string& key);
// A time as the table tells it; empty for 0.
std::string TimeText(double ns);
// Adds a plain figure, sampled `samples` times.
void AddFigure(const RowText& row, const Goal& goal, int samples, const std::function<double()>& figure);

using Suite = void (*)();
// Runs a suite unless the filter leaves it out.
void RunSuite(const char* name, Suite suite);

// Prints the table. The program's exit code: 1 when a result was wrong or, in a short run, growth too steep.
int PrintTable();

// Keeps a value from being optimised away.
void Use(const void* value);

}  // namespace bench
