// SPDX-License-Identifier: Apache-2.0
// What the numbers of changes decide: which documents, answers and lists reach the cache and the observers. In which
// order an own edit and a colleague's end well is InterleavingTest's.
#include <algorithm>
#include <chrono>
#include <map>

#include "CoreFixture.h"
#include "ModelText.h"
#include "QorviViewPlugin/ViewDataManager/ChangeOrder.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

enum Method { kAdded, kModified, kDeleted };

// Elements of documents.
std::string V(int id, const std::string& name, int group, ChangeNumber number, Method method = kAdded) {
  return ViewElement(id, name, group, number) + R"(,"Method":)" + std::to_string(method) + "}";
}
std::string G(int id, const std::string& name, int parent, ChangeNumber number, Method method = kAdded) {
  return GroupElement(id, name, parent, number) + R"(,"Method":)" + std::to_string(method) + "}";
}

template <class... Elements>
std::string Joined(const std::string& first, const Elements&... others) {
  return (first + ... + ("," + others));
}

const std::string kGroups = Joined(G(1, "one", -1, 1), G(2, "two", 1, 2));
const std::string kViews = Joined(V(5, "five", 1, 3), V(6, "six", -1, 4));
constexpr char kLoaded[] = "group 1'one' in -1: 5'five' ; group 2'two' in 1: ; view 5'five'; view 6'six'; ";

class ChangeNumberTest : public CoreTest {
 protected:
  using Step = std::function<void(ChangeNumberTest&)>;

  ChangeNumberTest() {
    observer.onNotice = [this](const ResourceData::IResourceObserver::Param& param) {
      static const std::map<int, std::string> kStates = {{2, "renamed"}, {3, "added"}, {4, "removed"}, {7, "changed"}};
      std::string text = (param.id == "4294967295" ? "top" : param.id) + " " + kStates.at(param.enum_state);
      if (!param.child_id.empty()) text += (param.child_type == kView ? " view " : " group ") + param.child_id;
      heard.push_back(text + (param.name.empty() ? "" : " '" + param.name + "'"));
    };
  }

  static void Load(ChangeNumber number, const std::string& groups = kGroups, const std::string& views = kViews) {
    Downloads().SetDownloadedData(Numbered(number, GroupsDocument(groups)), Numbered(number, ViewsDocument(views)),
                                  true);
    EXPECT_TRUE(LoadWhatIsDownloaded());
  }
  static Step Views(const auto&... elements) {
    return [=](ChangeNumberTest&) { Downloads().NotifyViewsUpdate(ViewsDocument(Joined(elements...))); };
  }
  static Step Groups(const auto&... elements) {
    return [=](ChangeNumberTest&) { Downloads().NotifyViewGroupsUpdate(GroupsDocument(Joined(elements...))); };
  }
  // The user's own edit, answered with that number.
  static Step Own(ChangeNumber number, std::function<bool(unsigned int& id, ErrorCode& error)> edit) {
    return [=](ChangeNumberTest& test) {
      test.server.Answer(Accepted(R"({"ViewGroup":{"ID":3})" + Number(number) + "}"));
      unsigned int newId = 0;
      ErrorCode error;
      EXPECT_TRUE(edit(newId, error));
    };
  }
  static Step Rename(ChangeNumber number, unsigned int id, const std::string& name) {
    return Own(number, [=](auto&, auto& error) { return Manager().ModifyViewGroup(Group(id, 77, name), error); });
  }

  // Plays the steps upon a load up to number 10; then this has been heard and is cached.
  void Play(const char* what, const std::vector<Step>& steps, const Texts& isHeard, const std::string& cached) {
    SCOPED_TRACE(what);
    ClearViewData();  // and the observers
    Load(10);
    for (const char* id : {"1", "2", "3", "4294967295"}) Observe(observer, kViewGroup, id);
    for (const char* id : {"5", "6", "9"}) Observe(observer, kView, id);
    for (const Step& step : steps) step(*this);
    EXPECT_EQ(std::exchange(heard, {}), isHeard);
    EXPECT_EQ(Cached(), cached);
  }

  Texts heard;
  NotingObserver observer;
};

