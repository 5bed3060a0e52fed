// SPDX-License-Identifier: Apache-2.0
// A view edited as text: what comes back, what is shown, what is saved.
#include "TerminalRunner.h"

namespace test {
namespace {

class EditTest : public OwnSiteTest {
 protected:
  // The editor is a shell script, of which $1 is the file.
  Outcome Edit(const std::string& script, const QString& option = {}) {
    QFile::remove(File("log"));
    return RunShell("EDITOR='sh " + File("editor.sh", script) + "' VIEWCTL_PASSWORD=sample-maria viewctl " +
                    m_site.As("maria").join(' ') + " edit 110 " + option + " --log-file " + File("log"));
  }
  // `replace` of the camera that view 110 shows, as another client makes it.
  std::string OtherClient() const {
    return "VIEWCTL_PASSWORD=sample-admin '" VIEWCTL_FILE "' --server " + m_site.Url() +
           " replace 2031 2033 --in group:3 >/dev/null 2>&1\n"
           // Until the edit, which is waiting, has heard of it.
           "i=0; until grep -q ViewDataResourceUpdate " +
           File("log").toStdString() + " || [ $i -ge 300 ]; do sleep 0.1; i=$((i+1)); done; sleep 0.3\n";
  }
  // The file that a message says to have kept, which then is removed.
  static std::string TakeKept(const std::string& message) {
    const std::string begin = "your text is in ";
    const size_t at = message.find(begin);
    if (at == std::string::npos) return "nothing was kept";
    std::string file = message.substr(at + begin.size());
    file = file.substr(0, file.find_first_of("\n"));
    std::string text = ReadFile(file);
    std::remove(file.c_str());
    return text;
  }
};

TEST_F(EditTest, WhatIsChangedIsShownByPageAndWindowAndThenSaved) {
  const std::string camera =
      "sed -i 's/\"2031\"/\"2032\"/; s/\"TopX\": 600/\"TopX\": 610/; s/\"AutoCycle\": 0/\"AutoCycle\": 1/' $1";
  const Outcome dry = Edit(camera, "--dry-run");
  ExpectSaid(dry, 0, "AutoCycle: 0 -> 1\n");
  ExpectSaid(dry, 0, "page 1, window 0: ResourceID \"2031\" -> \"2032\"\n");
  ExpectSaid(dry, 0, "page 1, window 0: ZoomWindowList.ZoomWindow[2].TopX 600 -> 610\n");
  ExpectSaid(Maria({"show", "110"}), 0, "id 2031");
  const Outcome saved = Edit(camera);
  EXPECT_EQ(saved.out, dry.out);
  ExpectSaid(saved, 0, "Saved view 110");
  ExpectSaid(Maria({"show", "110"}), 0, "id 2032");
  ExpectSaid(Edit("true"), 0, "Nothing was changed");
}

TEST_F(EditTest, TheFileComesBackWithItsMistakesAtTheirLinesAndIsKeptWhenRefused) {
  // The first time a mistake is made, the second time the note below it is looked for and the mistake mended.
  const Outcome mended = Edit(
      "if grep -q Nmae $1; then grep -A1 -n Nmae $1 >&2; sed -i s/Nmae/Name/ $1;\n"
      "else sed -i 's/\"Name\": \"Plat/\"Nmae\": \"Flat/' $1; fi");
  ExpectSaid(mended, 0, "4:// ^ there is no key \"Nmae\"; did you mean \"Name\"?");
  ExpectSaid(mended, 0, "name: \"Platform 1 edge, magnified\" -> \"Flatform 1 edge, magnified\"");

  const std::string once = "grep -q '^// ^ ' $1 || ";  // and left as it comes back
  const std::string saved = Maria({"show", "110", "--json"}).out;
  for (Row& row : RowsOf(TABLES "Edit.txt", m_site)) {
    const Outcome outcome = Edit(row.command.replace("$ONCE ", once.c_str()).toStdString());
    ExpectRow(outcome, row);
    EXPECT_TRUE(Has(TakeKept(outcome.err), row.status == 2 ? "// ^ " : "\"PlanPages\"")) << outcome;
  }
  // One in the last line is noted once, and not again behind the text.
  const std::string line = R"({"Name":"x","AutoCycle":0,"PlanPages":[]})";
  EXPECT_EQ(TakeKept(Edit(once + "echo '" + line + "' > $1").err), line + "\n// ^ \"RoundTime\" is missing\n");
  // Where the text is no object, no keys are missing.
  EXPECT_EQ(TakeKept(Edit(once + "echo '[]' > $1").err), "[]\n// ^ the text is no object\n");
  EXPECT_EQ(Maria({"show", "110", "--json"}).out, saved);
}

TEST_F(EditTest, AViewThatHasOneNumberTwiceStaysEditable) {
  const QString page = R"({"PlanItems":[{"Sequence":1},{"Sequence":1},{"Sequence":2}]})";
  ASSERT_EQ(Maria({"call", "UpdatePlan",
                   R"({"ID":"110","Name":"Platform 1 edge, magnified","GroupID":"3","PlanPages":[)" + page + "]}"})
                .status,
            0);
  EXPECT_EQ(Edit("sed -i s/magnified/near/ $1").status, 0);
  const std::string moved = Edit("sed -i 's/\"Sequence\": 2/\"Sequence\": 3/' $1", "--dry-run").out;
  EXPECT_TRUE(Has(moved, "page 1, window 2: gone, ") && Has(moved, "page 1, window 3: new, ")) << moved;
  // The line at which the third one stands.
  const Outcome third = Edit("grep -q '^// ^ ' $1 || sed -i 's/\"Sequence\": 2/\"Sequence\": 1/' $1");
  EXPECT_EQ(third.status, 2);
  const std::string text = TakeKept(third.err);
  const size_t note = text.find("// ^ there is a window 1 on the page already");
  ASSERT_NE(note, std::string::npos) << third.err << text;
  size_t above = 0;
  for (size_t at = 0; (at = text.find("\"Sequence\": 1", at)) < note; ++at) ++above;
  EXPECT_EQ(above, 3u) << text;
}

TEST_F(EditTest, AnotherClientsChangeIsShownAndNotLost) {
  const std::string rename = OtherClient() + "sed -i s/magnified/mine/ $1";
  const Outcome refused = Edit(rename);
  ExpectSaid(refused, 1, "-> \"Platform 1 edge, mine\"");
  ExpectSaid(refused, 1,
             "Another client has changed the view meanwhile:\n  page 1, window 0: ResourceID \"2031\" -> \"2033\"");
  EXPECT_TRUE(Has(TakeKept(refused.err), "edge, mine")) << refused;
  ExpectSaid(Maria({"show", "110"}), 0, "magnified\"");
  ASSERT_EQ(Maria({"replace", "2033", "2031", "--in", "group:3"}).status, 0);
  EXPECT_EQ(Edit(rename, "--force").status, 0);
  ExpectSaid(Maria({"show", "110"}), 0, "edge, mine\"");
  ExpectSaid(Maria({"show", "110"}), 0, "id 2031");
}

TEST_F(EditTest, ATerminalIsAskedFirst) {
  OnTerminal ended(m_site.As("maria") + QStringList{"edit", "110"}, "sample-maria",
                   {"EDITOR=sed -i s/magnified/near/", "TMPDIR=" + m_site.File({})});
  ASSERT_TRUE(Has(ended.SaysUntil("Save? [y/N] "), "Save? [y/N] "));
  ended.Type("\x03y\n");
  EXPECT_EQ(ended.Finish().status, -1) << "behind the editor, Ctrl-C ends viewctl again";
  for (const char* answer : {"n\n", "y\n"}) {
    OnTerminal edit(m_site.As("maria") + QStringList{"edit", "110"}, "sample-maria",
                    {"EDITOR=sed -i s/magnified/near/"});
    EXPECT_TRUE(Has(edit.SaysUntil("Save? [y/N] "), "-> \"Platform 1 edge, near\""));
    edit.Type(answer);
    const Outcome outcome = edit.Finish();
    const bool isSaved = *answer == 'y';
    EXPECT_EQ(outcome.status, isSaved ? 0 : 1) << outcome.out;
    EXPECT_EQ(Has(Maria({"show", "110"}).out, "edge, near"), isSaved);
    if (!isSaved) TakeKept(outcome.out.substr(0, outcome.out.find('\r', outcome.out.find("your text is in "))));
  }
}

}  // namespace
}  // namespace test
