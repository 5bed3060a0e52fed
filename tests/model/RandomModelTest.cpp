// SPDX-License-Identifier: Apache-2.0
// Three clients and an administrator edit one site at random, each client and the server a process of its own. At every
// quiet point the store must be whole, and each edit must have taken effect once if it was accepted and at most once if
// it was not.
//
// Without faults, each object has one editor at a time, and caches must hold what the documented rules predict from the
// changes that stand in the server's store, to the last entry. With faults, exchanges and change streams go wrong,
// clients end and the server is killed in the midst of edits. Crossing, all edit the same objects several times in a
// row while answers and change streams are late by random times, some load anew meanwhile, and in runs with an odd seed
// the server keeps so few changes that clients must download again. In both, caches must hold what the server does.
//
// MODEL_SECONDS sets how long each of the three tests runs, RANDOM_MODEL_SEED repeats a run.

#include <cstdlib>
#include <iostream>
#include <random>
#include <thread>
#include <vector>

#include "../Cases.h"
#include "../endtoend/ScriptClient.h"
#include "../server/TestClient.h"
#include "CacheCheck.h"
#include "RandomEdits.h"
#include "ServerProcess.h"
#include "StoreReader.h"
#include "base/system/Files.h"
#include "host/JsonText.h"

namespace {

using host::TextOf;
using test::ScriptClient;
using testing_support::Cases;
using Clock = std::chrono::steady_clock;

constexpr int kGroupType = 16001;

enum class Mode { NoFaults, Faults, Crossing };

const char* const kSeed = R"({"Users":[{"ID":1,"Name":"ann","Password":"a"},{"ID":2,"Name":"bob","Password":"b"},
    {"ID":3,"Name":"admin","Password":"c"},{"ID":4,"Name":"colleague","Password":"d"}],
    "ViewGroups":[{"ID":1,"Name":"marker"}]})";