TEST_F(ChangeNumberTest, WhatIsNotNewerChangesAndTellsNothing) {
  const Step nine = Views(V(9, "nine", 1, 11));
  const Step five = Views(V(5, "FIVE", 1, 11, kModified));
  const Step noSix = Views(V(6, "", -1, 12, kDeleted));
  const Step three = Groups(G(3, "three", 2, 11));
  const Step one = Groups(G(1, "One", -1, 11));
  const Step renamed = Groups(G(1, "ONE", -1, 12, kModified));
  const Step noTwo = Groups(G(2, "", 1, 12, kDeleted));
  const Step fiveAgain = [](ChangeNumberTest&) {
    ViewInfo known;
    known.idView = 5;
    known.nChangeNumber = 11;
    EXPECT_TRUE(Manager().InsertViewToCache(known, false));
  };
  Play("what the load holds",
       {Views(V(5, "old", 1, 10, kModified), V(9, "old", 1, 10), V(6, "", -1, 9, kDeleted), V(5, "old", 2, 10)),
        Groups(G(1, "old", -1, 10, kModified), G(3, "old", 1, 10), G(2, "", 1, 9, kDeleted), G(1, "old", -1, 10))},
       {}, kLoaded);
  Play("views twice, and one added late", {nine, nine, five, five, fiveAgain, noSix, noSix, Views(V(6, "late", 1, 11))},
       {"1 added view 9", "5 changed", "top removed view 6"},
       "group 1'one' in -1: 5'FIVE' 9'nine' 5'FIVE' ; group 2'two' in 1: ; view 5'FIVE'; view 9'nine'; ");
  Play("groups twice, of which one that is announced anew keeps its members",
       {three, three, Groups(G(3, "old", 2, 11, kModified)), one, one, renamed, renamed, noTwo, noTwo,
        Groups(G(2, "late", 1, 11))},
       {"2 added group 3", "top added group 1", "1 renamed 'ONE'", "1 removed group 2"},
       "group 1'ONE' in -1: 5'five' ; group 3'three' in 2: ; view 5'five'; view 6'six'; ");
  Play("a removal before all else",
       {Views(V(9, "", -1, 13, kDeleted)), Views(V(9, "late", 1, 12, kModified)), nine,
        Groups(G(3, "", 2, 12, kDeleted)), three},
       {}, kLoaded);
}

TEST_F(ChangeNumberTest, WhatComesBeforeItsObjectOrItsGroupWaitsForIt) {
  const Step early = Views(V(9, "new", 2, 12, kModified));
  const Step inThree = Views(V(9, "nine", 3, 13));
  const std::string adopted =
      "group 1'one' in -1: 5'five' ; group 2'two' in 1: ; group 3'three' in 2: 9'nine' ; view 5'five'; view 6'six'; "
      "view 9'nine'; ";
  // What is not cached stands among its group's members all the same, once.
  Play("a change of a view, and an older one", {early, Views(V(9, "older", 1, 11, kModified)), early}, {},
       "group 1'one' in -1: 5'five' ; group 2'two' in 1: 9'new' ; view 5'five'; view 6'six'; ");
  Play("a change of a view, twice, then the view", {early, early, Views(V(9, "old", 1, 11))}, {"2 added view 9"},
       "group 1'one' in -1: 5'five' ; group 2'two' in 1: 9'new' ; view 5'five'; view 6'six'; view 9'new'; ");
  Play("a change of a view, then its removal, then it",
       {early, Views(V(9, "", 2, 13, kDeleted)), Views(V(9, "", 1, 11))}, {},
       "group 1'one' in -1: 5'five' ; group 2'two' in 1: 9'new' 9'' ; view 5'five'; view 6'six'; ");
  Play("a change of a group, then the group", {Groups(G(3, "new", 2, 12, kModified)), Groups(G(3, "old", 1, 11))},
       {"2 added group 3"},
       "group 1'one' in -1: 5'five' ; group 2'two' in 1: ; group 3'new' in 2: ; view 5'five'; view 6'six'; ");
  Play("a view, then its group", {inThree, Groups(G(3, "three", 2, 11))}, {"3 added view 9", "2 added group 3"},
       adopted);
  Play(
      "a view, then the answer that adds its group",
      {inThree, Own(11, [](auto& id, auto& error) { return Manager().AddViewGroup(Group(0, 2, "three"), id, error); })},
      {"3 added view 9"}, adopted);
}

TEST_F(ChangeNumberTest, LateAnswersToOwnDeletionsYieldToWhatIsNewer) {
  Play("of a view",
       {Views(V(5, "theirs", 1, 12, kModified)),
        Own(11, [](auto&, auto& error) { return Manager().DeleteView(5, error); })},
       {"5 changed"}, "group 1'one' in -1: 5'theirs' 5'theirs' ; group 2'two' in 1: ; view 5'theirs'; view 6'six'; ");
  Play("of a group",
       {Groups(G(2, "theirs", 1, 12, kModified)),
        Own(11, [](auto&, auto& error) { return Manager().DeleteViewGroup(2, error); })},
       {"2 renamed 'theirs'"}, "group 1'one' in -1: 5'five' ; group 2'theirs' in 1: ; view 5'five'; view 6'six'; ");
}

