// SPDX-License-Identifier: Apache-2.0
#include "VeltControl/VeltControl.h"

#include <QCollator>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTextCodec>
#include <QThread>
#include <QTimer>
#include <algorithm>

namespace VeltControl {
namespace {

bool IsOnEventLoopThread() {
  const QCoreApplication* const application = QCoreApplication::instance();
  return application && application->thread() == QThread::currentThread();
}

// UTF-16 order is code point order but for surrogates, which stand for the code points above all of the BMP.
ushort CodePointOrder(QChar unit) {
  const ushort value = unit.unicode();
  if (value < 0xD800) return value;
  return unit.isSurrogate() ? value + 0x2000 : value - 0x800;
}

bool LessByCodePoint(const QString& left, const QString& right) {
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(), [](QChar one, QChar other) {
    return CodePointOrder(one) < CodePointOrder(other);
  });
}

QCollator MakeNaturalOrder() {
  QCollator made(QLocale(QLocale::English, QLocale::UnitedStates));
  made.setNumericMode(true);
  made.setCaseSensitivity(Qt::CaseInsensitive);
  return made;
}

// A collator is not to be used by two threads at once. It is costly to make but on Windows, where mingw-w64 takes a
// thread's memory away before what stands in it is destroyed.
#ifdef _WIN32
QCollator NaturalOrder() {
  return MakeNaturalOrder();
}
#else
const QCollator& NaturalOrder() {
  thread_local const QCollator collator = MakeNaturalOrder();
  return collator;
}
#endif

}  // namespace

QString StringToQString(const std::string& text, QTextCodec* codec) {
  const int size = static_cast<int>(text.size());
  return codec ? codec->toUnicode(text.data(), size) : QString::fromUtf8(text.data(), size);
}

std::string QStringToString(const QString& text, QTextCodec* codec) {
  return codec ? codec->fromUnicode(text).toStdString() : text.toStdString();
}

void qWait(int milliseconds) {
  milliseconds = std::max(milliseconds, 0);
  if (!IsOnEventLoopThread()) {
    QThread::msleep(static_cast<unsigned int>(milliseconds));
    return;
  }
  // Not a QEventLoop: that one ends at once after the host asked the application to quit, and a caller that polls
  // would spin.
  const QDeadlineTimer deadline(milliseconds, Qt::PreciseTimer);
  QTimer wakeUp;
  wakeUp.setTimerType(Qt::PreciseTimer);
  do {
    wakeUp.start(static_cast<int>(deadline.remainingTime()));
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  } while (!deadline.hasExpired());
}

bool CStandardItemModel::CustomStringCompare(QString left, QString right, const ItemSortType& type) {
  if (type == SortByName) {
    const int order = NaturalOrder().compare(left, right);
    if (order != 0) return order < 0;
  }
  return LessByCodePoint(left, right);
}

}  // namespace VeltControl
