// SPDX-License-Identifier: Apache-2.0
// What the numbers of changes decide: which documents, answers and lists reach the cache and the observers.
#include <algorithm>
#include <chrono>
#include <map>

#include "CoreFixture.h"
#include "QorviViewPlugin/ViewDataManager/ChangeOrder.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

enum Method { kAdded, kModified, kDeleted };

// Elements of documents; number 0: none is said.
std::string Number(ChangeNumber number) {
  return number == 0 ? "" : R"(,"ChangeNumber":")" + std::to_string(number) + '"';
}
std::string V(int id, const std::string& name, int group, ChangeNumber number, Method method = kAdded) {
  return "{\"ID\":" + std::to_string(id) + R"(,"Name":")" + name + R"(","ViewGroupID":)" + std::to_string(group) +
         Number(number) + R"(,"Method":)" + std::to_string(method) + "}";
}
std::string G(int id, const std::string& name, int parent, ChangeNumber number, Method method = kAdded) {
  return "{\"ID\":" + std::to_string(id) + R"(,"Name":")" + name + R"(","ParentViewGroupID":)" +
         std::to_string(parent) + Number(number) + R"(,"Method":)" + std::to_string(method) + "}";
}
std::string Numbered(ChangeNumber number, std::string list) {
  const std::string data = R"("Data":{)";
  return list.insert(list.find(data) + data.size(), R"("ChangeNumber":")" + std::to_string(number) + R"(",)");
}

const std::string kGroups = G(1, "one", -1, 1) + "," + G(2, "two", 1, 2);
const std::string kViews = V(5, "five", 1, 3) + "," + V(6, "six", -1, 4);
// What of the cache does not change in most cases.
const std::string kOne = "group 1'one' in -1: 5'five' ; ", kTwo = "group 2'two' in 1: ; ";
const std::string kFive = "view 5'five'; ", kSix = "view 6'six'; ";
const std::string kAll = kOne + kTwo + kFive + kSix;

class ChangeNumberTest : public CoreTest {
 protected:
  using Step = std::function<void(ChangeNumberTest&)>;
  struct Row {
    const char* what;
    std::vector<Step> steps;
    Texts heard;
    std::string cached = kAll;
  };

  static void Load(ChangeNumber number, const std::string& groups = kGroups, const std::string& views = kViews) {
    Downloads().SetDownloadedData(Numbered(number, GroupsDocument(groups)), Numbered(number, ViewsDocument(views)),
                                  true);
    Call(IsInitViewGroupFinish);
    Call(IsInitViewFinish);
  }
  // Clearing forgets the observers.
  void Watch() {
    for (const char* id : {"1", "2", "3", "4294967295"}) Observe(observer, kViewGroup, id);
    for (const char* id : {"5", "6", "9"}) Observe(observer, kView, id);
  }
  static Step Views(const std::string& elements) {
    return [=](ChangeNumberTest&) { Downloads().NotifyViewsUpdate(ViewsDocument(elements)); };
  }
  static Step Groups(const std::string& elements) {
    return [=](ChangeNumberTest&) { Downloads().NotifyViewGroupsUpdate(GroupsDocument(elements)); };
  }
  // The user's own edits, answered with that number and, where something is added, with an id.
  static Step Own(ChangeNumber number, std::function<bool(unsigned int& id, ErrorCode& error)> edit, int id = 9) {
    return [=](ChangeNumberTest& test) {
      const std::string added = "{\"ID\":" + std::to_string(id) + "}";
      test.server.Answer(Accepted(R"({"View":)" + added + R"(,"ViewGroup":)" + added + Number(number) + "}"));
      unsigned int newId = 0;
      ErrorCode error;
      EXPECT_TRUE(edit(newId, error));
    };
  }
  static Step AddView(ChangeNumber number, const std::string& name, unsigned int group) {
    return Own(number, [=](auto& id, auto& error) { return Manager().AddView(View(kNoId, group, name), id, error); });
  }
  static Step ModifyView(ChangeNumber number, unsigned int id, const std::string& name, unsigned int group) {
    return Own(number, [=](auto&, auto& error) { return Manager().ModifyView(View(id, group, name), error); });
  }
  static Step DeleteView(ChangeNumber number, unsigned int id) {
    return Own(number, [=](auto&, auto& error) { return Manager().DeleteView(id, error); });
  }
  static Step AddGroup(ChangeNumber number, const std::string& name, unsigned int parent) {
    return Own(
        number, [=](auto& id, auto& error) { return Manager().AddViewGroup(Group(0, parent, name), id, error); }, 3);
  }
  static Step Rename(ChangeNumber number, unsigned int id, const std::string& name) {
    return Own(number, [=](auto&, auto& error) { return Manager().ModifyViewGroup(Group(id, 77, name), error); });
  }
  static Step DeleteGroup(ChangeNumber number, unsigned int id) {
    return Own(number, [=](auto&, auto& error) { return Manager().DeleteViewGroup(id, error); });
  }

