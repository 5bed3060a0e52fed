// SPDX-License-Identifier: Apache-2.0
#include "drawing/ShortSvg.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QRegularExpression>
#include <set>

#include "drawing/Theme.h"

namespace test {
namespace {

using drawing::Theme;

// A shape as Qt writes it: in a group that says everything.
QString Svg(const QString& group, const QString& shape) {
  return "<svg viewBox=\"0 0 1280 776\" xmlns=\"http://www.w3.org/2000/svg\"><title>Gate</title><desc>Gate</desc>"
         "<g stroke=\"black\"><g " +
         group + ">" + shape + "</g></g></svg>";
}

QString Made(const QString& group, const QString& shape) {
  const QString head = "<svg class=\"drawing\" width=\"1280\" height=\"776\" viewBox=\"0 0 1280 776\">";
  const QString svg = drawing::ShortSvg(Svg(group, shape));
  EXPECT_TRUE(svg.startsWith(head) && svg.endsWith("</svg>")) << svg.toStdString();
  return svg.mid(head.size()).chopped(6);
}

TEST(ShortSvgTest, EachShapeKeepsWhatIsSeenOfIt) {
  const struct {
    const char* group;
    const char* shape;
    const char* made;
  } rows[] = {
      {R"(fill="#000003" fill-opacity="1" stroke="none")", R"(<rect x="1" y="2.04" width="3.06" height="4"/>)",
       R"(<g class="f3"><rect x="1" y="2" width="3.1" height="4"/></g>)"},
      {R"(fill="#00000a" fill-opacity="0.22" stroke="#000004" stroke-opacity="1" stroke-width="1.25")",
       R"(<circle cx="1" cy="-0.01" r="2"/>)",
       R"(<g class="f10 s4" fill-opacity="0.22" stroke-width="1.3"><circle cx="1" cy="0" r="2"/></g>)"},
      {R"(fill="none" stroke="#000001" stroke-width="1" stroke-dasharray="2,4")",
       R"(<ellipse cx="1" cy="2" rx="3" ry="4"/>)",
       R"(<g class="s1" stroke-dasharray="2,4"><ellipse cx="1" cy="2" rx="3" ry="4"/></g>)"},
      {R"(fill="#000003" stroke="#000001" stroke-width="2" stroke-linecap="round")",
       R"(<polyline fill="none" points="1.26,2 3,4 "/>)",
       R"(<g class="s1 r" stroke-width="2"><polyline points="1.3,2 3,4"/></g>)"},
      {R"(fill="#000003" stroke="none")", R"(<polygon points="1,2 3,4 5,6 "/>)",
       R"(<g class="f3"><polygon points="1,2 3,4 5,6"/></g>)"},
      {R"(fill="#000003" stroke="#000001" stroke-width="1")",
       R"(<text fill="#000006" stroke="none" x="14" y="36.52" font-size="22" font-weight="700">&lt;b&gt; &amp;</text>)",
       R"(<g class="f6 b" font-size="22"><text x="14" y="36.5">&lt;b&gt; &amp;</text></g>)"},
      {"",
       R"(<text fill="#000006" x="1" y="2" direction="rtl" unicode-bidi="embed" text-anchor="end" font-size="9">א</text>)",
       R"(<g class="f6" font-size="9"><text x="1" y="2" direction="rtl" unicode-bidi="embed" text-anchor="end">א</text></g>)"},
      {R"(fill="none" stroke="#000001" stroke-width="1")",
       R"(<path d="M10,20 L12.5,20 L12.5,22 C12.5,23 13,24 14,24 C15,24 16,24 17,23 M11,21 L10,20"/>)",
       R"svg(<g class="s1"><path transform="translate(10 20)" )svg"
       R"(d="m0,0l2.5,0 0,2c0,1 0.5,2 1.5,2 1,0 2,0 3,-1m-6,-2l-1,-1"/></g>)"},
  };
  for (const auto& row : rows) EXPECT_EQ(Made(row.group, row.shape).toStdString(), row.made);
}

TEST(ShortSvgTest, NeighboursOfOneStyleShareAGroupAndOthersDoNot) {
  const QString group = "fill=\"#000003\" stroke=\"none\"";
  const QString rect = "<rect x=\"1\" y=\"1\" width=\"1\" height=\"1\"/>";
  EXPECT_EQ(Made(group, rect + rect).count("<g"), 1);
  EXPECT_EQ(Made(group, rect + "</g><g fill=\"#000004\" stroke=\"none\">" + rect).count("<g"), 2);
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