TEST_F(ChangeNumberTest, AnOwnRenamingOfAGroupCountsForItsNameAlone) {
  const Step rename = Rename(13, 2, "own");
  const Step move = Groups(G(2, "two", -1, 12, kModified));
  Play("an older move later", {rename, move, move}, {"2 renamed 'own'"},
       "group 1'one' in -1: 5'five' ; group 2'own' in -1: ; view 5'five'; view 6'six'; ");
  Play("an older announcement later", {rename, Groups(G(2, "two", -1, 12))}, {"top added group 2"},
       "group 1'one' in -1: 5'five' ; group 2'own' in -1: ; view 5'five'; view 6'six'; ");
  Play("an older record, then a newer one", {rename, move, Groups(G(2, "theirs", 1, 14, kModified)), move},
       {"2 renamed 'own'", "2 renamed 'theirs'"},
       "group 1'one' in -1: 5'five' ; group 2'theirs' in 1: ; view 5'five'; view 6'six'; ");
}

TEST_F(ChangeNumberTest, WhatHasNoNumberIsTakenAsItComes) {
  Play("beside elements with numbers, which go on counting",
       {Views(V(6, "SIX", -1, 0, kModified), V(5, "FIVE", -1, 12, kModified)),
        Views(V(6, "SIX!", -1, 0, kModified), V(5, "older", -1, 11, kModified)),
        Groups(G(1, "ONE", -1, 0, kModified), G(2, "TWO", 1, 12, kModified)), Groups(G(2, "old", 1, 11, kModified))},
       {"6 changed", "5 changed", "6 changed", "1 renamed 'ONE'", "2 renamed 'TWO'"},
       "group 1'ONE' in -1: 5'FIVE' ; group 2'TWO' in 1: ; view 5'FIVE'; view 6'SIX!'; ");
  Play("and after a document of nothing else lower numbers are news",
       {Views(V(6, "SIX", -1, 0, kModified)), Views(V(5, "FIVE", -1, 3, kModified))}, {"6 changed", "5 changed"},
       "group 1'one' in -1: 5'FIVE' ; group 2'two' in 1: ; view 5'FIVE'; view 6'SIX'; ");
  Play("as after one of nothing at all", {Views(""), Views(V(5, "FIVE", -1, 3, kModified))}, {"5 changed"},
       "group 1'one' in -1: 5'FIVE' ; group 2'two' in 1: ; view 5'FIVE'; view 6'six'; ");
  Play("but not after one of groups, or of another's refusal",
       {[](auto&) { Downloads().NotifyViewGroupsUpdate(Refused(1, 1)); }, Groups(G(2, "x", 1, 3, kModified)),
        Groups(""), [](auto&) { Downloads().NotifyViewsUpdate(Refused(1, 1)); }, Views(V(5, "x", 1, 3, kModified))},
       {}, kLoaded);
  Play("groups too", {Rename(20, 2, "own"), Groups(""), Groups(G(2, "theirs", 1, 3, kModified))},
       {"2 renamed 'theirs'"}, "group 1'one' in -1: 5'five' ; group 2'theirs' in 1: ; view 5'five'; view 6'six'; ");
  Play("own edits",
       {Own(0, [](auto&, auto& error) { return Manager().ModifyView(View(5, 2, "own"), error); }),
        Views(V(5, "older", 1, 10, kModified)), Rename(0, 2, "own"), Groups(G(2, "two", -1, 12, kModified))},
       {"2 renamed 'two'"}, "group 1'one' in -1: ; group 2'two' in -1: 5'own' ; view 5'own'; view 6'six'; ");
}

