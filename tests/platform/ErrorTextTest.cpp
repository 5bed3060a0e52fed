// SPDX-License-Identifier: Apache-2.0
// The display texts of error records.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTranslator>
#include <string>

#include "ErrorText/ErrorText.h"

namespace {

std::string TextOf(int mainError, int subError, const std::string& cascading = {}) {
  return ErrorText::GetErrorInfoByErrorCode({mainError, subError, 1, cascading});
}

TEST(ErrorText, KnowsTheErrorsOfServerTransportAndLibrary) {
  const struct {
    int mainError;
    int firstSub;
    int lastSub;
  } cases[] = {{100, 1, 8}, {101, 1, 2},     {1, 5, 8}, {1, 3, 3},   {1, 28, 28},   {1, 35, 35},   {1, 52, 52},
               {1, 60, 60}, {1, 1000, 1000}, {2, 1, 1}, {2, 20, 20}, {4, 400, 401}, {4, 403, 405}, {4, 500, 504}};
  for (const auto& c : cases) {
    for (int sub = c.firstSub; sub <= c.lastSub; ++sub) {
      EXPECT_EQ(TextOf(c.mainError, sub).find("Error "), std::string::npos) << c.mainError << "-" << sub;
    }
  }
}

TEST(ErrorText, PutsTheCascadingTextBehindAndNamesUnknownPairsByNumber) {
  EXPECT_EQ(TextOf(2, 20), "The folder is not known here");
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
