// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QRegularExpression>
#include <string>

namespace host {

// A name in which * stands for any characters and ? for one; case does not count.
class NamePattern {
 public:
  explicit NamePattern(const std::string& pattern);
  bool Fits(const std::string& name) const;

 private:
  const QRegularExpression m_expression;
};

}  // namespace host
