// SPDX-License-Identifier: Apache-2.0
// Text conversions, the order of names, and waiting.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLocale>
#include <QTextCodec>
#include <QTimer>
#include <clocale>
#include <string>
#include <thread>
#include <vector>

#include "VeltControl/VeltControl.h"

namespace {

using VeltControl::CStandardItemModel;
using VeltControl::QStringToString;
using VeltControl::StringToQString;

void ExpectInOrder(const std::vector<std::string>& texts, CStandardItemModel::ItemSortType order) {
  for (std::size_t i = 0; i < texts.size(); ++i) {
    for (std::size_t j = 0; j < texts.size(); ++j) {
      EXPECT_EQ(CStandardItemModel::CustomStringCompare(StringToQString(texts[i]), StringToQString(texts[j]), order),
                i < j)
          << texts[i] << " < " << texts[j];
    }
  }
}

TEST(Texts, AreUtf8WhereNoCodecIsGiven) {
  for (const std::string& text : {std::string(), std::string("a\0b", 3), std::string("\xC3\xA9\xF0\x9F\x98\x80")}) {
    EXPECT_EQ(QStringToString(StringToQString(text)), text);
  }
  EXPECT_EQ(StringToQString("\xF0\x9F\x98\x80").size(), 2);
  QTextCodec* const latin1 = QTextCodec::codecForName("ISO-8859-1");
  ASSERT_NE(latin1, nullptr);
  EXPECT_EQ(StringToQString("\xE9", latin1), QString(QChar(0xE9)));
  EXPECT_EQ(QStringToString(QString(QChar(0xE9)), latin1), "\xE9");
}

TEST(NaturalOrder, ReadsDigitsByValueAndLettersWhateverTheirCaseInEveryLocale) {
  const QLocale before;
  for (const char* name : {"C", "de_DE", "cs_CZ", "tr_TR"}) {
    QLocale::setDefault(QLocale(name));
    std::setlocale(LC_ALL, "C");
    // A thread of its own starts without anything kept from before.
    std::thread([name] {
      SCOPED_TRACE(name);
      ExpectInOrder({"", "1", "02", "2", "10", "a", "Camera", "camera", "Camera 1", "camera 01", "camera 2",
                     "CAMERA 10", "camera 10", "camera 10b", "Camera 100", "door", "éclair", "f"},
                    CStandardItemModel::SortByName);
    }).join();
  }
  QLocale::setDefault(before);
}

TEST(CodePointOrder, PutsTheSupplementaryPlanesBehindAllOthers) {
  ExpectInOrder({"", "A", "a", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBD", "\xF0\x90\x80\x80", "\xF0\x9F\x98\x80"},
                CStandardItemModel::SortByCodePoint);
}

class Waiting : public testing::Test {
 protected:
  static qint64 TimeToWait(int milliseconds) {
    QElapsedTimer timer;
    timer.start();
    VeltControl::qWait(milliseconds);
    return timer.elapsed();
  }

  int argc = 1;
  char name[16] = "VeltControlTest";
  char* argv[2] = {name, nullptr};
};

TEST_F(Waiting, SleepsWhereThereIsNoEventLoop) {
  EXPECT_GE(TimeToWait(30), 30);
  EXPECT_LT(TimeToWait(-1), 1000);
  QCoreApplication application(argc, argv);
  std::thread([] { EXPECT_GE(TimeToWait(30), 30); }).join();
}

TEST_F(Waiting, RunsTheEventLoopOfTheApplication) {
  QCoreApplication application(argc, argv);
  int ticks = 0;
  QTimer ticker;
  QObject::connect(&ticker, &QTimer::timeout, [&ticks] { ++ticks; });
  ticker.start(1);
  EXPECT_GE(TimeToWait(50), 50);
  EXPECT_GE(ticks, 2);
  bool posted = false;
  QTimer::singleShot(0, [&posted] { posted = true; });
  VeltControl::qWait(0);
  EXPECT_TRUE(posted);
  // It lasts as long after the application was asked to quit.
  QTimer::singleShot(0, [] { QCoreApplication::quit(); });
  QCoreApplication::exec();
  QTimer::singleShot(1, [] { QCoreApplication::quit(); });
  EXPECT_GE(TimeToWait(30), 30);
  EXPECT_GE(TimeToWait(30), 30);
}

}  // namespace