uint32_t Given(const char* variable, uint32_t otherwise) {
  const char* const text = std::getenv(variable);
  return text ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

struct Counts {
  size_t edits = 0, accepted = 0, kills = 0, clientsKilled = 0, reloads = 0, comparisons = 0, changes = 0;
};

class RandomModelTest : public ::testing::TestWithParam<Mode>, protected RandomEdits {
 protected:
  RandomModelTest() : RandomEdits(Given("RANDOM_MODEL_SEED", std::random_device()()), GetParam() == Mode::Crossing) {
    std::cout << "seed " << m_seed << std::endl;
    m_folder = base::MakeTemporaryFolder("random-model-");
    const QStringList options = m_isLogShort ? QStringList{"--keep-changes", "12"} : QStringList();
    m_server = std::make_unique<ServerProcess>(m_folder, kSeed, FaultPlan(m_seed), options);
    m_store = std::make_unique<StoreReader>(m_server->StoreFile());
    m_truth = m_store->Tables();
    m_heard = m_store->LastChange();
    m_admin = {m_server->Port(), server::test::Client(m_server->Port(), "").LogIn("admin", "c").Token()};
    m_adminSession = m_store->NewestSession(kAdmin);
    for (Player& player : m_players) StartPlayer(player);
  }
  ~RandomModelTest() override {
    for (Player& player : m_players) player.script.reset();
    m_store.reset();
    m_server.reset();
    std::error_code ignored;
    if (!HasFailure()) std::filesystem::remove_all(m_folder, ignored);
  }

  std::string FaultPlan(uint32_t seed) const {
    if (GetParam() == Mode::NoFaults) return "";
    auto rules = Cases(FAULT_PLANS, m_hasFaults ? "Faults" : "Crossing");
    if (m_isLogShort) std::ranges::copy(Cases(FAULT_PLANS, "BrokenStreams"), std::back_inserter(rules));
    std::string text;
    for (const auto& rule : rules) text += (text.empty() ? "" : ",") + rule.text;
    return R"({"Seed":)" + std::to_string(seed & 0x7fffffff) + R"(,"Rules":[)" + text + "]}";
  }

  // Answers how many changes it must have made.
  size_t EditAsAdmin(const AdminEdit& edit) {
    ++m_counts.edits;
    try {
      if (m_admin.Request(edit.method, edit.path, edit.body).Outcome() != "0/0 200") return 0;
    } catch (const std::exception&) {
      return 0;  // the server was not there
    }
    ++m_counts.accepted;
    const bool isShare = edit.path.find("/Share") != std::string::npos;
    return isShare ? 0 : edit.most;  // who it is shared with may have it already
  }

  // --- one step: some or all of the actors edit at once -------------------------------------------------------------

  void Step(const std::vector<Player*>& actors, bool withAdmin) {
    const Id before = m_store->LastChange();
    std::vector<Edit> edits;
    for (size_t a = 0; a < actors.size(); ++a) {
      edits.push_back(ChooseEdit(*actors[a], a));
      actors[a]->script->Begin(edits.back().function, edits.back().request);
    }
    const AdminEdit adminEdit = withAdmin ? ChooseAdminEdit(actors.size()) : AdminEdit();
    const size_t adminLeast = withAdmin ? EditAsAdmin(adminEdit) : 0;
    if (m_hasFaults && Chance(20)) KillServer();
    for (size_t a = 0; a < actors.size(); ++a) {
      if (!FinishEdit(*actors[a], edits[a])) edits[a].least = 0;
    }
    const std::vector<Row> rows = m_store->ChangesAfter(before);
    for (size_t a = 0; a < actors.size(); ++a) {
      const size_t made = CountOf(rows, actors[a]->session);
      EXPECT_LE(made, edits[a].most) << edits[a].function << edits[a].request;
      EXPECT_GE(made, edits[a].least) << edits[a].function << edits[a].request;
    }
    const size_t made = CountOf(rows, m_adminSession);
    EXPECT_TRUE(made == 0 || made == adminEdit.most) << made << " of " << adminEdit.path << adminEdit.body;
    EXPECT_GE(made, adminLeast) << adminEdit.path << adminEdit.body;
  }

  // All edit the same objects, several times in a row and each at its own pace.
  void Burst() {
    const Id before = m_store->LastChange();
    std::vector<std::vector<Edit>> edits;
    std::vector<bool> reloads;
    for (Player& player : m_players) {
      std::vector<Edit>& own = edits.emplace_back();
      for (size_t left = 1 + Below(5); left > 0; --left) {
        own.push_back(ChooseEdit(player, 0));
        player.script->Begin(own.back().function, own.back().request);
      }
      reloads.push_back(Chance(60));
      if (!reloads.back()) continue;
      player.script->BeginReload();
      player.script->BeginObserve(kGroupType, Str(kMarker));
    }
    size_t adminLeast = 0;
    for (size_t left = Below(6); left > 0; --left) {
      std::this_thread::sleep_for(std::chrono::milliseconds(Below(20)));
      NoteTables();
      adminLeast += EditAsAdmin(ChooseAdminEdit(0));
    }
    std::vector<size_t> least(std::size(m_players));
    for (size_t p = 0; p < std::size(m_players); ++p) {
      for (const Edit& edit : edits[p]) least[p] += FinishEdit(m_players[p], edit) ? edit.least : 0;
      if (!reloads[p]) continue;
      m_players[p].script->FinishReload();
      m_players[p].script->FinishObserve();
      ++m_counts.reloads;
    }
    if (m_isLogShort) return;
    const std::vector<Row> rows = m_store->ChangesAfter(before);
    for (size_t p = 0; p < std::size(m_players); ++p) {
      const size_t made = CountOf(rows, m_players[p].session);
      EXPECT_TRUE(made >= least[p] && made <= edits[p].size()) << made << " changes of " << m_players[p].name;
    }
    EXPECT_GE(CountOf(rows, m_adminSession), adminLeast);
  }

  static size_t CountOf(const std::vector<Row>& rows, Id session) {
    return static_cast<size_t>(std::ranges::count(rows, session, &Row::session));
  }

  bool FinishEdit(Player& player, const Edit& edit) {
    ++m_counts.edits;
    if (m_hasFaults && Chance(4)) {  // the client goes in the midst of its edit
      player.script->Kill();
      player.script.reset();
      ++m_counts.clientsKilled;
      // What it asked for may still be on its way to the server.
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      return false;
    }
    ScriptClient::Answer answer = player.script->Finish();
    // An add that is answered with nothing at all fails without a word.
    if (edit.function.rfind("Add", 0) == 0 && TextOf(answer.response, "ID") == "-1") answer.result = false;
    if (edit.refused) {
      EXPECT_FALSE(answer.result) << edit.function << edit.request;
    } else if (GetParam() == Mode::NoFaults) {
      EXPECT_TRUE(answer.result) << edit.function << edit.request << answer.text;
    }
    if (answer.result) edit.accepted(answer);
    m_counts.accepted += answer.result;
    return answer.result;
  }

  // Nobody else has the store open when it goes, so that the server itself must recover it.
  void KillServer() {
    m_store.reset();
    std::this_thread::sleep_for(std::chrono::microseconds(Below(5000)));
    m_server->Kill();
    m_server->SetFaultPlan(FaultPlan(m_random()));  // or the same exchanges would go wrong again
    m_server->Start();
    m_store = std::make_unique<StoreReader>(m_server->StoreFile());
    EXPECT_EQ(m_store->IntegrityCheck(), "ok");
    ++m_counts.kills;
  }

  // --- quiet points --------------------------------------------------------------------------------------------------

  void StartPlayer(Player& player) {
    QStringList options;
    if (m_isLogShort) options << "--log-file" << QString::fromStdString(LogOf(player));
    player.script = std::make_unique<ScriptClient>(m_server->Url(), player.name, player.name.substr(0, 1), options);
    player.session = m_store->NewestSession(player.user);
    player.script->Observe(kGroupType, Str(kMarker));
    player.model.Load(m_truth, player.user);
  }

  // What is in the tables has been given.
  void NoteTables() {
    m_truth = m_store->Tables();
    for (const auto& [id, group] : m_truth.groups) m_groupsGiven.insert(id);
    for (const auto& [id, view] : m_truth.views) NotePlace(view);
  }
  void NotePlace(const ViewRecord& view) {
    m_viewsGiven = std::max(m_viewsGiven, view.id);
    m_places[view.id].insert(view.group);
  }

  // Renames the marker for sure: an answer may be lost, and so may be the edit.
  void RenameMarker() {
    const std::string name = "marker " + std::to_string(m_turn);
    for (int tries = 0; tries < 100; ++tries) {
      EditAsAdmin({"PUT", "V0/ViewGroups/" + Str(kMarker), server::test::GroupBody(name, -1, -1)});
      if (m_store->Tables().groups.at(kMarker).name == name) return;
    }
    FAIL() << "the marker cannot be renamed";
  }

  void ComeToRest() {
    RenameMarker();
    const Id before = m_heard;
    const std::vector<Row> rows = m_store->ChangesAfter(before);
    if (m_isLogShort && !rows.empty()) m_heard = rows.front().number - 1;
    for (const Row& row : rows) {
      ASSERT_EQ(row.number, ++m_heard) << "numbers grow by one";
      row.FoldInto(m_truth);
      if (row.isView && !row.Deleted()) NotePlace(row.view);
    }
    m_counts.changes += static_cast<size_t>(m_heard - before);
    const Truth tables = m_store->Tables();
    if (!m_isLogShort) {
      EXPECT_TRUE(tables.groups == m_truth.groups && tables.views == m_truth.views) << "tables and changes differ";
    }
    NoteTables();
    for (Player& player : m_players) player.script ? HearAll(player, rows) : StartPlayer(player);
  }

  // Up to the marker's new name.
  void HearAll(Player& player, const std::vector<Row>& rows) {
    if (m_crosses) {  // who loads anew misses names
      while (player.script->NextNotice().name != m_truth.groups.at(kMarker).name) {
      }
    } else {
      for (const Row& row : rows) {
        if (row.session != player.session) row.Tell(player.user, player.model);  // its own edits come without a call
        // Each renaming is heard once and in order, hence so is all between them.
        if (!row.isView && row.Object() == kMarker) {
          ASSERT_EQ(player.script->NextNotice().name, row.group.name);
        }
      }
    }
    if (GetParam() != Mode::NoFaults) player.model.Load(m_truth, player.user);  // answers may have been lost
  }

  // --- comparison ----------------------------------------------------------------------------------------------------

  void ExpectCacheAsPredicted(Player& player) {
    EXPECT_EQ(CacheCheck(*player.script).AgainstModel(player.model), "") << player.name;
    const Id absent = static_cast<Id>(1 + Below(static_cast<size_t>(m_names) + 1));
    EXPECT_EQ(player.script->Call("GetPlanDetail", R"({"ID":")" + Str(absent) + "\"}").result,
              player.model.HasView(absent));
  }

  // Of the views that are gone, those given last and some others; or all.
  CacheCheck::OnServer WhatIsOnServer(const Player& player, bool withAllThatIsGone) {
    CacheCheck::OnServer server;
    server.loaded.Load(m_truth, player.user);
    const Id end = m_viewsGiven + 10;
    for (Id id = withAllThatIsGone ? 1 : std::max<Id>(1, end - 60); id < end; ++id) server.views.push_back(id);
    for (int i = 0; i < 10; ++i) server.views.push_back(static_cast<Id>(1 + Below(static_cast<size_t>(end))));
    server.groups.push_back(kNone);
    std::copy_if(m_groupsGiven.begin(), m_groupsGiven.end(), std::back_inserter(server.groups), [&](Id id) {
      return withAllThatIsGone || m_truth.groups.count(id) > 0 || id + 20 > *m_groupsGiven.rbegin();
    });
    // Where changes are not kept, nobody can say where a view has been.
    server.mayLinger = [this](Id group, Id view) {
      return m_isLogShort ? view < m_viewsGiven + 10 : m_places[view].count(group) > 0;
    };
    server.mayHaveMoved = [this](Id view) { return m_isLogShort || m_places[view].size() > 1; };
    return server;
  }

  // What is told of edits whose answers were lost, and what a download that was made again tells, may come after the
  // marker; all else has come with it.
  void ExpectCacheAsOnServer(Player& player, bool withAllThatIsGone) {
    const CacheCheck::OnServer server = WhatIsOnServer(player, withAllThatIsGone);
    std::string wrong = CacheCheck(*player.script).AgainstServer(server);
    for (int tries = 0; (m_hasFaults || m_isLogShort) && !wrong.empty() && tries < 100; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      wrong = CacheCheck(*player.script).AgainstServer(server);
    }
    EXPECT_EQ(wrong, "") << player.name;
  }

  void CompareAll(bool withAllThatIsGone) {
    for (Player& player : m_players) {
      GetParam() == Mode::NoFaults ? ExpectCacheAsPredicted(player) : ExpectCacheAsOnServer(player, withAllThatIsGone);
      ++m_counts.comparisons;
    }
  }

  // --- turns ---------------------------------------------------------------------------------------------------------

  void Turn() {
    ++m_turn;
    if (m_crosses) {
      for (size_t left = 1 + Below(4); left > 0 && !HasFailure(); --left) Burst();
    } else {
      TakeSteps();
    }
    ASSERT_FALSE(HasFailure());
    ComeToRest();
    CompareAll(false);
    for (Player& player : m_players) {
      if (!Chance(50)) continue;
      player.script->Reload();
      player.script->Observe(kGroupType, Str(kMarker));
      player.model.Load(m_truth, player.user);
      ++m_counts.reloads;
    }
  }

  void TakeSteps() {
    m_groupWent = false;
    const bool alone = Chance(400);
    const size_t players = std::size(m_players);
    m_actors = alone ? 1 : players + 1;
    const size_t loner = Below(players + 1);
    for (size_t left = 1 + Below(6); left > 0 && !HasFailure(); --left) {
      std::vector<Player*> actors;
      for (size_t p = 0; p < players; ++p) {
        if ((!alone || p == loner) && m_players[p].script) actors.push_back(&m_players[p]);
      }
      // What the group held stays in the cache until the server's own changes come, but cannot be edited any more.
      if (std::exchange(m_groupWent, false) && !m_hasFaults) break;
      // Who is away leaves a gap, or others would take its objects.
      if (!alone && actors.size() != players) break;
      Step(actors, !alone || loner == players);
    }
  }

  std::string LogOf(const Player& player) const {
    return m_folder + "/client" + std::to_string(&player - m_players) + ".log";
  }

  const bool m_hasFaults = GetParam() == Mode::Faults;
  const bool m_isLogShort = m_crosses && m_seed % 2 == 1;
  std::string m_folder;
  std::unique_ptr<ServerProcess> m_server;
  std::unique_ptr<StoreReader> m_store;
  server::test::Client m_admin;
  Id m_adminSession = 0;
  Player m_players[3] = {{"ann", 1}, {"ann", 1}, {"bob", 2}};
  Id m_heard = 0;  // the last change in it
  std::set<Id> m_groupsGiven;
  Id m_viewsGiven = 0;                  // the highest
  std::map<Id, std::set<Id>> m_places;  // by view: the groups that it has been in
  Counts m_counts;
};

