// SPDX-License-Identifier: Apache-2.0
#include "Scale.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

#include "Report.h"

namespace bench {

namespace {

struct Curve {
  const char* key;  // of its times, without the number of views
  bool isPeer = false;
};

struct Chart {
  const char* title;
  std::vector<Curve> curves;
};

const std::vector<Chart>& Charts() {
  static const std::vector<Chart> charts{
      {"Loading the whole site", {{"load the site"}, {"bare DOM parse of its text", true}}},
      {"Looking one view up",
       {{"GetViewByID"}, {"look-up in a bare std::unordered_map", true}, {"look-up in a bare std::map", true}}},
      {"Changing one view in the cache",
       {{"change a view"},
        {"remove and add a view"},
        {"remove and add in a bare std::unordered_map", true},
        {"remove and add in a bare std::map", true}}},
      {"Telling of a change",
       {{"notice to its observer"}, {"foreign change, text to notice"}, {"bare DOM parse of its document", true}}}};
  return charts;
}

struct Point {
  unsigned int views;
  double ns;
};

std::vector<Point> Points(const Curve& curve) {
  std::vector<Point> points;
  for (unsigned int views : {100u, 1000u, 10000u, 100000u}) {
    const double ns = MedianTime(curve.key + ViewCount(views));
    if (ns > 0) points.push_back({views, ns});
  }
  return points;
}

void PrintScale() {
  std::printf("\n| views | 100 | 1,000 | 10,000 | 100,000 |\n| --- | --: | --: | --: | --: |\n");
  for (const Chart& chart : Charts()) {
    for (const Curve& curve : chart.curves) {
      std::printf("| %s |", curve.key);
      for (unsigned int views : {100u, 1000u, 10000u, 100000u}) {
        std::printf(" %s |", TimeText(MedianTime(curve.key + ViewCount(views))).c_str());
      }
      std::printf("\n");
    }
  }
}

// --- the picture: four charts, both axes logarithmic --------------------------------------------------------------

constexpr int kChartWidth = 470, kChartHeight = 300;
constexpr int kLeft = 60, kTop = 36, kPlotWidth = 390, kPlotHeight = 170;
constexpr const char* kColours[] = {"#0b62a4", "#b3470b", "#5f6b76", "#8d9aa5"};

// Places in a chart's plot. Decades of time from `low` to `high`.
struct Axes {
  int low, high;

  double X(unsigned int views) const { return kLeft + kPlotWidth * (std::log10(views) - 2) / 3; }
  double Y(double ns) const { return kTop + kPlotHeight * (high - std::log10(ns)) / (high - low); }
};

Axes AxesOf(const Chart& chart) {
  double least = 1e18, most = 0;
  for (const Curve& curve : chart.curves) {
    for (const Point& point : Points(curve)) {
      least = std::min(least, point.ns);
      most = std::max(most, point.ns);
    }
  }
  const int low = static_cast<int>(std::floor(std::log10(least)));
  return {low, std::max(low + 1, static_cast<int>(std::ceil(std::log10(most))))};
}

std::string Decade(int exponent) {
  static constexpr const char* kUnits[] = {"ns", "µs", "ms", "s"};
  const int unit = std::clamp(exponent / 3, 0, 3);
  return std::to_string(std::lround(std::pow(10, exponent - 3 * unit))) + " " + kUnits[unit];
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '<') {
      escaped += "&lt;";
    } else if (c == '&') {
      escaped += "&amp;";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

void DrawText(std::ostream& out, double x, double y, const char* anchor, const std::string& text) {
  out << "<text x='" << x << "' y='" << y << "' text-anchor='" << anchor << "'>" << Escaped(text) << "</text>\n";
}

void DrawGrid(std::ostream& out, const Axes& axes) {
  out << "<g stroke='#d8dde2'>\n";
  for (int decade = axes.low; decade <= axes.high; ++decade) {
    const double y = axes.Y(std::pow(10, decade));
    out << "<path d='M" << kLeft << ' ' << y << 'h' << kPlotWidth << "'/>\n";
  }
  for (unsigned int views : {100u, 1000u, 10000u, 100000u}) {
    out << "<path d='M" << axes.X(views) << ' ' << kTop << 'v' << kPlotHeight << "'/>\n";
  }
  out << "</g>\n";
  for (int decade = axes.low; decade <= axes.high; ++decade) {
    DrawText(out, kLeft - 6, axes.Y(std::pow(10, decade)) + 4, "end", Decade(decade));
  }
  for (const auto& [views, name] :
       {std::pair{100u, "100 views"}, {1000u, "1,000"}, {10000u, "10,000"}, {100000u, "100,000"}}) {
    DrawText(out, axes.X(views), kTop + kPlotHeight + 16, views == 100000 ? "end" : "middle", name);
  }
}

void DrawCurve(std::ostream& out, const Axes& axes, const Curve& curve, const char* colour, int row) {
  out << "<g stroke='" << colour << "' fill='none' stroke-width='2'" << (curve.isPeer ? " stroke-dasharray='5 4'" : "")
      << ">\n<path d='";
  const double legendY = kTop + kPlotHeight + 32 + 15 * row;
  char command = 'M';
  for (const Point& point : Points(curve)) {
    out << std::exchange(command, 'L') << axes.X(point.views) << ' ' << axes.Y(point.ns);
  }
  out << "'/>\n<path d='M" << kLeft << ' ' << legendY << "h26'/>\n</g>\n";
  DrawText(out, kLeft + 34, legendY + 4, "start", curve.key);
}

void DrawChart(std::ostream& out, const Chart& chart) {
  const Axes axes = AxesOf(chart);
  out << "<g font-weight='bold'>";
  DrawText(out, kLeft, kTop - 14, "start", chart.title);
  out << "</g>\n";
  DrawGrid(out, axes);
  for (size_t n = 0; n < chart.curves.size(); ++n) {
    DrawCurve(out, axes, chart.curves[n], kColours[n], static_cast<int>(n));
  }
}

void DrawScale(std::ostream& out) {
  out << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " << 2 * kChartWidth << ' ' << 2 * kChartHeight
      << "' font-family='sans-serif' font-size='12' fill='#1f2930' role='img'>\n"
         "<title>Cost over the number of views</title>\n"
         "<desc>Processor time over the number of views, both logarithmic; dashed lines are peers.</desc>\n"
         "<rect width='100%' height='100%' fill='#ffffff'/>\n";
  const std::vector<Chart>& charts = Charts();
  for (size_t n = 0; n < charts.size(); ++n) {
    out << "<g transform='translate(" << kChartWidth * (n % 2) << ' ' << kChartHeight * (n / 2) << ")'>\n";
    DrawChart(out, charts[n]);
    out << "</g>\n";
  }
  out << "</svg>\n";
}

}  // namespace

std::string ViewCount(unsigned int views) {
  return ", " + std::to_string(views) + " views";
}

bool TellScale(const std::string& file) {
  const bool isMeasured = std::ranges::all_of(Charts(), [](const Chart& chart) {
    return std::ranges::all_of(chart.curves, [](const Curve& curve) { return !Points(curve).empty(); });
  });
  if (!isMeasured) return true;
  PrintScale();
  std::ofstream out(file);
  out.precision(4);
  DrawScale(out);
  out.flush();
  return out.good();
}

}  // namespace bench
