// SPDX-License-Identifier: Apache-2.0
// The display texts of error records.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTranslator>
#include <fstream>
#include <iterator>
#include <string>

#include "ErrorText/ErrorText.h"

namespace {

std::string TextOf(int mainError, int subError, const std::string& cascading = {}) {
  return ErrorText::GetErrorInfoByErrorCode({mainError, subError, 1, cascading});
}

TEST(ErrorText, IsTheListedOneForEachErrorOfServerTransportAndLibrary) {
  std::ifstream list(ERROR_TEXTS);
  std::string texts;
  for (int mainError = 0; mainError <= 101; ++mainError) {
    for (int subError = 1; subError <= 1000; ++subError) {
      const std::string pair = std::to_string(mainError) + "-" + std::to_string(subError);
      const std::string text = TextOf(mainError, subError);
      if (text != "Error " + pair) texts += pair + " " + text + "\n";
    }
  }
  EXPECT_EQ(texts, std::string(std::istreambuf_iterator<char>(list), {}));
}

TEST(ErrorText, PutsTheCascadingTextBehindAndNamesUnknownPairsByNumber) {
  EXPECT_EQ(TextOf(2, 20, "site 3"), "The folder is not known here: site 3");
  EXPECT_EQ(TextOf(100, 9), "Error 100-9");
  EXPECT_EQ(TextOf(-1, -1), "Error -1--1");
  EXPECT_EQ(TextOf(7, 1, "%1"), "Error 7-1: %1");
  EXPECT_EQ(TextOf(100, 0), "");
  EXPECT_EQ(TextOf(100, 0, "ignored"), "");
}

TEST(ErrorText, IsTranslatedWhereTheHostHasATranslator) {
  class Upper : public QTranslator {
   public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char*, int) const override {
      return QString(context) + "/" + QString(source).toUpper();
    }
  };
  int argc = 1;
  char name[] = "ErrorTextTest";
  char* argv[] = {name, nullptr};
  QCoreApplication application(argc, argv);
  Upper translator;
  QCoreApplication::installTranslator(&translator);
  EXPECT_EQ(TextOf(2, 20), "ErrorText/THE FOLDER IS NOT KNOWN HERE");
  EXPECT_EQ(TextOf(7, 1), "ErrorText/ERROR 7-1");
}

}  // namespace
