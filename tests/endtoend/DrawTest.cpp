// SPDX-License-Identifier: Apache-2.0
// viewctl draw over the sample site, and the drawings in the documentation.
#include <QDir>
#include <QFileInfo>
#include <regex>

#include "../Cases.h"
#include "ViewctlRunner.h"

namespace test {
namespace {

class DrawTest : public SiteTest {
 protected:
  static Outcome Draw(const QStringList& arguments, const std::string& user = "admin") {
    return RunAs(TheSite(), user, QStringList{"draw"} + arguments);
  }

  // Draws into a file of that ending and answers its content.
  std::string Picture(const QStringList& arguments, const std::string& user = "admin", const char* ending = "svg") {
    const QString file = m_folder.filePath(QString("picture.") + ending);
    const Outcome outcome = Draw(arguments + QStringList{"-o", file}, user);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err + outcome.out, "");
    return ReadFile(file);
  }

  QTemporaryDir m_folder;
};

TEST_F(DrawTest, TheExtrasOfTheSampleSiteCanBeReadInItsDrawings) {
  // A line in several scripts is several texts.
  for (const auto& [view, texts] : testing_support::Cases(TABLES "Drawn.txt")) {
    const QStringList words = QString::fromStdString(view).split(' ');  // the user, what is drawn
    const std::string svg = Picture(words.mid(1), words[0].toStdString());
    for (const std::string& text : texts) EXPECT_TRUE(Has(svg, ">" + text + "</text>")) << view << ": " << text;
  }
}

TEST_F(DrawTest, TheDrawingsInTheDocumentationAreCurrent) {
  const QDir folder(DOCS_DIR "/drawings");
  const QStringList names = folder.entryList({"*.svg"});
  ASSERT_FALSE(names.isEmpty());
  for (const QString& name : names) {
    const std::string text = name.toStdString();
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(text, parts, std::regex("view-([0-9]+)-page-([0-9]+)-(light|dark)\\.svg"))) << text;
    QStringList arguments = {QString::fromStdString(parts[1]), "--page", QString::fromStdString(parts[2])};
    if (parts[3] == "dark") arguments += "--dark";
    EXPECT_TRUE(Picture(arguments) == ReadFile(folder.filePath(name)))
        << text << " is not what is drawn now: ./dev drawings";
  }
}

TEST_F(DrawTest, WithoutAFileThePageIsText) {
  const Outcome outcome = Draw({"110"});
  ExpectSaid(outcome, 0, "Page 1 · layout 3 “1+2” · 3 windows\n┌──");
  ExpectSaid(outcome, 0, "│ 1 Platform 1, edge 1");
  EXPECT_TRUE(Picture({"110"}, "admin", "png").starts_with("\x89PNG")) << "and into a file of another kind, a picture";
}

TEST_F(DrawTest, WhatCannotBeDrawnIsSaidAndReplacesNothing) {
  const QString old = m_folder.filePath("old.svg");
  WriteFile(old, "old");
  const std::tuple<QStringList, int, const char*> cases[] = {
      {{"110", "--page", "2", "-o", old}, 1, "View 110 has 1 page and no page 2"},
      {{"110", "--page", "0"}, 1, "no page 0"},
      {{"132", "-o", old}, 1, "There is no view 132; viewctl tree lists what there is"},  // somebody else's
      {{"110", "-o", m_folder.filePath("no/folder.svg")}, 2, "cannot be written"},
  };
  for (const auto& [arguments, status, said] : cases) ExpectMessage(Draw(arguments), status, said);
  EXPECT_EQ(ReadFile(old), "old");
  EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files), QStringList{"old.svg"});
}

// What draws stands apart: viewctl alone does all the rest, and says what it lacks.
TEST_F(DrawTest, WithoutViewdrawEverythingElseWorks) {
  const QString viewctl = m_folder.filePath("viewctl");
  ASSERT_TRUE(QFile::copy(QString(VIEWCTL_FILE), viewctl));
  const auto run = [&](const QStringList& command) {
    return test::Run(TheSite().As("admin") + QStringList{"--plugin", PLUGIN_FILE} + command, "sample-admin", {},
                     viewctl);
  };
  const QStringList drawIntoFile = {"draw", "110", "-o", m_folder.filePath("page.svg")};
  ExpectMessage(run(drawIntoFile), 2, "viewctl: Pictures are drawn by viewdraw, which was not found beside viewctl\n");
  EXPECT_EQ(run({"draw", "110"}).status, 0);

  // Another in its place that does not do as it should.
  const QString other = m_folder.filePath("viewdraw");
  const std::pair<const char*, const char*> cases[] = {
      {R"(echo '{"Error":"out of ink"}')", "viewctl: viewdraw does not draw the page: out of ink\n"},
      {"exit 0", "viewctl: viewdraw does not answer\n"},
      {R"(echo '{"Size":100}'; echo few)", "viewctl: viewdraw ended within a picture\n"},
  };
  for (const auto& [script, said] : cases) {
    WriteFile(other, "#!/bin/sh\nread request\n" + std::string(script) + "\n");
    ASSERT_TRUE(QFile::setPermissions(other, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    ExpectMessage(run(drawIntoFile), 1, said);
    EXPECT_FALSE(QFile::exists(m_folder.filePath("page.svg")));
  }
}

TEST_F(DrawTest, OnlyWhatDrawsNeedsQtGui) {
  const auto needs = [](const QString& program, const char* library) {
    const Outcome ldd = test::Run({program}, {}, {}, "ldd");
    EXPECT_EQ(ldd.status, 0) << ldd;
    return Has(ldd.out, library);
  };
  const QDir folder = QFileInfo(QString(VIEWCTL_FILE)).dir();
  for (const QString program : {VIEWCTL_FILE, PLUGIN_FILE}) {
    EXPECT_TRUE(needs(program, "libQt5Core")) << program.toStdString();
    EXPECT_FALSE(needs(program, "libQt5Gui")) << program.toStdString();
    EXPECT_FALSE(needs(program, "libQt5Svg")) << program.toStdString();
  }
  EXPECT_TRUE(needs(folder.filePath("viewdraw"), "libQt5Gui"));
}

// Each by a process of its own, so that no order of hashes may matter. Other pictures are those in the documentation.
TEST_F(DrawTest, TheSameViewMakesTheSameBytes) {
  EXPECT_TRUE(Picture({"110"}, "admin", "png") == Picture({"110"}, "admin", "png"));
}

}  // namespace
}  // namespace test