  // Plays each row upon a load up to number 10.
  void Play(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.what);
      ClearViewData();
      Load(10);
      Watch();
      for (const Step& step : row.steps) step(*this);
      EXPECT_EQ(std::exchange(heard, {}), row.heard);
      EXPECT_EQ(Cached(), row.cached);
    }
  }

  // Notes what happened, shortly.
  class Observer : public ResourceData::IResourceObserver {
   public:
    explicit Observer(Texts& heard) : m_heard(heard) {}
    virtual ~Observer() = default;
    void UpdateResourceInfos(const Param& param) override {
      static const std::map<int, std::string> kStates = {{2, "renamed"}, {3, "added"}, {4, "removed"}, {7, "changed"}};
      std::string text = (param.id == "4294967295" ? "top" : param.id) + " " + kStates.at(param.enum_state);
      if (!param.child_id.empty()) text += (param.child_type == kView ? " view " : " group ") + param.child_id;
      m_heard.push_back(text + (param.name.empty() ? "" : " '" + param.name + "'"));
    }

   private:
    Texts& m_heard;
  };
  Texts heard;
  Observer observer{heard};
};

TEST_F(ChangeNumberTest, WhatIsNotNewerChangesAndTellsNothing) {
  const Step nine = Views(V(9, "nine", 1, 11));
  const std::string withNine = "group 1'one' in -1: 5'five' 9'nine' ; " + kTwo + kFive + kSix + "view 9'nine'; ";
  const Step five = Views(V(5, "FIVE", 1, 11, kModified));
  const Step three = Groups(G(3, "three", 2, 11));
  Play({
      {"views that the load holds",
       {Views(V(5, "old", 1, 10, kModified) + "," + V(9, "old", 1, 10) + "," + V(6, "", -1, 9, kDeleted) + "," +
              V(5, "old", 2, 10))},
       {}},
      {"groups that the load holds",
       {Groups(G(1, "old", -1, 10, kModified) + "," + G(3, "old", 1, 10) + "," + G(2, "", 1, 9, kDeleted) + "," +
               G(1, "old", -1, 10))},
       {}},
      {"an added view twice", {nine, nine}, {"1 added view 9"}, withNine},
      {"a changed view twice",
       {five, five},
       {"5 changed"},
       "group 1'one' in -1: 5'FIVE' 5'FIVE' ; " + kTwo + "view 5'FIVE'; " + kSix},
      {"a view removed twice, and added late",
       {Views(V(6, "", -1, 12, kDeleted)), Views(V(6, "", -1, 12, kDeleted)), Views(V(6, "late", 1, 11))},
       {"top removed view 6"},
       kOne + kTwo + kFive},
      {"a removal before all else of its view",
       {Views(V(9, "", -1, 13, kDeleted)), Views(V(9, "late", 1, 12, kModified)), nine},
       {}},
      {"an added group twice, and an older name",
       {three, three, Groups(G(3, "old", 2, 11, kModified))},
       {"2 added group 3"},
       kOne + kTwo + "group 3'three' in 2: ; " + kFive + kSix},
      {"a group announced anew keeps its members",
       {Groups(G(1, "ONE", -1, 11)), Groups(G(1, "ONE", -1, 11))},
       {"top added group 1"},
       "group 1'ONE' in -1: 5'five' ; " + kTwo + kFive + kSix},
      {"a group renamed twice",
       {Groups(G(1, "ONE", -1, 11, kModified)), Groups(G(1, "ONE", -1, 11, kModified))},
       {"1 renamed 'ONE'"},
       "group 1'ONE' in -1: 5'five' ; " + kTwo + kFive + kSix},
      {"a group removed twice, and added late",
       {Groups(G(2, "", 1, 12, kDeleted)), Groups(G(2, "", 1, 12, kDeleted)), Groups(G(2, "late", 1, 11))},
       {"1 removed group 2"},
       kOne + kFive + kSix},
      {"a removal before all else of its group", {Groups(G(3, "", 2, 12, kDeleted)), three}, {}},
  });
  log->Take();
  Views(V(5, "old", 1, 10, kModified))(*this);
  EXPECT_EQ(log->Take().size(), 1u) << "the document's own line";
}

