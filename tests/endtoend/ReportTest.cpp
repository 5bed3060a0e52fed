// SPDX-License-Identifier: Apache-2.0
// viewctl report: over the sample site, and over names that would rather not be text.
#include <QCryptographicHash>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QSet>
#include <algorithm>

#include "../Cases.h"
#include "ReportReader.h"
#include "ViewctlRunner.h"

namespace test {
namespace {

using Table = QMap<QString, QString>;

std::string Shown(const Table& lines) {
  std::string text;
  for (auto line = lines.begin(); line != lines.end(); ++line) {
    text += (line.key() + " = " + line.value() + "\n").toStdString();
  }
  return text;
}

// What a report should hold.
Table Expected(const std::string& part) {
  Table lines;
  for (const auto& [what, said] : testing_support::Cases(TABLES "Report.txt", part)) {
    lines[QString::fromStdString(what)] = QString::fromStdString(said.at(0));
  }
  return lines;
}

// Of each view its name, folder, owner, pages and windows, its turning.
Table ViewsOf(const ReportReader& page) {
  Table views;
  for (const Node* view : page.All("article.view")) {
    QMap<QString, QString> facts;
    for (const Node* fact : page.All("div", page.All("dl.facts", view).at(0))) {
      facts[page.Text("dt", fact)] = page.Text("dd", fact);
    }
    const QString windows = QRegularExpression("[0-9]+ window").match(page.All(".about", view).at(0)->text).captured();
    const QString count = windows.isEmpty() ? "0 window" : windows;
    QStringList told = {page.Text("h4", view), page.Text("h3", page.Above(*view, "details", "folder")), facts["Owner"],
                        QString("%1 pages %2s").arg(page.All("figure", view).size()).arg(count), facts["Pages"]};
    told.removeAll("");
    views[view->Get("id")] = told.join(" | ");
  }
  EXPECT_EQ(static_cast<size_t>(views.size()), page.All("article.view").size()) << "a view stands there twice";
  return views;
}

const Node* SectionOf(const ReportReader& page, const QString& id) {
  for (const Node* section : page.All("section")) {
    if (section->Get("aria-labelledby") == id) return section;
  }
  return nullptr;
}

// By what they are; uses and names.
void ReadResources(const ReportReader& page, const QString& section, Table& uses, Table& names) {
  for (const Node* resource : page.All("li.resource", SectionOf(page, section))) {
    const QString said = page.All("div", resource).at(0)->text;
    const auto about = page.All(".about", page.All("div", resource).at(0));
    const QString name = page.All("bdi", resource).at(0)->text;
    const QString what = about.empty() ? name : about[0]->text.section(" · site", 0, 0);
    EXPECT_FALSE(uses.contains(what)) << what.toStdString() << " stands there twice";
    names[what] = name;
    QStringList places;
    for (const Node* use : page.All("li", resource)) {
      places += page.All("a", use).at(0)->Get("href") + ": " + page.Text(".about", use);
    }
    places.sort();
    uses[what] = places.join("; ");
  }
}

class ReportTest : public SiteTest {
 protected:
  static std::string Report(const std::string& user) {
    const QString file = TheSite().File("site.html");
    const Outcome outcome = RunAs(TheSite(), user, {"report", "-o", file});
    EXPECT_EQ(outcome.status, 0) << outcome;
    return ReadFile(file);
  }
};

TEST_F(ReportTest, EachViewStandsThereOnceWithItsFolderOwnerAndPages) {
  for (const std::string user : {"admin", "maria", "kenji"}) {
    const ReportReader page(Report(user));
    EXPECT_EQ(Shown(ViewsOf(page)), Shown(Expected("views of " + user)));
    EXPECT_EQ(page.All("li.view-link").size(), page.All("article.view").size());
    EXPECT_EQ(page.All("figure").size(), page.All("noscript").size());
  }
}

TEST_F(ReportTest, EachResourceStandsThereOnceWithAllItsUses) {
  const ReportReader page(Report("maria"));
  Table names;
  for (const char* part : {"shown", "unused", "gone"}) {
    Table uses;
    ReadResources(page, part, uses, names);
    EXPECT_EQ(Shown(uses), Shown(Expected(part)));
  }
  EXPECT_EQ(Shown(names), Shown(Expected("names")));
}

TEST_F(ReportTest, ItsWordsAreThese) {
  const ReportReader page(Report("maria"));
  Table said;
  for (const QString& part : Expected("words").keys()) {
    const Node* node = SectionOf(page, part);
    for (const Node& one : page.Everything()) node = !node && (one.Get("id") == part || one.name == part) ? &one : node;
    ASSERT_NE(node, nullptr) << part.toStdString();
    static const QRegularExpression varies("http://[0-9.:]+, [0-9 :-]+ UTC|GUID[0-9a-f-]{36}");
    said[part] = node->text.simplified().replace(varies, "...");
  }
  EXPECT_EQ(Shown(said), Shown(Expected("words")));
  EXPECT_EQ(page.All("label").at(0)->Get("for"), "search") << "what a screen reader calls the field by";
}

TEST_F(ReportTest, ABrowserIsToldToRunNoOtherScript) {
  const ReportReader page(Report("maria"));
  const QByteArray script = QCryptographicHash::hash(page.Script().toUtf8(), QCryptographicHash::Sha256);
  QStringList told;
  for (const Node* meta : page.All("meta")) {
    for (const QXmlStreamAttribute& one : meta->attributes) told += one.name() + "=" + one.value();
  }
  EXPECT_EQ(told.mid(0, 5).join("\n").toStdString(),
            "charset=utf-8\nhttp-equiv=Content-Security-Policy\ncontent=default-src 'none'; base-uri 'none'; "
            "form-action 'none'; style-src 'unsafe-inline'; script-src 'sha256-" +
                script.toBase64().toStdString() + "'\nname=viewport\ncontent=width=device-width, initial-scale=1");
}

TEST_F(ReportTest, WhatOpensFirstIsMarked) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"110", "Opens first: Platform 1 edge, magnified.", "v110"},  // the marked element's id
      {"12", "Opens first: the folder Handed over.", "Shared views / Handed over"},
      {"9999", "Opens first: view 9999, which is gone.", ""},
      {"-3", "No view opens first.", ""}};
  for (const auto& [chosen, said, markedId] : rows) {
    const QString request = QString(R"({"view_type":0,"view_id":"%1"})").arg(chosen);
    ASSERT_EQ(Maria({"call", "SetClientViewConfig", request}).status, 0);
    const ReportReader page(Report("maria"));
    EXPECT_TRUE(page.Text("header").contains(said)) << page.Text("header").toStdString();
    QStringList marked;
    for (const Node* mark : page.All(".mark")) {
      if (mark->text != "opens first") continue;
      const Node* view = page.Above(*mark, "article", "view");
      marked += view ? view->Get("id") : page.Text("h3", page.Above(*mark, "details", "folder"));
    }
    EXPECT_EQ(marked.join(","), markedId);
  }
  const ReportReader page(Report("maria"));
  for (const Node* mark : page.All(".mark"))
    EXPECT_TRUE(mark->text.startsWith("shared by ")) << mark->text.toStdString();
  EXPECT_EQ(page.All(".mark").size(), 3u) << "two of kenji's views and one of admin's";
}

