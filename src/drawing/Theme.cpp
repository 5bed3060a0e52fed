// SPDX-License-Identifier: Apache-2.0
#include "drawing/Theme.h"

namespace drawing {

const Theme& Theme::Light() {
  static const Theme theme{.canvas = "#e9edf2",
                           .cell = "#ffffff",
                           .bar = "#f1f4f8",
                           .edge = "#8794a5",
                           .scene = "#dfe6ee",
                           .sceneEdge = "#66758a",
                           .text = "#17202b",
                           .dimText = "#4a586a",
                           .digitalZoom = "#b34700",
                           .centreMark = "#a3157f",
                           .fishEye = "#0b6b78",
                           .cycle = "#1f6f3c",
                           .map = "#3f6b12",
                           .related = "#7b3fb0",
                           .preset = "#9a5b00",
                           .kinds = {"#66758a", "#1d4f91", "#8a4b12", "#5d3f9e", "#0b6b78", "#3f6b12", "#a3157f",
                                     "#a12b2b", "#4d5a2a", "#4a586a"},
                           .zoomWindows = {"#c2410c", "#1d4ed8", "#15803d", "#a21caf", "#a16207", "#0e7490"}};
  return theme;
}

const Theme& Theme::Dark() {
  static const Theme theme{.canvas = "#10151b",
                           .cell = "#1b222b",
                           .bar = "#252e39",
                           .edge = "#5c6b7e",
                           .scene = "#2b3542",
                           .sceneEdge = "#8fa0b5",
                           .text = "#eef2f7",
                           .dimText = "#b3c0cf",
                           .digitalZoom = "#ffb27a",
                           .centreMark = "#ff9be6",
                           .fishEye = "#7fdbe6",
                           .cycle = "#86e0a3",
                           .map = "#b8e07a",
                           .related = "#d3b2ff",
                           .preset = "#ffd07a",
                           .kinds = {"#93a3b8", "#8dbcff", "#f0b680", "#c8b0ff", "#7fdbe6", "#b8e07a", "#ff9be6",
                                     "#ff9d9d", "#d3e09a", "#b3c0cf"},
                           .zoomWindows = {"#ffa070", "#93b8ff", "#7fe3a0", "#f0a8ff", "#f3d06b", "#7fdbe6"}};
  return theme;
}

const Theme& Theme::Numbered() {
  static const Theme theme = [] {
    Theme numbers;
    int number = 0;
    for (QColor* place : numbers.Places()) *place = QColor(0, 0, number++);
    return numbers;
  }();
  return theme;
}

std::vector<QColor> Theme::All() const {
  Theme copy = *this;
  std::vector<QColor> all;
  for (const QColor* colour : copy.Places()) all.push_back(*colour);
  return all;
}

std::vector<QColor*> Theme::Places() {
  std::vector<QColor*> places = {&canvas,      &cell,       &bar,     &edge,  &scene, &sceneEdge, &text,  &dimText,
                                 &digitalZoom, &centreMark, &fishEye, &cycle, &map,   &related,   &preset};
  for (QColor& colour : kinds) places.push_back(&colour);
  for (QColor& colour : zoomWindows) places.push_back(&colour);
  return places;
}

QColor Theme::Of(WindowKind kind) const {
  return kinds[static_cast<size_t>(kind)];
}

QColor Theme::Of(const Fact& fact) const {
  switch (fact.mark) {
    case Mark::kPreset:
    case Mark::kMove:
      return preset;
    case Mark::kRelated:
      return related;
    case Mark::kDigitalZoom:
      return digitalZoom;
    case Mark::kCentreMark:
      return centreMark;
    case Mark::kZoomWindow:
      return OfZoomWindow(fact.number);
    case Mark::kFishEye:
      return fishEye;
    case Mark::kCycle:
      return cycle;
    case Mark::kMap:
      return map;
    default:
      return dimText;
  }
}

QColor Theme::OfZoomWindow(int number) const {
  return zoomWindows[static_cast<unsigned>(number) % std::size(zoomWindows)];
}

}  // namespace drawing
