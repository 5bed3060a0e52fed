// SPDX-License-Identifier: Apache-2.0
#include "drawing/Layout.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "drawing/Lettering.h"
#include "drawing/Scene.h"

namespace drawing {
namespace {

constexpr double kLeastLetters = 9;
// Of the body: smaller pictures say nothing.
constexpr double kLeastPicture = 0.3;

double WidestOf(const std::vector<Fact>& facts, double letters) {
  const QFont font = Lettering(letters);
  double widest = 0;
  for (const Fact& fact : facts) widest = std::max(widest, IndentOf(fact, letters) + WidthOf(font, fact.text) + 2);
  return widest;
}

double Area(const QRectF& rect) {
  return rect.width() * rect.height();
}

// Words and picture of one window in one body, at one size of letters.
class Division {
 public:
  Division(const QRectF& body, const Window& window, const std::vector<Fact>& facts, double letters)
      : m_body(body), m_window(window), m_gap(letters * 0.7) {
    m_layout.letters = letters;
    m_layout.lines = static_cast<int>(facts.size());
    m_words = QSizeF(WidestOf(facts, letters), m_layout.lines * m_layout.LineHeight());
  }

  // With all words readable; nothing when they do not leave enough for the picture.
  std::optional<Layout> Below() const {
    const double height = m_body.height() - m_words.height() - m_gap;
    if (m_words.width() > m_body.width() || height < m_body.height() * kLeastPicture) return std::nullopt;
    return WordsBelow(height);
  }
  std::optional<Layout> Beside() const {
    const double width = m_body.width() - m_words.width() - m_gap;
    if (m_words.height() > m_body.height() || width < m_body.width() * kLeastPicture) return std::nullopt;
    return WordsBeside(width);
  }
  // With as many words as there is room for.
  Layout Anyhow() const {
    const bool isTall = m_body.height() > m_body.width();
    Layout layout = isTall ? WordsBelow(m_body.height() * 0.45) : WordsBeside(m_body.width() * 0.4);
    layout.lines = static_cast<int>(layout.facts.height() / layout.LineHeight());
    return layout;
  }

 private:
  Layout WordsBelow(double height) const {
    Layout layout = m_layout;
    layout.picture = PictureIn(m_window, QRectF(m_body.topLeft(), QSizeF(m_body.width(), height)));
    layout.facts = m_body.adjusted(0, layout.picture.bottom() + m_gap - m_body.top(), 0, 0);
    return layout;
  }

  Layout WordsBeside(double width) const {
    Layout layout = m_layout;
    layout.picture = PictureIn(m_window, QRectF(m_body.topLeft(), QSizeF(width, m_body.height())));
    layout.facts = m_body.adjusted(layout.picture.width() + m_gap, 0, 0, 0);
    return layout;
  }

  const QRectF m_body;
  const Window& m_window;
  const double m_gap;
  Layout m_layout;
  QSizeF m_words;
};

Layout Divide(const QRectF& body, const Window& window, double letters) {
  const std::vector<Fact> facts = FactsOf(window);
  for (double size = letters; size >= kLeastLetters; --size) {
    const Division division(body, window, facts, size);
    const auto below = division.Below();
    const auto beside = division.Beside();
    if (below && beside) return Area(below->picture) >= Area(beside->picture) ? *below : *beside;
    if (below || beside) return below ? *below : *beside;
  }
  return Division(body, window, facts, kLeastLetters).Anyhow();
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
  const double margin = letters * 0.6;
  Layout layout = Divide(place.adjusted(margin, bar.height() + margin, -margin, -margin), window, letters);
  layout.bar = bar;
  layout.barLetters = letters;
  return layout;
}

}  // namespace drawing
