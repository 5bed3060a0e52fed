// SPDX-License-Identifier: Apache-2.0
#include "drawing/ShortSvg.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QRegularExpression>
#include <set>

#include "../Cases.h"
#include "drawing/Theme.h"

namespace test {
namespace {

using drawing::Theme;

// Of a shape as Qt writes it: in a group that says everything.
QString Made(const QString& group, const QString& shape) {
  const QString whole =
      "<svg viewBox=\"0 0 1280 776\" xmlns=\"http://www.w3.org/2000/svg\"><title>Gate</title>"
      "<desc>Gate</desc><g stroke=\"black\"><g %1>%2</g></g></svg>";
  const QString head = "<svg class=\"drawing\" width=\"1280\" height=\"776\" viewBox=\"0 0 1280 776\">";
  const QString svg = drawing::ShortSvg(whole.arg(group, shape));
  EXPECT_TRUE(svg.startsWith(head) && svg.endsWith("</svg>")) << svg.toStdString();
  return svg.mid(head.size()).chopped(6);
}

TEST(ShortSvgTest, EachShapeKeepsWhatIsSeenOfIt) {
  for (const auto& [both, made] : testing_support::Cases(TABLES "ShortSvg.txt")) {
    const size_t shape = both.find('<');
    EXPECT_EQ(Made(both.substr(0, shape).c_str(), both.substr(shape).c_str()).toStdString(), made.at(0));
  }
}

TEST(ShortSvgTest, OneSignIsWrittenTheSameWhereverItStands) {
  std::set<QString> paths;
  for (const double x : {0.0, 0.5, 7.33, 1000.67}) {
    const auto at = [&](double dx, double dy) { return QString::number(x + dx) + "," + QString::number(3 * x + dy); };
    const QString svg =
        Made("fill=\"none\" stroke=\"#000001\"", "<path d=\"M" + at(0, 0) + " L" + at(1.23, 4.56) + " C" + at(2, 2) +
                                                     " " + at(3, 3.1) + " " + at(4, 5) + "\"/>");
    paths.insert(QRegularExpression(" d=\"[^\"]*\"").match(svg).captured());
  }
  EXPECT_EQ(paths.size(), 1u) << paths.begin()->toStdString() << "\n" << paths.rbegin()->toStdString();
}

// What colour the rules give a class, before or behind where they turn dark.
QString ColourOf(const QString& className, bool isDark) {
  const QString rules = drawing::ShortSvgRules();
  const int turn = rules.indexOf("@media screen and (prefers-color-scheme:dark)");
  EXPECT_GT(turn, 0);
  const QString part = isDark ? rules.mid(turn) : rules.left(turn);
  return QRegularExpression("\\." + className + "\\{[a-z]+:(#[0-9a-f]+)\\}").match(part).captured(1);
}

TEST(ShortSvgTest, ANumberStandsForTheColourOfEachTheme) {
  const Theme& numbers = Theme::Numbered();
  for (const bool isDark : {false, true}) {
    const Theme& theme = isDark ? Theme::Dark() : Theme::Light();
    std::vector<std::pair<QColor, QColor>> pairs = {
        {numbers.canvas, theme.canvas}, {numbers.preset, theme.preset}, {numbers.dimText, theme.dimText}};
    for (int kind = 0; kind < 10; ++kind) {
      pairs.emplace_back(numbers.Of(static_cast<drawing::WindowKind>(kind)),
                         theme.Of(static_cast<drawing::WindowKind>(kind)));
    }
    for (int zoom = 0; zoom < 6; ++zoom) pairs.emplace_back(numbers.OfZoomWindow(zoom), theme.OfZoomWindow(zoom));
    for (const auto& [number, colour] : pairs) {
      for (const char* kind : {"f", "s"}) {
        const QString name = kind + QString::number(Theme::NumberOf(number));
        EXPECT_EQ(ColourOf(name, isDark), colour.name()) << name.toStdString();
      }
    }
  }
}

}  // namespace
}  // namespace test
