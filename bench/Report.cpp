// SPDX-License-Identifier: Apache-2.0
#include "Report.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <map>
#include <memory>
#include <tuple>
#include <utility>

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

double Now(Watch watch) {
  constexpr clockid_t kClocks[] = {CLOCK_THREAD_CPUTIME_ID, CLOCK_PROCESS_CPUTIME_ID, CLOCK_MONOTONIC};
  timespec time{};
  clock_gettime(kClocks[static_cast<int>(watch)], &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// In the short run a growth row may exceed its limit by this factor: what it is to find is many times dearer.
constexpr double kShortRunTolerance = 2;

struct Row {
  RowText text;
  Goal goal;
  double value = 0, low = 0, high = 0;  // median and quartiles
  double sideTime = 0, peerTime = 0;    // ns of one thing; 0: not measured
  double undisturbed = 0;               // of growth: the ratio of the lowest times, which other programs change least
};

std::vector<Row> s_rows;
std::map<std::string, std::vector<double>> s_times;
int s_wrongResults = 0;
std::string s_suite;

double Quantile(std::vector<double> values, double share) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const double place = share * static_cast<double>(values.size() - 1);
  const auto below = static_cast<size_t>(place);
  const size_t above = std::min(below + 1, values.size() - 1);
  return values[below] + (place - static_cast<double>(below)) * (values[above] - values[below]);
}

// Hands everything on to Google Benchmark's JSON form and keeps its console silent. One document for all benchmarks of
// a suite, though each is a run of its own.
class SuiteReporter : public benchmark::BenchmarkReporter {
 public:
  explicit SuiteReporter(const std::string& file) : m_file(file) {
    m_json.SetOutputStream(&m_file);
    m_json.SetErrorStream(&m_file);
  }
  ~SuiteReporter() override {
    if (m_hasBegun) m_json.Finalize();
  }
  bool ReportContext(const Context& context) override {
    if (m_hasBegun) return true;
    m_hasBegun = true;
    return m_json.ReportContext(context);
  }
  void ReportRuns(const std::vector<Run>& runs) override { m_json.ReportRuns(runs); }

 private:
  std::ofstream m_file;
  benchmark::JSONReporter m_json;
  bool m_hasBegun = false;
};

std::unique_ptr<SuiteReporter> s_reporter;

// Runs one benchmark now, each repetition one iteration; `sample` answers seconds and sets counters.
void RunNow(const std::string& name, int repetitions, const std::function<double(benchmark::State&)>& sample) {
  benchmark::ClearRegisteredBenchmarks();
  benchmark::RegisterBenchmark((s_suite + "/" + name).c_str(),
                               [&sample](benchmark::State& state) {
                                 for (auto _ : state) state.SetIterationTime(sample(state));
                               })
      ->Iterations(1)
      ->Repetitions(repetitions)
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond);
  std::fprintf(stderr, "bench: %s/%s\n", s_suite.c_str(), name.c_str());
  benchmark::RunSpecifiedBenchmarks(s_reporter.get());
}

// A side that is run as often as a sample of reasonable length needs.
class Sampler {
 public:
  explicit Sampler(const Side& side) : m_side(side) {}

  // Nanoseconds for one thing.
  double Sample() {
    if (m_count == 0) Calibrate();
    return Seconds(m_count) * 1e9 / (static_cast<double>(m_count) * m_side.units);
  }
  bool IsLong() const { return m_isLong; }
  void Calibrate() {
    const double wanted = TheOptions().isShort ? 0.004 : 0.03;
    const double first = Seconds(1);
    m_isLong = first > 0.1;
    const double second = m_isLong ? first : std::min(first, Seconds(1));
    m_count = static_cast<size_t>(std::clamp(wanted / std::max(second, 1e-9), 1.0, 1e6));
  }

 private:
  double Seconds(size_t count) {
    const Watch watch = m_side.watch;
    if (!m_side.after) {
      const double begin = Now(watch);
      for (size_t n = 0; n < count; ++n) m_side.run();
      return Now(watch) - begin;
    }
    double total = 0;
    for (size_t n = 0; n < count; ++n) {
      const double begin = Now(watch);
      m_side.run();
      total += Now(watch) - begin;
      m_side.after();
    }
    return total;
  }

  const Side& m_side;
  size_t m_count = 0;
  bool m_isLong = false;
};

