// SPDX-License-Identifier: Apache-2.0
#include "drawing/ShortSvg.h"

#include <QPointF>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include "drawing/Lettering.h"
#include "drawing/Theme.h"

namespace drawing {
namespace {

using Attributes = QXmlStreamAttributes;

QString Tenths(int tenths) {
  QString text = QString::number(tenths / 10.0, 'f', 1);
  if (text.endsWith(".0")) text.chop(2);
  return text;
}

QString Rounded(double number) {
  return Tenths(qRound(number * 10));
}

QString Value(const Attributes& attributes, const char* key) {
  return attributes.value(QLatin1String(key)).toString();
}

QString Attribute(const char* key, const QString& value) {
  return QStringLiteral(" %1=\"%2\"").arg(QLatin1String(key), value);
}

QString NumberAttribute(const Attributes& attributes, const char* key) {
  return Attribute(key, Rounded(Value(attributes, key).toDouble()));
}

// "f7 " where the colour is the one numbered 7; empty for none.
QString ColourClass(const char* prefix, const QString& colour) {
  if (!colour.startsWith('#')) return {};
  return QLatin1String(prefix) + QString::number(Theme::NumberOf(QColor(colour))) + " ";
}

QString Opacity(const Attributes& attributes, const char* key) {
  const QString value = Value(attributes, key);
  return value.isEmpty() || value == "1" ? QString() : Attribute(key, value);
}

QString ClassAttribute(const QString& classes) {
  return classes.isEmpty() ? QString() : Attribute("class", classes.trimmed());
}

QString FillOf(const Attributes& group) {
  return ColourClass("f", Value(group, "fill"));
}

QString StrokeStyle(const Attributes& group) {
  QString style;
  if (const QString width = Value(group, "stroke-width"); width != "1") {
    style += Attribute("stroke-width", Rounded(width.toDouble()));
  }
  if (const QString dashes = Value(group, "stroke-dasharray"); !dashes.isEmpty() && dashes != "none") {
    style += Attribute("stroke-dasharray", dashes);
  }
  return style + Opacity(group, "stroke-opacity");
}

// What a shape inherits from the group that Qt writes for it.
QString ShapeStyle(const Attributes& group, bool isFilled) {
  const QString stroke = ColourClass("s", Value(group, "stroke"));
  const QString fill = isFilled ? FillOf(group) : QString();
  const QString ends = !stroke.isEmpty() && Value(group, "stroke-linecap") == "round" ? "r" : "";
  QString style = ClassAttribute(fill + stroke + ends);
  if (!fill.isEmpty()) style += Opacity(group, "fill-opacity");
  if (!stroke.isEmpty()) style += StrokeStyle(group);
  return style;
}

QString TextStyle(const Attributes& text) {
  const QString weight = Value(text, "font-weight").toInt() >= 600 ? "b" : "";
  return ClassAttribute(FillOf(text) + weight) + Attribute("font-size", Value(text, "font-size")) +
         Opacity(text, "fill-opacity");
}

// A path relative to where it begins, so that what is the same is written the same, wherever it stands.
class RelativePath {
 public:
  explicit RelativePath(const QString& absolute) {
    static const QRegularExpression step("([MLC]?) ?(-?[0-9.e-]+),(-?[0-9.e-]+)");
    for (auto found = step.globalMatch(absolute); found.hasNext();) Add(found.next());
  }

  QString Element() const {
    const QString place = Rounded(m_start.x()) + " " + Rounded(m_start.y());
    return "<path transform=\"translate(" + place + ")\" d=\"" + m_text + "\"/>";
  }

 private:
  void Add(const QRegularExpressionMatch& step) {
    const QPointF point(step.captured(2).toDouble(), step.captured(3).toDouble());
    if (m_text.isEmpty()) m_start = point;
    if (!step.captured(1).isEmpty()) Begin(step.captured(1));
    const QPoint place = ((point - m_start) * 10).toPoint();
    const QPoint by = place - m_at;
    m_text += (m_text.back().isLetter() ? "" : " ") + Tenths(by.x()) + "," + Tenths(by.y());
    // The three points of a curve are relative to where it begins.
    if (++m_points == m_pointsOfStep) {
      m_at = place;
      m_points = 0;
    }
  }

  void Begin(const QString& command) {
    m_pointsOfStep = command == "C" ? 3 : 1;
    if (m_command != command || command == "M") m_text += command.toLower();
    m_command = command;
  }

