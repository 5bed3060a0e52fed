// SPDX-License-Identifier: Apache-2.0
#include "drawing/Layout.h"

#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "drawing/Lettering.h"
#include "drawing/Scene.h"

namespace drawing {
namespace {

constexpr double kLeastLetters = 9;
// Of the body: smaller pictures say nothing.
constexpr double kLeastPicture = 0.3;

// Of the body: words beside the picture take no more.
constexpr double kMostBeside = 0.5;
// Longer texts are not for reading in a drawing.
constexpr int kLongestWrapped = 1000;

QStringList Wrapped(const QString& text, double letters, double width) {
  QTextLayout layout(text, Lettering(letters));
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  layout.beginLayout();
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) line.setLineWidth(width);
  layout.endLayout();
  QStringList lines;
  for (int i = 0; i < layout.lineCount(); ++i) {
    const QTextLine line = layout.lineAt(i);
    lines += text.mid(line.textStart(), line.textLength()).trimmed();
  }
  return lines;
}

std::vector<WordLine> LinesOf(const std::vector<Fact>& facts, double letters, double width) {
  const QFont font = Lettering(letters);
  std::vector<WordLine> lines;
  for (const Fact& fact : facts) {
    const double room = width - IndentOf(fact, letters) - 2;
    if (room <= 0 || fact.text.size() > kLongestWrapped || WidthOf(font, fact.text) <= room) {
      lines.push_back({fact});
      continue;
    }
    WordLine line{fact};
    for (const QString& text : Wrapped(fact.text, letters, room)) {
      line.fact.text = text;
      lines.push_back(line);
      line.isContinued = true;
    }
  }
  return lines;
}

double WidestOf(const std::vector<WordLine>& lines, double letters) {
  const QFont font = Lettering(letters);
  double widest = 0;
  for (const WordLine& line : lines) {
    widest = std::max(widest, IndentOf(line.fact, letters) + WidthOf(font, line.fact.text) + 2);
  }
  return widest;
}

void LeaveOut(std::vector<WordLine>& lines, size_t room) {
  if (lines.size() <= room) return;
  const size_t left = lines.size() - room + 1;
  lines.resize(room - 1);
  lines.push_back({Fact{Mark::kNone, "and " + QString::number(left) + " more lines", true}});
}

double Area(const QRectF& rect) {
  return rect.width() * rect.height();
}

// Words and picture of one window in one body, at one size of letters.
class Division {
 public:
  Division(const QRectF& body, const Window& window, const std::vector<Fact>& facts, double letters, bool isWrapped)
      : m_body(body),
        m_window(window),
        m_facts(facts),
        m_letters(letters),
        m_gap(letters * 0.7),
        m_isWrapped(isWrapped) {}

  // With all words readable; nothing when they do not leave enough for the picture.
  std::optional<Layout> Below() const {
    const Layout words = Words(m_body.width());
    const double height = m_body.height() - HeightOf(words) - m_gap;
    if (!Fits(words, m_body.width()) || height < m_body.height() * kLeastPicture) return std::nullopt;
    return WordsBelow(words, height);
  }
  std::optional<Layout> Beside() const {
    const Layout words = Words(m_body.width() * kMostBeside);
    const double width = m_body.width() - WidestOf(words.lines, m_letters) - m_gap;
    if (HeightOf(words) > m_body.height() || width < m_body.width() * kLeastPicture) return std::nullopt;
    return WordsBeside(words, width);
  }
  // With as many words as there is room for.
  Layout Anyhow() const {
    const bool isTall = m_body.height() > m_body.width();
    const Layout words = Words(isTall ? m_body.width() : m_body.width() * kMostBeside - m_gap);
    Layout layout =
        isTall ? WordsBelow(words, m_body.height() * 0.45) : WordsBeside(words, m_body.width() * (1 - kMostBeside));
    LeaveOut(layout.lines, std::max<size_t>(1, static_cast<size_t>(layout.facts.height() / layout.LineHeight())));
    return layout;
  }