TEST_F(ChangeNumberTest, WhatComesBeforeItsObjectOrItsGroupWaitsForIt) {
  const Step early = Views(V(9, "new", 2, 12, kModified));
  const std::string nine = kOne + "group 2'two' in 1: 9'new' ; " + kFive + kSix + "view 9'new'; ";
  const std::string three = "group 3'new' in 2: ; ";
  const Step earlyGroup = Groups(G(3, "new", 2, 12, kModified));
  const Step inThree = Views(V(9, "nine", 3, 13));
  const std::string adopted = kOne + kTwo + "group 3'three' in 2: 9'nine' ; " + kFive + kSix + "view 9'nine'; ";
  const auto lingers = [&](const std::string& members) {
    return kOne + "group 2'two' in 1: " + members + "; " + kFive + kSix;
  };
  Play({
      // What is not cached stands among its group's members all the same, once.
      {"a change of a view", {early}, {}, lingers("9'new' ")},
      {"a change of a view, and an older one",
       {early, Views(V(9, "older", 1, 11, kModified)), early},
       {},
       lingers("9'new' ")},
      {"a change of a view, twice, then the view", {early, early, Views(V(9, "old", 1, 11))}, {"2 added view 9"}, nine},
      {"a change of a view, then the answer that adds it", {early, AddView(11, "old", 1)}, {}, nine},
      {"an own change before the answer that adds it", {ModifyView(12, 9, "new", 2), AddView(11, "old", 1)}, {}, nine},
      {"a change of a view, then its removal, then it",
       {early, Views(V(9, "", 2, 13, kDeleted)), Views(V(9, "", 1, 11))},
       {},
       lingers("9'new' 9'' ")},
      {"a change of a group, then the group",
       {earlyGroup, Groups(G(3, "old", 1, 11))},
       {"2 added group 3"},
       kOne + kTwo + three + kFive + kSix},
      {"a change of a group, then the answer",
       {earlyGroup, AddGroup(11, "old", 1)},
       {},
       kOne + kTwo + three + kFive + kSix},
      {"a view, then its group",
       {inThree, Groups(G(3, "three", 2, 11))},
       {"3 added view 9", "2 added group 3"},
       adopted},
      {"a view, then the answer that adds its group", {inThree, AddGroup(11, "three", 2)}, {"3 added view 9"}, adopted},
  });
}

TEST_F(ChangeNumberTest, LateAnswersToOwnEditsYieldToWhatIsNewer) {
  const std::string changed = "group 1'one' in -1: 5'theirs' 5'theirs' ; " + kTwo + "view 5'theirs'; " + kSix;
  const Step theirs = Views(V(5, "theirs", 1, 12, kModified));
  const std::string own = "group 1'one' in -1: ; group 2'two' in 1: 5'own' ; view 5'own'; " + kSix;
  Play({
      {"a change", {theirs, ModifyView(11, 5, "own", 2)}, {"5 changed"}, changed},
      {"a change that is newer", {ModifyView(12, 5, "own", 2), Views(V(5, "theirs", 1, 11, kModified))}, {}, own},
      {"a change without a number", {ModifyView(0, 5, "own", 2), Views(V(5, "older", 1, 10, kModified))}, {}, own},
      {"a deletion", {theirs, DeleteView(11, 5)}, {"5 changed"}, changed},
      {"a deletion that is newer",
       {DeleteView(12, 6), Views(V(6, "theirs", 1, 11, kModified))},
       {},
       kOne + kTwo + kFive},
      {"an addition", {Views(R"({"ID":9,"ChangeNumber":"12","Method":2})"), AddView(11, "own", 1)}, {}},
      {"a group's addition", {Groups(G(3, "", 1, 12, kDeleted)), AddGroup(11, "own", 1)}, {}},
      {"a group's deletion",
       {Groups(G(2, "theirs", 1, 12, kModified)), DeleteGroup(11, 2)},
       {"2 renamed 'theirs'"},
       kOne + "group 2'theirs' in 1: ; " + kFive + kSix},
      {"a group's deletion that is newer",
       {DeleteGroup(12, 2), Groups(G(2, "theirs", 1, 11))},
       {},
       kOne + kFive + kSix},
  });
}