  QPointF m_start;
  QPoint m_at;  // in tenths, from the start
  QString m_text, m_command;
  int m_points = 0;
  int m_pointsOfStep = 1;
};

QString Points(const QString& points) {
  QStringList rounded;
  for (const QString& point : points.split(' ', Qt::SkipEmptyParts)) {
    rounded += Rounded(point.section(',', 0, 0).toDouble()) + "," + Rounded(point.section(',', 1).toDouble());
  }
  return Attribute("points", rounded.join(' '));
}

class Shortener {
 public:
  explicit Shortener(const QString& svg) : m_reader(svg) {}

  QString Text() {
    while (!m_reader.atEnd()) {
      if (m_reader.readNext() == QXmlStreamReader::StartElement) Take(m_reader.name().toString());
    }
    return m_text + (m_style.isNull() ? "" : "</g>") + "</svg>";
  }

 private:
  void Take(const QString& name) {
    const Attributes attributes = m_reader.attributes();
    if (name == "svg") {
      BeginSvg(Value(attributes, "viewBox"));
    } else if (name == "title" || name == "desc") {
      m_reader.skipCurrentElement();
    } else if (name == "g") {
      m_group = attributes;
    } else if (name == "text") {
      AddText(attributes);
    } else {
      AddShape(name, attributes);
    }
  }

  void BeginSvg(const QString& box) {
    m_text = "<svg class=\"drawing\"" + Attribute("width", box.section(' ', 2, 2)) +
             Attribute("height", box.section(' ', 3, 3)) + Attribute("viewBox", box) + ">";
  }

  void AddText(const Attributes& text) {
    QString element = "<text" + NumberAttribute(text, "x") + NumberAttribute(text, "y");
    for (const char* key : {"direction", "unicode-bidi", "text-anchor"}) {
      if (text.hasAttribute(QLatin1String(key))) element += Attribute(key, Value(text, key));
    }
    Add(TextStyle(text), element + ">" + m_reader.readElementText().toHtmlEscaped() + "</text>");
  }

  void AddShape(const QString& name, const Attributes& shape) {
    const bool isFilled = Value(shape, "fill") != "none";
    if (name == "path") {
      Add(ShapeStyle(m_group, isFilled), RelativePath(Value(shape, "d")).Element());
    } else if (name == "polyline" || name == "polygon") {
      Add(ShapeStyle(m_group, isFilled), "<" + name + Points(Value(shape, "points")) + "/>");
    } else if (name == "rect" || name == "circle" || name == "ellipse") {
      QString element = "<" + name;
      for (const char* key : {"x", "y", "width", "height", "cx", "cy", "r", "rx", "ry"}) {
        if (shape.hasAttribute(QLatin1String(key))) element += NumberAttribute(shape, key);
      }
      Add(ShapeStyle(m_group, isFilled), element + "/>");
    }
  }

  // Neighbours of one style share a group.
  void Add(const QString& style, const QString& element) {
    if (style != m_style || m_style.isNull()) {
      m_text += (m_style.isNull() ? "<g" : "</g><g") + style + ">";
      m_style = style.isNull() ? QString("") : style;
    }
    m_text += element;
  }

  QXmlStreamReader m_reader;
  Attributes m_group;
  QString m_style;  // of the group that is open; null: none is
  QString m_text;
};

QString ColourRules(const Theme& theme) {
  QString rules;
  int number = 0;
  for (const QColor& colour : theme.All()) {
    const QString rule = ".drawing .%1%2{%3:%4}";
    rules += rule.arg("f").arg(number).arg("fill", colour.name());
    rules += rule.arg("s").arg(number++).arg("stroke", colour.name());
  }
  return rules;
}

}  // namespace

QString ShortSvg(const QString& svg) {
  return Shortener(svg).Text();
}

QString ShortSvgRules() {
  const QString font = kFirstFont;
  return ".drawing{fill:none;fill-rule:evenodd;stroke-linecap:square;stroke-linejoin:bevel;white-space:pre;font-"
         "family:" +
         font + ",Verdana,sans-serif}.drawing .r{stroke-linecap:round;stroke-linejoin:round}" +
         ".drawing .b{font-weight:700}" + ColourRules(Theme::Light()) +
         "@media screen and (prefers-color-scheme:dark){" + ColourRules(Theme::Dark()) + "}";
}

}  // namespace drawing