// Nanoseconds of one run of each, taken by the wall clock: the medians of runs turn and turn about, so that a run
// during which the machine did something else does not count.
std::pair<double, double> SampleByWallClock(const Side& side, const Side& peer) {
  const size_t runs = TheOptions().isShort ? 11 : 75;
  std::vector<double> times, peerTimes;
  const auto timed = [](const Side& one) {
    const double begin = Now(Watch::kWall);
    one.run();
    return (Now(Watch::kWall) - begin) * 1e9;
  };
  for (size_t n = 0; n < runs; ++n) {
    times.push_back(timed(side));
    peerTimes.push_back(timed(peer));
  }
  return {Quantile(times, 0.5), Quantile(peerTimes, 0.5)};
}

// Whether this run is for a profiler; a side that it asks for has been run then.
bool IsProfiled(const std::string& name, const Side& side) {
  const std::string& wanted = TheOptions().profile;
  if (wanted.empty()) return false;
  if (name.find(wanted) == std::string::npos) return true;
  std::fprintf(stderr, "bench: running %s\n", name.c_str());
  const auto end = Clock::now() + std::chrono::seconds(4);
  while (Clock::now() < end) {
    side.run();
    if (side.after) side.after();
  }
  return true;
}

int Repetitions(bool isLong) {
  if (TheOptions().isShort) return 5;
  return isLong ? 9 : 21;
}

void AddRow(Row row, const std::vector<double>& values) {
  row.value = Quantile(values, 0.5);
  row.low = Quantile(values, 0.25);
  row.high = Quantile(values, 0.75);
  s_rows.push_back(std::move(row));
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, value >= 100 ? "%.0f" : "%.2f", value);
  return text;
}

bool IsMet(const Row& row) {
  return row.goal.atLeast ? row.value >= row.goal.limit : row.value <= row.goal.limit;
}

// The lower of both ratios: a single time that came out too low or too high makes one of them steep.
double Steepness(const Row& row) {
  return std::min(row.value, row.undisturbed);
}

bool IsTooSteep(const Row& row) {
  return row.goal.isGrowth && Steepness(row) > row.goal.limit * kShortRunTolerance;
}

// As Markdown, so that it goes into the documentation as it is printed.
void PrintRow(std::FILE* out, const std::vector<std::string>& cells) {
  static constexpr int kWidths[] = {58, 32, 11, 11, 12, 13, 10, 3};
  for (size_t n = 0; n < cells.size(); ++n) std::fprintf(out, "| %-*s ", kWidths[n], cells[n].c_str());
  std::fprintf(out, "|\n");
}

void PrintRows(std::FILE* out) {
  PrintRow(out, {"case", "beside", "time", "its time", "median", "quartiles", "goal", "met"});
  PrintRow(out, {"---", "---", "--:", "--:", "--:", "--:", "--:", "---"});
  for (const Row& row : s_rows) {
    const bool hasGoal = row.goal.limit > 0;
    const std::string unit = *row.text.unit ? std::string(" ") + row.text.unit : "";
    PrintRow(out, {row.text.name, row.text.beside, TimeText(row.sideTime), TimeText(row.peerTime),
                   Number(row.value) + unit, Number(row.low) + "-" + Number(row.high),
                   hasGoal ? (row.goal.atLeast ? ">= " : "<= ") + Number(row.goal.limit) : "",
                   !hasGoal     ? ""
                   : IsMet(row) ? "yes"
                                : "NO"});
  }
}

}  // namespace

void Check(bool isRight, const std::string& whatIsWrong) {
  if (isRight) return;
  ++s_wrongResults;
  std::fprintf(stderr, "bench: WRONG RESULT: %s\n", whatIsWrong.c_str());
}

void Use(const void* value) {
  benchmark::DoNotOptimize(value);
  benchmark::ClobberMemory();
}

void AddRatio(const RowText& row, const Goal& goal, const Side& side, const Side& peer) {
  if (IsProfiled(row.name, side)) return;
  Sampler ours(side), theirs(peer);
  theirs.Calibrate();
  ours.Calibrate();
  std::vector<double> ratios, sideTimes, peerTimes;
  RunNow(row.name + " : " + row.beside, Repetitions(ours.IsLong() || theirs.IsLong()), [&](benchmark::State& state) {
    const bool oursFirst = ratios.size() % 2 == 0;
    double sideTime = 0, peerTime = 0;
    if (side.watch == Watch::kWall) {
      std::tie(sideTime, peerTime) = SampleByWallClock(side, peer);
    } else {
      if (oursFirst) sideTime = ours.Sample();
      peerTime = theirs.Sample();
      if (!oursFirst) sideTime = ours.Sample();
    }
    sideTimes.push_back(sideTime);
    peerTimes.push_back(peerTime);
    ratios.push_back(sideTime / peerTime);
    state.counters["ratio"] = ratios.back();
    state.counters["peer_ns"] = peerTime;
    return sideTime / 1e9;
  });
  AddRow({row, goal, 0, 0, 0, Quantile(sideTimes, 0.5), Quantile(peerTimes, 0.5)}, ratios);
}