TEST_F(ChangeNumberTest, ALoadTakesWhatIsNewerAndKeepsWhatIsNewerStill) {
  const auto loadLate = [this](std::vector<Step> before, const std::string& groups, const std::string& views) {
    ClearViewData();
    for (const Step& step : before) step(*this);
    Load(12, groups, views);
    std::string cached = Cached();
    // What the list held counts from here on; so does what was newer.
    for (const int id : {5, 6, 7, 8, 9, 10, 11}) Views(V(id, "late", 1, 12))(*this);
    for (const int id : {1, 2, 3, 4}) Groups(G(id, "late", -1, 12))(*this);
    EXPECT_EQ(Cached(), cached);
    return cached;
  };
  Load(10);
  const Step views =
      Views(V(5, "before", 2, 11), V(6, "before", 2, 13), V(7, "gone", 1, 12), V(8, "later", 1, 13),
            V(9, "", 1, 13, kDeleted), V(10, "newer", 2, 13, kModified), V(11, "same", 1, 3), V(12, "before", 1, 13));
  EXPECT_EQ(
      loadLate({views}, kGroups,
               Joined(V(5, "listed", 1, 12), V(6, "listed", 1, 3), V(9, "listed", 1, 3), V(10, "listed", 1, 3),
                      V(11, "same", 1, 3), V(12, "listed", 2, 0), V(13, "bare", 2, 0))),
      "group 1'one' in -1: 8'later' 5'listed' 11'same' 12'before' ; group 2'two' in 1: 6'before' 10'newer' 13'bare' ; "
      "view 5'listed'; view 6'before'; view 8'later'; view 10'newer'; view 11'same'; view 12'before'; view 13'bare'; ");
  const Step groups = Groups(G(1, "before", -1, 11), G(2, "before", -1, 13), G(3, "gone", -1, 12),
                             G(4, "later", -1, 13), G(5, "", 1, 13, kDeleted));
  EXPECT_EQ(loadLate({groups, Rename(13, 6, "own"), Rename(11, 7, "own")},
                     Joined(G(1, "listed", -1, 12), G(2, "listed", 1, 2), G(5, "listed", 1, 3), G(6, "listed", 1, 3),
                            G(7, "listed", 1, 12), G(8, "bare", -1, 0)),
                     ""),
            "group 1'listed' in -1: ; group 2'before' in -1: ; group 4'later' in -1: ; group 6'own' in 1: ; "
            "group 7'listed' in 1: ; group 8'bare' in -1: ; ");
  // Who is a member already keeps the place, and the last leftover of a changed one stays beside its new record.
  const Step members = Views(V(6, "six", 1, 11), V(5, "before", 1, 3), V(5, "older", 1, 10, kModified),
                             V(5, "changed", 1, 11, kModified), V(7, "in no group", -1, 13));
  EXPECT_EQ(
      loadLate({Groups(G(1, "one", -1, 1)), members}, kGroups, Joined(V(5, "listed", 1, 12), V(6, "listed", 1, 3))),
      "group 1'one' in -1: 6'six' 5'changed' 5'listed' ; group 2'two' in 1: ; "
      "view 5'listed'; view 6'six'; view 7'in no group'; ");
}

template <class Info>
std::string Told(const std::list<Info>& changes) {
  std::string text;
  for (const Info& change : changes) text += Difference(Info(), change) + "\n";
  return text;
}

TEST_F(ChangeNumberTest, WhatWasMissedIsWhatAListHasNewerOrNoMore) {
  Load(10);
  Views(V(7, "newer", 1, 13), V(10, "newer", 1, 13))(*this);
  Groups(G(3, "newer", 1, 13), G(6, "newer", 1, 13))(*this);
  const std::string views =
      ViewsDocument(Joined(V(5, "FIVE", 1, 11), V(8, "bare", 1, 0), V(9, "nine", 1, 11), V(10, "older", 1, 12)));
  const std::string groups =
      GroupsDocument(Joined(G(1, "ONE", -1, 11), G(4, "four", -1, 11), G(5, "bare", -1, 0), G(6, "older", 1, 12)));
  EXPECT_EQ(Told(Manager().MissedViewChanges(Numbered(12, views))),
            "idView=6 nMethod=2 nChangeNumber=12\n"
            "idView=5 strName='FIVE' idViewGroup=1 nAutoCycle=-1 nCycleTime=-1 nMethod=1 nChangeNumber=11\n"
            "idView=9 strName='nine' idViewGroup=1 nAutoCycle=-1 nCycleTime=-1 nChangeNumber=11\n");
  EXPECT_EQ(Told(Manager().MissedViewGroupChanges(Numbered(12, groups))),
            "idViewGroup=1 strName='ONE' nMethod=1 nChangeNumber=11\nidViewGroup=4 strName='four' nChangeNumber=11\n"
            "idViewGroup=2 nMethod=2 nChangeNumber=12\n");
  for (const std::string& unusable : {views, groups, std::string("rubbish")}) {
    EXPECT_EQ(Told(Manager().MissedViewChanges(unusable)) + Told(Manager().MissedViewGroupChanges(unusable)), "");
  }
}