TEST_F(ChangeNumberTest, AnOwnRenamingOfAGroupCountsForItsNameAlone) {
  const auto two = [](const std::string& nameAndParent) {
    return kOne + "group 2" + nameAndParent + ": ; " + kFive + kSix;
  };
  const Step rename = Rename(13, 2, "own");
  const Step move = Groups(G(2, "two", -1, 12, kModified));
  Play({
      {"an older move later", {rename, move, move}, {"2 renamed 'own'"}, two("'own' in -1")},
      {"an older announcement later", {rename, Groups(G(2, "two", -1, 12))}, {"top added group 2"}, two("'own' in -1")},
      {"a newer record later",
       {rename, Groups(G(2, "theirs", -1, 14, kModified)), move},
       {"2 renamed 'theirs'"},
       two("'theirs' in -1")},
      {"an older record, then a newer one",
       {rename, move, Groups(G(2, "theirs", 1, 14, kModified))},
       {"2 renamed 'own'", "2 renamed 'theirs'"},
       two("'theirs' in 1")},
      {"a newer record before",
       {Groups(G(2, "theirs", -1, 14, kModified)), rename},
       {"2 renamed 'theirs'"},
       two("'theirs' in -1")},
      {"two in the wrong order", {rename, Rename(12, 2, "before"), move}, {"2 renamed 'own'"}, two("'own' in -1")},
      {"its own event", {rename, Groups(G(2, "own", 1, 13, kModified)), move}, {"2 renamed 'own'"}, two("'own' in 1")},
      {"before its group",
       {Rename(13, 3, "own"), Groups(G(3, "old", 2, 11))},
       {"2 added group 3"},
       kOne + kTwo + "group 3'own' in 2: ; " + kFive + kSix},
      {"a removal later",
       {rename, Groups(G(2, "", 1, 14, kDeleted)), move},
       {"1 removed group 2"},
       kOne + kFive + kSix},
      {"one without a number", {Rename(0, 2, "own"), move}, {"2 renamed 'two'"}, two("'two' in -1")},
  });
}

TEST_F(ChangeNumberTest, WhatHasNoNumberIsTakenAsItComes) {
  const std::string five = "group 1'one' in -1: 5'five' 5'new' ; " + kTwo + "view 5'new'; " + kSix;
  Play({
      {"beside elements with numbers, which go on counting",
       {Views(V(6, "SIX", -1, 0, kModified) + "," + V(5, "FIVE", -1, 12, kModified)),
        Views(V(6, "SIX!", -1, 0, kModified) + "," + V(5, "older", -1, 11, kModified))},
       {"6 changed", "5 changed", "6 changed"},
       "group 1'one' in -1: 5'FIVE' ; " + kTwo + "view 5'FIVE'; view 6'SIX!'; "},
      {"and after a document of nothing else lower numbers are news",
       {Views(V(6, "SIX", -1, 0, kModified)), Views(V(5, "FIVE", -1, 3, kModified))},
       {"6 changed", "5 changed"},
       "group 1'one' in -1: 5'FIVE' ; " + kTwo + "view 5'FIVE'; view 6'SIX'; "},
      {"as after one of nothing at all",
       {Views(""), Views(V(5, "FIVE", -1, 3, kModified))},
       {"5 changed"},
       "group 1'one' in -1: 5'FIVE' ; " + kTwo + "view 5'FIVE'; " + kSix},
      {"but not after one of groups, or of another's refusal",
       {Groups(""), [](auto&) { Downloads().NotifyViewsUpdate(Refused(1, 1)); }, Views(V(5, "x", 1, 3, kModified))},
       {}},
      {"groups too",
       {Rename(20, 2, "own"), Groups(""), Groups(G(2, "theirs", 1, 3, kModified))},
       {"2 renamed 'theirs'"},
       kOne + "group 2'theirs' in 1: ; " + kFive + kSix},
      {"groups beside groups with numbers",
       {Groups(G(1, "ONE", -1, 0, kModified) + "," + G(2, "TWO", 1, 12, kModified)),
        Groups(G(2, "old", 1, 11, kModified))},
       {"1 renamed 'ONE'", "2 renamed 'TWO'"},
       "group 1'ONE' in -1: 5'five' ; group 2'TWO' in 1: ; " + kFive + kSix},
  });
}