TEST_P(RandomModelTest, CachesAndStoreHoldWhatTheRulesPredict) {
  const auto end = Clock::now() + std::chrono::seconds(Given("MODEL_SECONDS", 6));
  while (Clock::now() < end && !HasFailure()) {
    Turn();
    ASSERT_FALSE(HasFailure()) << "turn " << m_turn << ", seed " << m_seed << ", folder " << m_folder;
  }
  CompareAll(true);
  EXPECT_EQ(m_store->IntegrityCheck(), "ok");
  size_t downloadsMadeAgain = 0;
  for (const Player& player : m_players) downloadsMadeAgain += CountLines(LogOf(player), "(HTTP 410");
  std::cout << m_counts.edits << " edits made, " << m_counts.accepted << " accepted, " << m_counts.changes
            << " changes; " << m_server->Faults() << " faults injected; " << m_counts.kills
            << " kills of the server and " << m_counts.clientsKilled << " of clients survived; " << m_counts.reloads
            << " reloads, " << downloadsMadeAgain << " downloads made again; " << m_counts.comparisons
            << " comparisons of caches" << std::endl;
}

const char* const kModeNames[] = {"NoFaults", "Faults", "Crossing"};

INSTANTIATE_TEST_SUITE_P(All, RandomModelTest, ::testing::Values(Mode::NoFaults, Mode::Faults, Mode::Crossing),
                         [](const auto& run) { return kModeNames[static_cast<size_t>(run.param)]; });

}  // namespace
