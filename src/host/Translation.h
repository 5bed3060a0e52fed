// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QTranslator>

namespace host {

// The English display texts behind the plugin's translation keys.
class Translation : public QTranslator {
 public:
  QString translate(const char* context, const char* sourceText, const char* disambiguation, int n) const override;
  bool isEmpty() const override { return false; }
};

}  // namespace host