std::string TimeText(double ns) {
  char text[32];
  if (ns <= 0) return "";
  if (ns < 1e3) {
    std::snprintf(text, sizeof text, "%.1f ns", ns);
  } else if (ns < 1e6) {
    std::snprintf(text, sizeof text, "%.2f us", ns / 1e3);
  } else {
    std::snprintf(text, sizeof text, "%.2f ms", ns / 1e6);
  }
  return text;
}

void Measure(const std::string& key, const Side& side) {
  if (IsProfiled(key, side)) return;
  Sampler sampler(side);
  sampler.Calibrate();
  std::vector<double>& times = s_times[key];
  RunNow(key, Repetitions(sampler.IsLong()), [&](benchmark::State&) {
    times.push_back(sampler.Sample());
    return times.back() / 1e9;
  });
}

namespace {

// Those kept under the key; none where it has not been measured.
const std::vector<double>& TimesOf(const std::string& key) {
  static const std::vector<double> none;
  const auto times = s_times.find(key);
  return times == s_times.end() ? none : times->second;
}

// By the lowest times of either: those are what a busy machine changes least. 0 where one has not been measured.
double UndisturbedRatio(const std::string& key, const std::string& baseKey) {
  const std::vector<double>& times = TimesOf(key);
  const std::vector<double>& baseTimes = TimesOf(baseKey);
  return times.empty() || baseTimes.empty() ? 0 : Quantile(times, 0) / Quantile(baseTimes, 0);
}

void AddRowOfTimes(const RowText& row, const Goal& goal, const std::string& key, const std::string& baseKey,
                   double undisturbed) {
  const std::vector<double>& times = TimesOf(key);
  const std::vector<double>& baseTimes = TimesOf(baseKey);
  if (times.empty() || baseTimes.empty()) return;
  const double base = Quantile(baseTimes, 0.5);
  std::vector<double> ratios;
  ratios.reserve(times.size());
  for (double time : times) ratios.push_back(time / base);
  AddRow({row, goal, 0, 0, 0, Quantile(times, 0.5), base, undisturbed}, ratios);
}

}  // namespace

double MedianTime(const std::string& key) {
  const std::vector<double>& times = TimesOf(key);
  return times.empty() ? 0 : Quantile(times, 0.5);
}

void AddRatioOfTimes(const RowText& row, const Goal& goal, const std::string& key, const std::string& baseKey) {
  AddRowOfTimes(row, goal, key, baseKey, UndisturbedRatio(key, baseKey));
}

void AddGrowth(const RowText& row, double limit, const std::string& key, const std::string& baseKey,
               const Yardstick& yardstick) {
  // Twice at most, or a cost in proportion to the site would pass where the caches hold little.
  const double machine = std::clamp(UndisturbedRatio(yardstick.key, yardstick.baseKey), 1.0, 2.0);
  AddRowOfTimes(row, {limit, false, limit > 0}, key, baseKey, UndisturbedRatio(key, baseKey) / machine);
}

void AddFigure(const RowText& row, const Goal& goal, int samples, const std::function<double()>& figure) {
  if (IsProfiled(row.name, {[&figure] { figure(); }})) return;
  std::vector<double> values;
  RunNow(row.name, samples, [&](benchmark::State& state) {
    const auto begin = Clock::now();
    values.push_back(figure());
    state.counters["figure"] = values.back();
    return std::chrono::duration<double>(Clock::now() - begin).count();
  });
  AddRow({row, goal}, values);
}

void RunSuite(const char* name, Suite suite) {
  if (!TheOptions().filter.empty() && std::string(name).find(TheOptions().filter) == std::string::npos) return;
  s_suite = name;
  s_reporter = std::make_unique<SuiteReporter>(TheOptions().outputFolder + "/" + name + ".json");
  suite();
  s_reporter.reset();
}

int PrintTable() {
  PrintRows(stdout);
  int steep = 0;
  for (const Row& row : s_rows) {
    if (!TheOptions().isShort || !IsTooSteep(row)) continue;
    std::printf("growth too steep: %s beside %s: %.2f at the least, limit %.2f times %.1f\n", row.text.name.c_str(),
                row.text.beside.c_str(), Steepness(row), row.goal.limit, kShortRunTolerance);
    ++steep;
  }
  if (s_wrongResults > 0) std::printf("%d results were WRONG\n", s_wrongResults);
  return s_wrongResults > 0 || steep > 0 ? 1 : 0;
}

}  // namespace bench
