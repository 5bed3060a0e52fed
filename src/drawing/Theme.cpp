// SPDX-License-Identifier: Apache-2.0
#include "drawing/Theme.h"

namespace drawing {

struct Themes {
  static Theme Light() {
    Theme theme;
    theme.canvas = "#e9edf2";
    theme.cell = "#ffffff";
    theme.bar = "#f1f4f8";
    theme.edge = "#8794a5";
    theme.scene = "#dfe6ee";
    theme.sceneEdge = "#66758a";
    theme.text = "#17202b";
    theme.dimText = "#4a586a";
    theme.digitalZoom = "#b34700";
    theme.centreMark = "#a3157f";
    theme.fishEye = "#0b6b78";
    theme.cycle = "#1f6f3c";
    theme.map = "#3f6b12";
    theme.related = "#7b3fb0";
    theme.preset = "#9a5b00";
    const char* kinds[] = {"#66758a", "#1d4f91", "#8a4b12", "#5d3f9e", "#0b6b78",
                           "#3f6b12", "#a3157f", "#a12b2b", "#4d5a2a", "#4a586a"};
    const char* zooms[] = {"#c2410c", "#1d4ed8", "#15803d", "#a21caf", "#a16207", "#0e7490"};
    std::copy(std::begin(kinds), std::end(kinds), theme.m_kinds);
    std::copy(std::begin(zooms), std::end(zooms), theme.m_zoomWindows);
    return theme;
  }

  static Theme Dark() {
    Theme theme;
    theme.canvas = "#10151b";
    theme.cell = "#1b222b";
    theme.bar = "#252e39";
    theme.edge = "#5c6b7e";
    theme.scene = "#2b3542";
    theme.sceneEdge = "#8fa0b5";
    theme.text = "#eef2f7";
    theme.dimText = "#b3c0cf";
    theme.digitalZoom = "#ffb27a";
    theme.centreMark = "#ff9be6";
    theme.fishEye = "#7fdbe6";
    theme.cycle = "#86e0a3";
    theme.map = "#b8e07a";
    theme.related = "#d3b2ff";
    theme.preset = "#ffd07a";
    const char* kinds[] = {"#93a3b8", "#8dbcff", "#f0b680", "#c8b0ff", "#7fdbe6",
                           "#b8e07a", "#ff9be6", "#ff9d9d", "#d3e09a", "#b3c0cf"};
    const char* zooms[] = {"#ffa070", "#93b8ff", "#7fe3a0", "#f0a8ff", "#f3d06b", "#7fdbe6"};
    std::copy(std::begin(kinds), std::end(kinds), theme.m_kinds);
    std::copy(std::begin(zooms), std::end(zooms), theme.m_zoomWindows);
    return theme;
  }

  static Theme Numbered() {
    Theme theme;
    int number = 0;
    for (QColor* colour : theme.Places()) *colour = QColor(0, 0, number++);
    return theme;
  }
};

const Theme& Theme::Light() {
  static const Theme theme = Themes::Light();
  return theme;
}

const Theme& Theme::Dark() {
  static const Theme theme = Themes::Dark();
  return theme;
}

const Theme& Theme::Numbered() {
  static const Theme theme = Themes::Numbered();
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
  for (QColor& colour : m_kinds) places.push_back(&colour);
  for (QColor& colour : m_zoomWindows) places.push_back(&colour);
  return places;
}

QColor Theme::Of(Kind kind) const {
  return m_kinds[static_cast<size_t>(kind)];
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
  return m_zoomWindows[static_cast<unsigned>(number) % std::size(m_zoomWindows)];
}

}  // namespace drawing