// A store of its own with hostile names wherever a client may write them.
class HostileReportTest : public ::testing::Test {
 protected:
  static constexpr const char* kNames[] = {"</script><b>bold</b>",
                                           "\"><img src=x onerror=alert(1)>",
                                           "</noscript></style></title><script>alert(2)</script>",
                                           "<!-- & &lt;i&gt; ]]> ' {{x}}",
                                           "رصيف العبّارات 1",
                                           "evil\u202Ename",
                                           "🚲 きっぷ"};

  HostileReportTest() {
    std::string script;
    for (const char* name : kNames) {
      QString calls = R"({"call":"AddPlan","request":{"Name":NAME,"GroupID":"-1","Type":0,"PlanPages":[)"
                      R"({"windowDivision":2,"customWindowDivision":NAME,"PlanItems":[)"
                      R"({"Sequence":0,"ResourceType":1001,"ResourceID":"77","PresetId":2,"PresetName":NAME,)"
                      R"("RelateResourceType":4,"RelateResourceID":5,"RelateResourceName":NAME},)"
                      R"({"Sequence":1,"ResourceType":25001,"ResourceID":"-1","ExtendResource":NAME}]}]}})"
                      "\n"
                      R"({"call":"AddPlanGroup","request":{"Name":NAME,"ParentID":"-1","Type":1}})"
                      "\n";
      const QByteArray list = QJsonDocument(QJsonArray{name}).toJson(QJsonDocument::Compact);
      script += calls.replace("NAME", QString::fromUtf8(list).mid(1).chopped(1)).toStdString();
    }
    const Outcome outcome = Viewctl({"script"}, script);
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_FALSE(Has(outcome.out, "\"result\":false")) << outcome;
  }