TEST_F(ChangeNumberTest, ANumberIsDecimalDigitsOrNone) {
  const std::pair<const char*, size_t> numbers[] = {
      {"\"11\"", 1},
      {"11", 1},
      {"\"9223372036854775808\"", 1},
      {"\"18446744073709551615\"", 1},
      {"\"18446744073709551616\"", 2},
      {"\"0\"", 2},
      {"0", 2},
      {"\"\"", 2},
      {"\"x\"", 2},
      {"\"-11\"", 2},
      {"-11", 2},
      {"\" 11\"", 2},
      {"\"11.5\"", 2},
      {"null", 2},
      {"true", 2},
      {"{}", 2},
      {"[\"11\"]", 2},
      {"\"3\"", 0},
  };
  for (const auto& [number, times] : numbers) {
    ClearViewData();
    Load(10);
    Watch();
    for (int n = 0; n < 2; ++n) {
      const std::string said = std::string(R"(,"ChangeNumber":)") + number + R"(,"Method":1})";
      Views(R"({"ID":6,"Name":"six")" + said)(*this);
      Groups(R"({"ID":2,"Name":"two","ParentViewGroupID":1)" + said)(*this);
    }
    const Texts notices = std::exchange(heard, {});
    EXPECT_EQ(std::count(notices.begin(), notices.end(), "6 changed"), times) << number;
    EXPECT_EQ(std::count(notices.begin(), notices.end(), "2 renamed 'two'"), times) << number;
  }
}

TEST_F(ChangeNumberTest, ALoadTakesWhatIsNewerAndKeepsWhatIsNewerStill) {
  Load(10);
  const struct {
    const char* what;
    std::vector<Step> before;
    ChangeNumber number;
    std::string groups, views;
    std::string cached;
  } rows[] = {
      {"a view that the list has newer",
       {Views(V(5, "before", 2, 11))},
       12,
       kGroups,
       V(5, "loaded", 1, 12),
       "group 1'one' in -1: 5'loaded' ; " + kTwo + "view 5'loaded'; "},
      {"a view that the list has older",
       {Views(V(5, "before", 2, 12))},
       11,
       kGroups,
       V(5, "loaded", 1, 3),
       "group 1'one' in -1: ; group 2'two' in 1: 5'before' ; view 5'before'; "},
      {"a view that is gone",
       {Views(V(9, "before", 1, 11) + "," + V(6, "before", 1, 12))},
       11,
       kGroups,
       kViews,
       "group 1'one' in -1: 5'five' 6'before' ; " + kTwo + kFive + "view 6'before'; "},
      {"a view that the list has not yet",
       {Views(V(9, "before", 1, 12))},
       11,
       kGroups,
       kViews,
       "group 1'one' in -1: 9'before' 5'five' ; " + kTwo + kFive + kSix + "view 9'before'; "},
      {"a view that was removed since",
       {Views(V(5, "", 1, 12, kDeleted))},
       11,
       kGroups,
       kViews,
       "group 1'one' in -1: ; " + kTwo + kSix},
      {"a view whose change waits for it",
       {Views(V(5, "newer", 2, 12, kModified))},
       11,
       kGroups,
       kViews,
       "group 1'one' in -1: ; group 2'two' in 1: 5'newer' ; view 5'newer'; " + kSix},
      {"a view of the same number", {Views(V(5, "five", 1, 3))}, 11, kGroups, kViews, kAll},
      {"views without numbers",
       {Views(V(5, "before", 1, 12))},
       13,
       kGroups,
       V(5, "loaded", 2, 0) + "," + V(6, "six", 2, 0),
       "group 1'one' in -1: 5'before' ; group 2'two' in 1: 6'six' ; view 5'before'; " + kSix},
      {"groups",
       {Groups(G(1, "before", -1, 11) + "," + G(2, "before", -1, 13) + "," + G(3, "gone", -1, 12) + "," +
               G(4, "later", -1, 13))},
       12,
       G(1, "loaded", -1, 12) + "," + G(2, "loaded", 1, 2) + "," + G(7, "bare", -1, 0),
       "",
       "group 1'loaded' in -1: ; group 2'before' in -1: ; group 4'later' in -1: ; group 7'bare' in -1: ; "},
      {"a group that was removed since", {Groups(G(2, "", 1, 12, kDeleted))}, 11, kGroups, kViews, kOne + kFive + kSix},
      {"a group that was renamed since",
       {Rename(12, 2, "own")},
       11,
       kGroups,
       kViews,
       kOne + "group 2'own' in 1: ; " + kFive + kSix},
      {"a group that was renamed before",
       {Rename(11, 2, "own")},
       12,
       G(1, "one", -1, 1) + "," + G(2, "loaded", 1, 12),
       kViews,
       kOne + "group 2'loaded' in 1: ; " + kFive + kSix},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    ClearViewData();
    for (const Step& step : row.before) step(*this);
    Load(row.number, row.groups, row.views);
    EXPECT_EQ(Cached(), row.cached);
    // What the list held counts from here on; so does what was newer.
    Views(V(5, "late", 1, row.number) + "," + V(6, "late", 1, row.number) + "," + V(9, "late", 1, row.number))(*this);
    Groups(G(1, "late", -1, row.number) + "," + G(2, "late", -1, row.number))(*this);
    EXPECT_EQ(Cached(), row.cached);
  }
}

