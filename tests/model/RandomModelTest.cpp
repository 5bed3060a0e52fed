// SPDX-License-Identifier: Apache-2.0
// Three clients and an administrator edit one site at random, each client and the server a process of its own. At every
// quiet point the caches must hold what the documented rules predict from the changes that stand in the server's store,
// each edit must have taken effect once if it was accepted and at most once if it was not, and the store must be whole.
// With faults, exchanges and change streams go wrong, clients end and the server is killed in the midst of edits.
//
// MODEL_SECONDS sets how long each of the two tests runs, RANDOM_MODEL_SEED repeats a run.

#include <cstdlib>
#include <iostream>
#include <random>
#include <thread>

#include "../endtoend/ScriptClient.h"
#include "../server/TestClient.h"
#include "CacheModel.h"
#include "ServerProcess.h"
#include "StoreReader.h"
#include "host/JsonText.h"

namespace {

using host::ListOf;
using host::NumberOf;
using host::TextOf;
using test::ScriptClient;
using Clock = std::chrono::steady_clock;

constexpr int kGroupType = 16001;
constexpr Id kMarker = 1;  // a group whose renaming tells that all that came before has been heard of
constexpr Id kAdmin = 3;
constexpr size_t kManyViews = 70;

const char* const kSeed = R"({"Users":[{"ID":1,"Name":"ann","Password":"a"},{"ID":2,"Name":"bob","Password":"b"},
    {"ID":3,"Name":"admin","Password":"c"},{"ID":4,"Name":"colleague","Password":"d"}],
    "ViewGroups":[{"ID":1,"Name":"marker"}]})";

// Logging in stays as it is, and nothing makes an answer say something that is not so.
std::string FaultPlanText(uint32_t seed) {
  return R"({"Seed":)" + std::to_string(seed & 0x7fffffff) + R"(,"Rules":[
    {"Fault":"ColleagueEdit","Method":"PUT","Path":"V0/Views/#","Chance":0.06,
     "Colleague":{"User":"colleague","Method":"DELETE","Path":"V0/Views/#"}},
    {"Fault":"Delay","Path":"V*/View*","Chance":0.05,"Milliseconds":15},
    {"Fault":"DropBefore","Path":"V*/View*","Chance":0.04},
    {"Fault":"DropAfter","Path":"V*/View*","Chance":0.05},
    {"Fault":"Truncate","Path":"V*/View*","Chance":0.04},
    {"Fault":"EmptyBody","Path":"V*/View*","Chance":0.03},
    {"Fault":"MissingErrorCode","Path":"V*/View*","Chance":0.03},
    {"Fault":"WrongKinds","Method":"PUT","Path":"V0/View*","Chance":0.04},
    {"Fault":"WrongKinds","Method":"DELETE","Path":"V0/View*","Chance":0.04},
    {"Fault":"DropAfter","Path":"V0/Changes","Chance":0.1},
    {"Fault":"DuplicateChange","Chance":0.04},
    {"Fault":"LateChange","Chance":0.02,"Milliseconds":20},
    {"Fault":"TruncateChange","Chance":0.005},
    {"Fault":"StallStream","Chance":0.003,"Milliseconds":100}]})";
}

std::chrono::seconds RunningTime() {
  const char* const seconds = std::getenv("MODEL_SECONDS");
  return std::chrono::seconds(seconds ? std::strtol(seconds, nullptr, 10) : 8);
}

uint32_t Seed() {
  const char* const fixed = std::getenv("RANDOM_MODEL_SEED");
  return fixed ? static_cast<uint32_t>(std::strtoul(fixed, nullptr, 10)) : std::random_device()();
}

std::string Str(Id id) {
  return std::to_string(id);
}

template <class Record>
std::vector<Record> Values(const std::map<Id, Record>& records) {
  std::vector<Record> values;
  for (const auto& [id, record] : records) values.push_back(record);
  return values;
}

std::string Pages(uint32_t windows) {
  std::string items;
  for (uint32_t w = 0; w < windows; ++w) {
    items += std::string(w ? "," : "") + R"({"Sequence":)" + std::to_string(w) +
             R"(,"ResourceType":1001,"ResourceID":"2001","SiteID":"1","WindowNo":)" + std::to_string(w) + "}";
  }
  return R"([{"windowDivision":4,"PlanItems":[)" + items + "]}]";
}