  Outcome Viewctl(const QStringList& command, const std::string& input = {}) const {
    return test::Run(QStringList{"--data", m_folder.filePath("store")} + command, {}, input);
  }
  QString File(const char* name) const { return m_folder.filePath(name); }
  QStringList FilesIn(const char* folder) const { return QDir(File(folder)).entryList(QDir::Files); }

  QTemporaryDir m_folder;
};

// What may stand in a page, whoever named what.
void ExpectHarmless(const ReportReader& page, const std::string& html, bool hasImages) {
  QSet<QString> ids;
  static const QSet<QString> ours = {
      "html",    "head", "meta",    "title",      "style",    "body",     "a",      "header",  "h1",
      "p",       "ul",   "li",      "div",        "label",    "input",    "button", "nav",     "details",
      "summary", "main", "section", "h2",         "h3",       "h4",       "span",   "article", "dl",
      "dt",      "dd",   "figure",  "figcaption", "bdi",      "noscript", "svg",    "g",       "rect",
      "path",    "text", "use",     "defs",       "polyline", "polygon",  "circle", "ellipse", "script"};
  for (const Node& node : page.Everything()) {
    EXPECT_TRUE(ours.contains(node.name) || (hasImages && node.name == "img")) << node.name.toStdString();
    if (!node.Get("id").isEmpty()) {
      EXPECT_FALSE(ids.contains(node.Get("id"))) << node.Get("id").toStdString();
      ids.insert(node.Get("id"));
    }
    for (const QXmlStreamAttribute& attribute : node.attributes) {
      EXPECT_FALSE(attribute.name().startsWith(QLatin1String("on"))) << attribute.name().toString().toStdString();
    }
  }
  for (const Node& node : page.Everything()) {
    const QString href = node.Get("href");
    EXPECT_TRUE(href.isEmpty() || (href.startsWith('#') && ids.contains(href.mid(1)))) << href.toStdString();
    EXPECT_TRUE(node.Get("src").isEmpty() || (node.name == "img" && node.Get("src").startsWith("view-")));
    for (const char* key : {"aria-labelledby", "for"}) {
      EXPECT_TRUE(node.Get(key).isEmpty() || ids.contains(node.Get(key))) << node.Get(key).toStdString();
    }
    if (node.name == "svg" && node.Get("aria-hidden").isEmpty()) {
      EXPECT_FALSE(node.Get("aria-labelledby").isEmpty());
    }
  }
  // A browser with scripts ends these at the first such text, wherever it stands.
  for (const char* name : {"noscript", "style", "script", "title"}) {
    const QString text = QString::fromStdString(html);
    EXPECT_EQ(text.count("</" + QString(name)), text.count("<" + QString(name))) << name;
  }
  const QByteArray hash = QCryptographicHash::hash(page.Script().toUtf8(), QCryptographicHash::Sha256).toBase64();
  EXPECT_TRUE(QString::fromStdString(html).contains("script-src 'sha256-" + hash + "'")) << "the script may run";
}

TEST_F(HostileReportTest, NamesStayText) {
  ASSERT_EQ(Viewctl({"report", "-o", File("site.html"), "--into-folder", File("folder")}).status, 0);
  for (const bool isFolder : {false, true}) {
    const std::string html = ReadFile(File(isFolder ? "folder/index.html" : "site.html"));
    const ReportReader page(html);
    ExpectHarmless(page, html, isFolder);
    for (const char* written : kNames) {
      QString name = QString(written).replace(QChar(0x202E), "\\u202e");
      const std::pair<const char*, QRegularExpression> places[] = {
          {"h4", QRegularExpression("^" + QRegularExpression::escape(name) + "$")},
          {"h3", QRegularExpression("^My views / " + QRegularExpression::escape(name) + "$")},
          {"p", QRegularExpression("preset 2 “" + QRegularExpression::escape(name) + "”")}};
      for (const auto& [tag, text] : places) {
        EXPECT_EQ(std::ranges::count_if(page.All(tag),
                                        [&text = text](const Node* node) { return node->text.contains(text); }),
                  1)
            << tag << " " << written;
      }
    }
    Table gone, names;
    ReadResources(page, "gone", gone, names);
    EXPECT_EQ(gone.keys(), QStringList({"camera 77", "door 5"}));
    EXPECT_TRUE(SectionOf(page, "unused")->text.contains("Each resource of the server is shown")) << "there are none";
    EXPECT_EQ(std::ranges::count_if(page.All("li"), [](const Node* node) { return node->text == "Empty"; }), 8)
        << "those of the names, and that of the shared views";
  }
}

