// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QProcess>
#include <string>

namespace host {

enum class DrawingFormat { kSvg, kPng, kShort };

struct DrawingOptions {
  DrawingFormat format = DrawingFormat::kSvg;
  bool isDark = false;  // kShort is light and dark in one
};

// Draws pages by viewdraw, which stands beside the program and runs as long as the drawer lives. So no program that
// draws links what viewdraw links.
class Drawer {
 public:
  // Not every installation has viewdraw.
  static bool IsInstalled();

  // Throws Failure kUsage where there is no viewdraw.
  Drawer();
  ~Drawer();

  // One page, from 1, of a view; `plan` is the answer of GetPlanDetail, in valid UTF-8. Throws Failure kRefused when it
  // cannot be drawn, or viewdraw does not answer within a minute.
  std::string Draw(const std::string& plan, int page, const DrawingOptions& options);
  // The CSS of what is drawn in the format kShort, an SVG element for use within another document.
  std::string DrawingRules();

 private:
  std::string Ask(const std::string& request);
  QByteArray ReadLine();
  void WaitForBytes(qint64 count);

  QProcess m_process;
};

}  // namespace host