// With the view's id, where it has one.
std::string PlanRequest(const ViewRecord& view) {
  host::ObjectText request;
  if (view.id != kNone) request.Add("ID", Str(view.id));
  return request.Add("GroupID", Str(view.group))
      .Add("Name", view.name)
      .Add("Type", view.owner == kPublic ? 0 : 1)
      .Add("RoundTime", view.cycleTime)
      .AddRaw("PlanPages", Pages(view.windows))
      .Text();
}

// One client, with what its cache must hold.
struct Player {
  std::string name;
  Id user;
  Id session = 0;
  std::unique_ptr<ScriptClient> script = nullptr;  // null while it is away
  CacheModel model = {};
};

// An edit to be asked for.
struct Edit {
  std::string function, request;
  std::function<void(const ScriptClient::Answer&)> accepted;
  size_t least = 1, most = 1;  // changes of its own that it makes where it is accepted
  bool refused = false;        // the server cannot agree
};

struct Counts {
  size_t edits = 0, accepted = 0, kills = 0, clientsKilled = 0, reloads = 0, comparisons = 0, changes = 0;
};

class RandomModelTest : public ::testing::TestWithParam<bool> {
 protected:
  RandomModelTest() : m_seed(Seed()), m_random(m_seed) {
    std::cout << "seed " << m_seed << std::endl;
    std::string pattern = (std::filesystem::temp_directory_path() / "random-model-XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    m_server = std::make_unique<ServerProcess>(m_folder, kSeed, GetParam() ? FaultPlanText(m_seed) : "");
    m_store = std::make_unique<StoreReader>(m_server->StoreFile());
    m_truth = m_store->Tables();
    m_heard = m_store->LastChange();
    const auto login = server::test::Client(m_server->Port(), "").LogIn("admin", "c");
    m_admin = server::test::Client(m_server->Port(), login.Data()["Session"]["Token"].GetString());
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

  size_t Below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(m_random); }
  bool Chance(int permille) { return Below(1000) < static_cast<size_t>(permille); }
  std::string PlainName() { return "n" + std::to_string(++m_names); }
  std::string NewName() { return PlainName() + (Chance(200) ? " \u00e9\u6f22\"\\" : ""); }

  // --- what is edited ------------------------------------------------------------------------------------------------

  // Within a turn each object belongs to one actor, so that what one edits and what it hears do not depend on the order
  // in which they come.
  bool IsMine(Id id, size_t actor) const { return m_actors == 1 || (id + m_turn) % m_actors == actor; }

  template <class T>
  std::optional<T> PickFrom(const std::vector<T>& all) {
    if (all.empty()) return std::nullopt;
    return all[Below(all.size())];
  }

  template <class Record>
  std::optional<Record> PickMine(std::vector<Record> all, size_t actor) {
    std::erase_if(all, [&](const Record& record) {
      return !IsMine(record.id, actor) || (std::is_same_v<Record, GroupRecord> && record.id == kMarker);
    });
    return PickFrom(all);
  }

  // A folder for content of that owner, or none.
  Id PickFolder(const std::vector<GroupRecord>& groups, Id owner) {
    std::vector<Id> fitting(1, kNone);
    for (const GroupRecord& group : groups) {
      if (group.id != kMarker && group.owner == owner) fitting.push_back(group.id);
    }
    return *PickFrom(fitting);
  }

  Edit AddGroup(Player& player) {
    GroupRecord group;
    group.owner = Chance(600) ? kPublic : player.user;
    group.parent = PickFolder(player.model.Groups(), group.owner);
    group.name = NewName();
    return {"AddPlanGroup",
            host::ObjectText()
                .Add("Name", group.name)
                .Add("ParentID", Str(group.parent))
                .Add("Type", group.owner == kPublic ? 0 : 1)
                .Text(),
            [&player, group](const ScriptClient::Answer& answer) mutable {
              group.id = std::stoll(TextOf(answer.response, "ID"));
              player.model.OwnGroupAdded(group);
            }};
  }

  Edit RenameGroup(Player& player, Id id) {
    const std::string name = NewName();
    return {"UpdatePlanGroup", host::ObjectText().Add("Name", name).Add("ID", Str(id)).Text(),
            [&player, id, name](const auto&) { player.model.OwnGroupRenamed(id, name); }};
  }

  Edit DeleteGroup(Player& player, Id id) {
    return {"DeletePlanGroup", R"({"ID":")" + Str(id) + R"("})", [this, &player, id](const auto&) {
              player.model.GroupRemoved(id);
              m_groupWent = true;
            }};
  }

  Edit AddView(Player& player) {
    ViewRecord view;
    view.owner = Chance(600) ? kPublic : player.user;
    view.group = PickFolder(player.model.Groups(), view.owner);
    view.name = NewName();
    view.cycleTime = static_cast<int>(Below(100));
    view.windows = 1 + static_cast<uint32_t>(Below(4));
    return {"AddPlan", PlanRequest(view), [&player, view](const ScriptClient::Answer& answer) mutable {
              view.id = std::stoll(TextOf(answer.response, "ID"));
              player.model.OwnViewAdded(view);
            }};
  }

  Edit ModifyView(Player& player, ViewRecord view) {
    if (Chance(700)) view.name = NewName();
    if (Chance(400)) view.group = PickFolder(player.model.Groups(), view.owner);
    view.cycleTime = static_cast<int>(Below(100));
    view.windows = 1 + static_cast<uint32_t>(Below(4));
    Edit edit{"UpdatePlan", PlanRequest(view), [&player, view](const auto&) { player.model.OwnViewModified(view); }};
    edit.refused = view.shared;
    return edit;
  }

  static Edit DeleteView(Player& player, const ViewRecord& view) {
    Edit edit{"DeletePlan", R"({"ID":")" + Str(view.id) + R"("})",
              [&player, id = view.id](const auto&) { player.model.ViewRemoved(id); }};
    edit.refused = view.shared;
    return edit;
  }

  static Edit ShareView(const Player& player, const ViewRecord& view) {
    Edit edit{"ViewShareUsers",
              R"({"view_id":")" + Str(view.id) + R"(","share_users":")" + (player.user == 1 ? "2" : "1") + R"(,3"})",
              [](const auto&) {}};
    edit.refused = view.owner != player.user;
    edit.least = 0;  // they may have it already
    return edit;
  }

  // An edit that the server must refuse.
  Edit RefusedEdit() {
    const std::string missing = R"({"ID":"4000000","Name":"x"})";
    const std::vector<std::pair<std::string, std::string>> edits = {
        {"AddPlan", R"({"Name":"","GroupID":"-1"})"},
        {"AddPlan", R"({"Name":"x","GroupID":"4000000"})"},
        {"AddPlanGroup", R"({"Name":"a\u0001b","ParentID":"-1"})"},
        {"AddPlanGroup", R"({"Name":"x","ParentID":"4000000"})"},
        {"UpdatePlan", missing},
        {"DeletePlan", missing},
        {"UpdatePlanGroup", missing},
        {"DeletePlanGroup", missing}};
    const auto picked = *PickFrom(edits);
    Edit edit{picked.first, picked.second, [](const auto&) {}};
    edit.refused = true;
    return edit;
  }

  Edit ChooseEdit(Player& player, size_t actor) {
    const auto group = PickMine(player.model.Groups(), actor);
    const auto view = PickMine(player.model.Views(), actor);
    const size_t dice = Below(100);
    const bool areMany = m_truth.views.size() > kManyViews && dice < 40;
    if (group && (areMany ? dice < 4 : dice >= 15 && dice < 31)) {
      // What a group held goes with it; nobody else may be putting something into it meanwhile.
      const bool deletes = m_actors == 1 && (areMany || dice >= 25);
      return deletes ? DeleteGroup(player, group->id) : RenameGroup(player, group->id);
    }
    if (areMany) return view ? DeleteView(player, *view) : RefusedEdit();
    if (dice < 15) return AddGroup(player);
    if (dice >= 31 && dice < 55) return AddView(player);
    if (!view || dice < 31 || dice >= 95) return RefusedEdit();
    return dice < 80 ? ModifyView(player, *view) : dice < 88 ? DeleteView(player, *view) : ShareView(player, *view);
  }

  // --- the administrator, who edits what everybody sees --------------------------------------------------------------

  template <class Record>
  std::string PickIds(const std::map<Id, Record>& records, size_t actor, size_t& count) {
    std::string ids;
    count = 0;
    for (const auto& [id, record] : records) {
      if (id == kMarker || record.owner != kPublic || !IsMine(id, actor) || !Chance(200)) continue;
      ids += (count++ ? "," : "") + Str(id);
    }
    return ids;
  }

  struct AdminEdit {
    std::string method, path, body;
    size_t most = 1;  // changes; all of them or none
  };

  AdminEdit ChooseAdminEdit(size_t actor) {
    using namespace server::test;
    const auto folder = static_cast<int32_t>(PickFolder(Values(m_truth.groups), kPublic));
    size_t count = 0;
    const size_t dice = Below(100);
    if (dice < 30) {
      const std::string ids = PickIds(m_truth.views, actor, count);
      return {"PUT", "V0/Views/Move", MoveBody(1, folder, ids), count};
    }
    if (dice < 45) {
      const std::string ids = PickIds(m_truth.groups, actor, count);
      return {"PUT", "V0/ViewGroups/Move", MoveBody(2, folder, ids), count};
    }
    if (dice < 60) return {"POST", "V0/ViewGroups", GroupBody(PlainName(), folder, -1)};
    if (dice < 75) {
      const auto mine = PickIds(m_truth.views, actor, count);
      return {"DELETE", "V0/Views/" + mine.substr(0, mine.find(',')), ""};
    }
    // A view of its own, given to a client.
    std::vector<ViewRecord> own = Values(m_truth.views);
    std::erase_if(own, [](const ViewRecord& view) { return view.owner != kAdmin; });
    if (own.size() < 5 || dice < 80) return {"POST", "V0/Views", ViewBody(PlainName(), -1, kAdmin, kPages)};
    const std::string id = Str(PickFrom(own)->id);
    if (dice < 90) return {"POST", "V1/View/" + id + "/Share", ShareBody(Chance(500) ? "1" : "1,2")};
    if (dice < 95) return {"PUT", "V0/Views/" + id, ViewBody(PlainName(), -1, kAdmin, kPages)};
    return {"DELETE", "V0/Views/" + id, ""};
  }

  bool EditAsAdmin(const AdminEdit& edit) {
    try {
      return m_admin.Request(edit.method, edit.path, edit.body).Outcome() == "0/0 200";
    } catch (const std::exception&) {
      return false;  // the server was not there
    }
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
    const bool adminAccepted = withAdmin && EditAsAdmin(adminEdit);
    if (GetParam() && Chance(20)) KillServer();
    std::vector<bool> accepted(actors.size(), false);
    for (size_t a = 0; a < actors.size(); ++a) accepted[a] = FinishEdit(*actors[a], edits[a]);
    m_counts.edits += edits.size() + withAdmin;
    m_counts.accepted += adminAccepted;

    const std::vector<Row> rows = m_store->ChangesAfter(before);
    for (size_t a = 0; a < actors.size(); ++a) {
      const size_t made = CountOf(rows, actors[a]->session);
      EXPECT_LE(made, edits[a].most) << edits[a].function << edits[a].request;
      if (accepted[a]) {
        EXPECT_GE(made, edits[a].least) << edits[a].function << edits[a].request;
      }
    }
    const size_t made = CountOf(rows, m_adminSession);
    EXPECT_TRUE(made == 0 || made == adminEdit.most) << made << " of " << adminEdit.path << adminEdit.body;
    if (adminAccepted && adminEdit.path.find("/Share") == std::string::npos) {
      EXPECT_EQ(made, adminEdit.most);
    }
  }

  static size_t CountOf(const std::vector<Row>& rows, Id session) {
    return static_cast<size_t>(
        std::count_if(rows.begin(), rows.end(), [session](const Row& row) { return row.session == session; }));
  }

  bool FinishEdit(Player& player, const Edit& edit) {
    if (GetParam() && Chance(4)) {  // the client goes in the midst of its edit
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
    } else if (!GetParam()) {
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
    m_server->SetFaultPlan(FaultPlanText(m_random()));  // or the same exchanges would go wrong again
    m_server->Start();
    m_store = std::make_unique<StoreReader>(m_server->StoreFile());
    EXPECT_EQ(m_store->IntegrityCheck(), "ok");
    ++m_counts.kills;
  }

  // --- quiet points --------------------------------------------------------------------------------------------------

  void StartPlayer(Player& player) {
    player.script = std::make_unique<ScriptClient>(m_server->Url(), player.name, player.name.substr(0, 1));
    player.session = m_store->NewestSession(player.user);
    player.script->Observe(kGroupType, Str(kMarker));
    LoadModel(player);
  }

  void LoadModel(Player& player) {
    std::vector<GroupRecord> groups = Values(m_truth.groups);
    std::erase_if(groups, [&](const auto& group) { return group.owner != kPublic && group.owner != player.user; });
    std::vector<ViewRecord> views;
    for (const auto& [id, view] : m_truth.views) {
      const ViewRecord seen = SeenBy(player.user, view);
      if (!seen.shared || m_truth.sharedWith[id].count(player.user) > 0) views.push_back(seen);
    }
    player.model.Load(groups, views);
  }

  void FoldIntoTruth(const Row& row) {
    const auto fold = [&row](auto& table, const auto& record) {
      table.erase(row.Object());
      if (!row.Deleted()) table[row.Object()] = record;
    };
    row.isView ? fold(m_truth.views, row.view) : fold(m_truth.groups, row.group);
  }

  static void Hear(Player& player, const Row& row) {
    if (row.session == player.session) return;  // its own edits come without a call
    const int method = row.MethodFor(player.user);
    CacheModel& model = player.model;
    if (row.isView) {
      if (method == 0) model.ViewAdded(SeenBy(player.user, row.view));
      if (method == 1) model.ViewModified(SeenBy(player.user, row.view));
      if (method == 2) model.ViewRemoved(row.Object());
    } else {
      if (method == 0) model.GroupAdded(row.group);
      if (method == 1) model.GroupModified(row.group);
      if (method == 2) model.GroupRemoved(row.Object());
    }
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
    const std::vector<Row> rows = m_store->ChangesAfter(m_heard);
    for (const Row& row : rows) {
      ASSERT_EQ(row.number, ++m_heard) << "numbers grow by one";
      FoldIntoTruth(row);
    }
    m_counts.changes += rows.size();
    const Truth tables = m_store->Tables();
    EXPECT_TRUE(tables.groups == m_truth.groups && tables.views == m_truth.views) << "tables and changes differ";
    m_truth.sharedWith = tables.sharedWith;
    for (Player& player : m_players) {
      if (!player.script) {
        StartPlayer(player);
        continue;
      }
      for (const Row& row : rows) {
        Hear(player, row);
        // Each renaming is heard once and in order, hence so is all between them.
        if (!row.isView && row.Object() == kMarker) {
          ASSERT_EQ(player.script->NextNotice().name, row.group.name);
        }
      }
    }
  }

  void MaybeReload(Player& player) {
    if (!Chance(50)) return;
    player.script->Reload();
    player.script->Observe(kGroupType, Str(kMarker));
    LoadModel(player);
    ++m_counts.reloads;
  }

  // --- comparison ----------------------------------------------------------------------------------------------------

  static Id IdOf(const rapidjson::Value& entry, const char* key) { return std::stoll(TextOf(entry, key)); }

  // `answer` holds a list of groups or of plans, which differ in the spelling of their names.
  static void ExpectListed(const ScriptClient::Answer& answer, const char* list, const char* name,
                           const std::vector<CacheModel::Listed>& expected) {
    std::vector<CacheModel::Listed> listed;
    for (const auto& entry : ListOf(answer.response, list).GetArray()) {
      listed.emplace_back(TextOf(entry, name), IdOf(entry, "ID"), IdOf(entry, "ParentID"), NumberOf(entry, "Type"));
    }
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, expected) << answer.text;
  }

  void ExpectContent(Player& player, Id group, int type, const std::vector<CacheModel::Listed>& plans) {
    const std::string kind = std::to_string(type);
    ExpectListed(
        player.script->Call("GetPlanGroups", R"({"ParentID":")" + Str(group) + R"(","GroupType":)" + kind + "}"),
        "PlanGroups", "Name", player.model.ChildGroups(group, type));
    ExpectListed(player.script->Call("GetPlansInGroup", R"({"GroupID":")" + Str(group) + R"(","Type":)" + kind + "}"),
                 "Plans", "name", plans);
  }

  static void ExpectDetail(Player& player, const ViewRecord& view) {
    const auto answer =
        player.script->Call("GetPlanDetail", R"({"ID":")" + Str(view.id) + R"(","NeedResourceName":false})");
    const auto& pages = ListOf(answer.response, "PlanPages");
    ASSERT_EQ(pages.Size(), 1u) << answer.text;
    EXPECT_EQ(std::tuple(TextOf(answer.response, "Name"), TextOf(answer.response, "GroupID"),
                         NumberOf(answer.response, "RoundTime"), ListOf(pages[0], "PlanItems").Size()),
              std::tuple(view.name, Str(view.group), view.cycleTime, view.windows))
        << answer.text;
  }

  void ExpectCacheAsPredicted(Player& player) {
    SCOPED_TRACE(player.name);
    for (int type : {0, 1, 2}) ExpectContent(player, kNone, type, player.model.WithoutGroup(type));
    for (const GroupRecord& group : player.model.Groups()) {
      for (int type : {0, 1}) ExpectContent(player, group.id, type, player.model.Members(group.id));
    }
    for (const ViewRecord& view : player.model.Views()) ExpectDetail(player, view);
    const Id absent = static_cast<Id>(1 + Below(static_cast<size_t>(m_names) + 1));
    EXPECT_EQ(player.script->Call("GetPlanDetail", R"({"ID":")" + Str(absent) + "\"}").result,
              player.model.HasView(absent));
    ++m_counts.comparisons;
  }