TEST_F(ChangeNumberTest, ClearingForgetsTheNumbers) {
  const Step clear = [](auto&) { ClearViewData(); };
  const Step load = [](auto&) { Load(10); };
  Play("clearing",
       {Views(V(5, "x", 1, 30, kModified), V(6, "", 1, 31, kDeleted), V(9, "x", 1, 32, kModified)),
        Groups(G(2, "", 1, 33, kDeleted)), Rename(34, 1, "x"), clear, load,
        Views(V(5, "FIVE", 1, 11), V(6, "SIX", -1, 11, kModified), V(9, "nine", 1, 11)),
        Groups(G(2, "TWO", 1, 11), G(1, "ONE", -1, 12))},
       {"5 changed", "top removed view 6", "1 removed group 2"},
       "group 1'ONE' in -1: 5'FIVE' 9'nine' ; group 2'TWO' in 1: ; view 5'FIVE'; view 6'SIX'; view 9'nine'; ");
}

// --- The order itself

TEST(ChangeOrderTest, StaysSmallAndQuickHoweverManyObjectsComeAndGo) {
  constexpr unsigned int kMany = 200000;
  for (const bool rises : {true, false}) {
    ChangeOrder<ViewInfo> order;
    const auto number = [&](unsigned int id) { return rises ? id : ChangeNumber{kMany}; };
    const auto began = std::chrono::steady_clock::now();
    for (unsigned int id = 1; id <= kMany; ++id) {
      order.Reserve(id);
      order.NoteRemoved(id, number(id));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(10));
    const unsigned int oldest = rises ? 180236 : 196609;  // of those that are remembered
    EXPECT_FALSE(order.IsNews(kMany, number(kMany)) || order.IsNews(oldest, number(oldest)));
    EXPECT_TRUE(order.IsNews(oldest - 1, number(oldest - 1)));
  }
}

TEST(ChangeOrderTest, CountsAnObjectThatIsRemovedAgainAndAgainOnce) {
  ChangeOrder<ViewInfo> order;
  order.Reserve(1);
  order.NoteRemoved(1, 5);
  for (ChangeNumber number = 6; number < 70000; ++number) {
    order.Reserve(2);
    order.NoteRemoved(2, number);
  }
  EXPECT_FALSE(order.IsNews(1, 5));
  // Room that was made for nothing hides no load.
  order.StartFrom(80000);
  order.Reserve(3);
  EXPECT_FALSE(order.IsNews(3, 80000));
}

TEST(ChangeOrderTest, RemembersWhatIsCachedAndTheNewestOfWhatWaits) {
  constexpr unsigned int kMany = 70000, kRenamed = 75000;
  ChangeOrder<ViewGroupInfo> order;
  const auto newestName = [&](unsigned int id) { return order.Newest(Group(id), id).strName; };
  order.Reserve(7);
  order.NoteCached(7, 1);
  for (unsigned int id = 100; id < kMany; ++id) {
    order.Reserve(id);
    order.NoteRemoved(id, id);
    ViewGroupInfo kept = Group(id, 0, "kept");
    kept.nChangeNumber = id;
    order.Keep(id, kept);
  }
  for (unsigned int id = kMany; id <= kRenamed; ++id) order.NoteRename(id, id, "own");
  EXPECT_FALSE(order.IsNews(7, 1)) << "of a cached object, however old";
  EXPECT_EQ(newestName(kMany - 1) + newestName(kMany - 64), "keptkept");
  EXPECT_EQ(newestName(kRenamed) + newestName(kRenamed - 4095), "ownown");
  EXPECT_EQ(newestName(kMany - 65) + newestName(kRenamed - 4096), "") << "forgotten";
  ViewGroupInfo heard = Group(kRenamed, 0, "heard");
  heard.nChangeNumber = kRenamed;
  EXPECT_EQ(order.Newest(heard, kRenamed).strName, "heard") << "no less new than the renaming";
  EXPECT_FALSE(order.IsRenameNews(kRenamed, kRenamed));
  order.StartFrom(kRenamed);
  EXPECT_FALSE(order.IsNews(100, kRenamed));
  EXPECT_EQ(newestName(kMany - 1) + newestName(kRenamed), "") << "a list takes the place of all that it holds";
  order.StartFrom(0);
  EXPECT_TRUE(order.IsBlank());
}

TEST(ChangeOrderTest, IsBlankUntilAnythingIsKnown) {
  using Order = ChangeOrder<ViewInfo>;
  constexpr void (*kNotes[])(Order&) = {
      [](Order& order) { order.StartFrom(1); }, [](Order& order) { order.Reserve(1); },
      [](Order& order) { order.Keep(1, View(1)); }, [](Order& order) { order.NoteRename(1, 1, "own"); }};
  for (const auto note : kNotes) {
    Order order;
    EXPECT_TRUE(order.IsBlank());
    note(order);
    EXPECT_FALSE(order.IsBlank());
  }
}

}  // namespace
}  // namespace core_test
