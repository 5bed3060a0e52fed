// SPDX-License-Identifier: Apache-2.0
#include "drawing/SafeText.h"

#include <QVector>

namespace drawing {
namespace {

bool TurnsDirection(uint c) {
  return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

bool MayBeShown(uint c) {
  switch (QChar::category(c)) {
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
      return false;
    default:
      return !TurnsDirection(c) && !QChar::isNonCharacter(c);
  }
}

}  // namespace

QString SafeText(const QString& text) {
  QString shown;
  for (const uint c : text.toUcs4()) {
    if (MayBeShown(c)) {
      shown += QString::fromUcs4(&c, 1);
    } else {
      shown += QStringLiteral("\\u%1").arg(c, 4, 16, QLatin1Char('0'));
    }
  }
  return shown;
}

}  // namespace drawing