TEST_F(ChangeNumberTest, ClearingForgetsTheNumbers) {
  Load(10);
  Play(
      {{"clearing",
        {Views(V(5, "x", 1, 30, kModified) + "," + V(6, "", 1, 31, kDeleted) + "," + V(9, "x", 1, 32, kModified)),
         Groups(G(2, "", 1, 33, kDeleted)), Rename(34, 1, "x"), [](auto&) { ClearViewData(); }, [](auto&) { Load(10); },
         Views(V(5, "FIVE", 1, 11) + "," + V(6, "SIX", -1, 11, kModified) + "," + V(9, "nine", 1, 11)),
         Groups(G(2, "TWO", 1, 11) + "," + G(1, "ONE", -1, 12))},
        {"5 changed", "top removed view 6", "1 removed group 2"},
        "group 1'ONE' in -1: 5'FIVE' 9'nine' ; group 2'TWO' in 1: ; view 5'FIVE'; view 6'SIX'; view 9'nine'; "}});
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
    EXPECT_FALSE(order.IsNews(kMany, number(kMany)));
    EXPECT_TRUE(order.IsNews(1, number(1))) << "the oldest ones are forgotten";
    EXPECT_TRUE(!rises || !order.IsNews(kMany - 10000, number(kMany - 10000)));
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
  constexpr unsigned int kMany = 70000, kRenames = 5000;
  ChangeOrder<ViewGroupInfo> order;
  order.Reserve(7);
  order.NoteCached(7, 1);
  for (unsigned int id = 100; id < kMany; ++id) {
    order.Reserve(id);
    order.NoteRemoved(id, id);
    ViewGroupInfo kept = Group(id, 0, "kept");
    kept.nChangeNumber = id;
    order.Keep(id, kept);
  }
  for (unsigned int id = kMany; id < kMany + kRenames; ++id) order.NoteRename(id, id, "own");
  EXPECT_FALSE(order.IsNews(7, 1)) << "of a cached object, however old";
  EXPECT_EQ(order.Newest(Group(kMany - 1), kMany - 1).strName, "kept");
  EXPECT_EQ(order.Newest(Group(100), 100).strName, "") << "forgotten";
  EXPECT_EQ(order.Newest(Group(kMany + kRenames - 1), kMany + kRenames - 1).strName, "own");
  EXPECT_FALSE(order.IsRenameNews(kMany + kRenames - 1, kMany + kRenames - 1));
  EXPECT_EQ(order.Newest(Group(kMany), kMany).strName, "") << "forgotten";
  // A list takes the place of all that it holds.
  order.StartFrom(kMany + kRenames);
  EXPECT_FALSE(order.IsNews(100, kMany + kRenames));
  EXPECT_EQ(order.Newest(Group(kMany - 1), kMany - 1).strName, "");
  EXPECT_EQ(order.Newest(Group(kMany + kRenames - 1), kMany + kRenames - 1).strName, "");
  order.StartFrom(0);
  EXPECT_TRUE(order.IsBlank());
}

}  // namespace
}  // namespace core_test