 private:
  Layout Words(double width) const {
    Layout layout;
    layout.letters = m_letters;
    layout.lines = LinesOf(m_facts, m_letters, m_isWrapped ? width : std::numeric_limits<double>::max());
    return layout;
  }

  bool Fits(const Layout& words, double width) const { return WidestOf(words.lines, m_letters) <= width; }

  static double HeightOf(const Layout& words) { return static_cast<double>(words.lines.size()) * words.LineHeight(); }

  Layout WordsBelow(Layout layout, double height) const {
    layout.picture = PictureIn(m_window, QRectF(m_body.topLeft(), QSizeF(m_body.width(), height)));
    layout.facts = m_body.adjusted(0, layout.picture.bottom() + m_gap - m_body.top(), 0, 0);
    return layout;
  }

  Layout WordsBeside(Layout layout, double width) const {
    layout.picture = PictureIn(m_window, QRectF(m_body.topLeft(), QSizeF(width, m_body.height())));
    layout.facts = m_body.adjusted(layout.picture.width() + m_gap, 0, 0, 0);
    return layout;
  }

  const QRectF m_body;
  const Window& m_window;
  const std::vector<Fact>& m_facts;
  const double m_letters;
  const double m_gap;
  const bool m_isWrapped;
};

// Lines are wrapped only where smaller letters do not do.
Layout Divide(const QRectF& body, const Window& window, const std::vector<Fact>& facts, double letters) {
  for (const bool isWrapped : {false, true}) {
    for (double size = letters; size >= kLeastLetters; --size) {
      const Division division(body, window, facts, size, isWrapped);
      const auto below = division.Below();
      const auto beside = division.Beside();
      if (below && beside) return Area(below->picture) >= Area(beside->picture) ? *below : *beside;
      if (below || beside) return below ? *below : *beside;
    }
  }
  return Division(body, window, facts, kLeastLetters, true).Anyhow();
}

// Icon, number and name from the left.
Layout DivideBar(const QRectF& bar, const Window& window, double letters) {
  Layout layout;
  layout.barLetters = letters;
  layout.bar = bar;
  const double pad = letters * 0.4;
  const double side = bar.height() - 2 * pad;
  layout.icon = QRectF(bar.topLeft() + QPointF(pad, pad), QSizeF(side, side));
  layout.number = QRectF(QPointF(layout.icon.right() + pad, bar.top()), bar.bottomRight() - QPointF(pad, 0));
  const double taken = WidthOf(Lettering(letters), QString::number(window.number));
  layout.name = layout.number.adjusted(taken + pad * 1.5, 0, 0, 0);
  return layout;
}

}  // namespace

double Layout::LineHeight() const {
  return letters * 1.45;
}

double IndentOf(const Fact& fact, double letters) {
  return fact.mark != Mark::kNone || fact.isDetail ? letters * 1.4 : 0;
}

Layout LayOut(const QRectF& place, const Window& window) {
  const double letters = std::floor(std::clamp(std::min(place.width() / 28, place.height() / 11), kLeastLetters, 17.0));
  const QRectF bar(place.topLeft(), QSizeF(place.width(), letters * 1.9));
  const Layout top = DivideBar(bar, window, letters);
  std::vector<Fact> facts = FactsOf(window);
  if (WidthOf(Lettering(letters, true), window.name) > top.name.width()) {
    facts.insert(facts.begin(), {Mark::kNone, window.name});
  }
  const double margin = letters * 0.6;
  Layout layout = Divide(place.adjusted(margin, bar.height() + margin, -margin, -margin), window, facts, letters);
  layout.barLetters = letters;
  layout.bar = bar;
  layout.icon = top.icon;
  layout.number = top.number;
  layout.name = top.name;
  return layout;
}

}  // namespace drawing