  // --- turns ---------------------------------------------------------------------------------------------------------

  void Turn() {
    ++m_turn;
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
      if (std::exchange(m_groupWent, false) && !GetParam()) break;
      // Who is away leaves a gap, or others would take its objects.
      if (!alone && actors.size() != players) break;
      Step(actors, !alone || loner == players);
    }
    ASSERT_FALSE(HasFailure());
    ComeToRest();
    for (Player& player : m_players) ExpectCacheAsPredicted(player);
    for (Player& player : m_players) MaybeReload(player);
  }

  const char* const kPages = R"(,"PlanPages":[{"PlanViewItem":[{"ResourceType":1001}]}])";

  const uint32_t m_seed;
  std::mt19937 m_random;
  std::string m_folder;
  std::unique_ptr<ServerProcess> m_server;
  std::unique_ptr<StoreReader> m_store;
  server::test::Client m_admin;
  Id m_adminSession = 0;
  Player m_players[3] = {{"ann", 1}, {"ann", 1}, {"bob", 2}};
  Truth m_truth;   // at the last quiet point
  Id m_heard = 0;  // the last change in it
  Id m_turn = 0;
  size_t m_actors = 1;
  bool m_groupWent = false;  // in this turn
  int m_names = 0;
  Counts m_counts;
};

TEST_P(RandomModelTest, CachesAndStoreHoldWhatTheRulesPredict) {
  const auto end = Clock::now() + RunningTime();
  while (Clock::now() < end && !HasFailure()) {
    Turn();
    ASSERT_FALSE(HasFailure()) << "turn " << m_turn << ", seed " << m_seed << ", folder " << m_folder;
  }
  EXPECT_EQ(m_store->IntegrityCheck(), "ok");
  std::cout << m_counts.edits << " edits made, " << m_counts.accepted << " accepted, " << m_counts.changes
            << " changes; " << m_server->Faults() << " faults injected; " << m_counts.kills
            << " kills of the server and " << m_counts.clientsKilled << " of clients survived; " << m_counts.reloads
            << " reloads; " << m_counts.comparisons << " comparisons of caches" << std::endl;
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutFaults, RandomModelTest, ::testing::Bool(),
                         [](const auto& run) { return run.param ? "Faults" : "NoFaults"; });

}  // namespace
