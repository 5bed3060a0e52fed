// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <string>

#include "VeltControl/Export.h"

class QTextCodec;

namespace VeltControl {

// Conversions between QString and byte strings; UTF-8 when no codec is given. Any thread.
VELTCONTROL_API QString StringToQString(const std::string& text, QTextCodec* codec = nullptr);
VELTCONTROL_API std::string QStringToString(const QString& text, QTextCodec* codec = nullptr);

// Waits about that long, in milliseconds. On a thread with an event loop (a QCoreApplication exists and this is its
// thread) events are processed meanwhile; elsewhere the thread sleeps.
VELTCONTROL_API void qWait(int milliseconds);

class VELTCONTROL_API CStandardItemModel {
 public:
  enum ItemSortType : int { SortByCodePoint = 0, SortByName = 2 };

  // Whether `left` sorts before `right`: a strict weak order. SortByName is natural order: digits by value,
  // case-insensitive, ties by code point, the same whatever the locale. Any thread.
  static bool CustomStringCompare(QString left, QString right, const ItemSortType& type);
};

}  // namespace VeltControl
