// SPDX-License-Identifier: Apache-2.0
#include "host/NamePattern.h"

namespace host {
namespace {

QString ExpressionOf(const std::string& pattern) {
  const QString escaped = QRegularExpression::escape(QString::fromStdString(pattern));
  return QRegularExpression::anchoredPattern(QString(escaped).replace("\\*", ".*").replace("\\?", "."));
}

}  // namespace

NamePattern::NamePattern(const std::string& pattern)
    : m_expression(ExpressionOf(pattern), QRegularExpression::CaseInsensitiveOption |
                                              QRegularExpression::UseUnicodePropertiesOption |
                                              QRegularExpression::DotMatchesEverythingOption) {}

bool NamePattern::Fits(const std::string& name) const {
  return m_expression.match(QString::fromStdString(name)).hasMatch();
}

}  // namespace host