TEST_F(HostileReportTest, TheFolderHoldsTheDrawingsAndNothingThatIsNoLongerShown) {
  ASSERT_EQ(Viewctl({"report", "--into-folder", File("a/folder")}).status, 0);
  const QStringList first = FilesIn("a/folder");
  EXPECT_EQ(first.size(), 1 + static_cast<int>(std::size(kNames)));
  EXPECT_EQ(first.filter(QRegularExpression("^view-[0-9]+-page-1-")).size(), first.size() - 1) << "pages count from 1";
  const ReportReader page(ReadFile(File("a/folder/index.html")));
  ASSERT_EQ(page.All("img").size(), std::size(kNames));
  for (const Node* image : page.All("img")) {
    const std::string file = ReadFile(File("a/folder/") + image->Get("src"));
    EXPECT_TRUE(file.starts_with("<svg xmlns=\"http://www.w3.org/2000/svg\" ")) << "else no browser shows the image";
    const ReportReader drawing(file);
    const Node& svg = drawing.Everything().at(0);
    for (const char* side : {"width", "height"}) EXPECT_EQ(svg.Get(side), image->Get(side));
    EXPECT_EQ(svg.Get("viewBox"), "0 0 " + svg.Get("width") + " " + svg.Get("height"));
    EXPECT_TRUE(svg.text.isEmpty()) << "all text is the drawing's";
    EXPECT_EQ(drawing.All("title").size() + drawing.All("desc").size(), 2u);
  }
  ASSERT_EQ(Viewctl({"report", "--into-folder", File("a/folder")}).status, 0);
  EXPECT_EQ(FilesIn("a/folder"), first) << "the same again";
  ASSERT_EQ(Viewctl({"call", "DeletePlan", R"({"ID":"1"})"}).status, 0);
  ASSERT_EQ(Viewctl({"report", "--into-folder", File("a/folder")}).status, 0);
  EXPECT_EQ(FilesIn("a/folder"), first.filter(QRegularExpression("^(?!view-1-)")));
}

TEST_F(HostileReportTest, WhatCannotBeWrittenIsSaidAndReplacesNothing) {
  QDir(m_folder.path()).mkpath("foreign");
  QDir(m_folder.path()).mkpath("page");
  QDir(m_folder.path()).mkpath("deep/folder");
  const QStringList kept = {"foreign/holiday.jpg", "page/index.html", "file", "old.html"};
  for (const QString& name : kept) WriteFile(m_folder.filePath(name), "mine");
  const std::tuple<QStringList, int, const char*> rows[] = {
      {{}, 2, "Say where to"},
      {{"-o", File("no/site.html")}, 2, "cannot be written"},
      {{"--into-folder", File("foreign")}, 2, "holds holiday.jpg, which is no part of a report"},
      {{"--into-folder", File("page")}, 2, "holds index.html, which is no part of a report"},
      {{"--into-folder", File("deep")}, 2, "holds folder, which is no part of a report"},
      {{"--into-folder", File("file")}, 2, "cannot be made"},
      {{"-o", File("old.html"), "--into-folder", File("new"), "--user", "nobody"}, 3, "has no user nobody"},
  };
  for (const auto& [arguments, status, said] : rows) {
    const Outcome outcome = Viewctl(QStringList{"report"} + arguments);
    ExpectMessage(outcome, status, said);
    EXPECT_EQ(Lines(outcome.err).size(), 1u) << outcome;
  }
  for (const QString& name : kept) EXPECT_EQ(ReadFile(m_folder.filePath(name)), "mine");
  EXPECT_FALSE(QDir(File("new")).exists()) << "a folder that was made for nothing goes again";
  EXPECT_EQ(Viewctl({"report", "-o", "-"}).out.substr(0, 15), "<!DOCTYPE html>");
}

}  // namespace
}  // namespace test
