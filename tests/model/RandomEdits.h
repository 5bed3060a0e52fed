// SPDX-License-Identifier: Apache-2.0
// What the players of the random test and their administrator think of next.
#pragma once

#include <functional>
#include <optional>
#include <random>

#include "../endtoend/ScriptClient.h"
#include "../server/TestClient.h"
#include "CacheModel.h"

constexpr Id kMarker = 1;  // a group whose renaming tells that all that came before has been heard of
constexpr Id kAdmin = 3;

inline std::string Str(Id id) {
  return std::to_string(id);
}

template <class Record>
std::vector<Record> Values(const std::map<Id, Record>& records) {
  std::vector<Record> values;
  for (const auto& [id, record] : records) values.push_back(record);
  return values;
}

inline std::string Pages(uint32_t windows) {
  std::string items;
  for (uint32_t w = 0; w < windows; ++w) {
    items += std::string(w ? "," : "") + R"({"Sequence":)" + std::to_string(w) +
             R"(,"ResourceType":1001,"ResourceID":"2001","SiteID":"1","WindowNo":)" + std::to_string(w) + "}";
  }
  return R"([{"windowDivision":4,"PlanItems":[)" + items + "]}]";
}

// With the view's id, where it has one.
inline std::string PlanRequest(const ViewRecord& view) {
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
  std::unique_ptr<test::ScriptClient> script = nullptr;  // null while it is away
  CacheModel model = {};
};

// An edit to be asked for.
struct Edit {
  std::string function, request;
  std::function<void(const test::ScriptClient::Answer&)> accepted = [](const auto&) {};
  bool refused = false;        // the server cannot agree
  size_t least = 1, most = 1;  // changes of its own that it makes where it is accepted
};

struct AdminEdit {
  std::string method, path, body;
  size_t most = 1;  // changes; all of them or none
};

class RandomEdits {
 protected:
  // Where players cross, all of them edit the same few things.
  RandomEdits(uint32_t seed, bool crosses) : m_seed(seed), m_crosses(crosses), m_random(seed) {}

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
            [&player, group](const test::ScriptClient::Answer& answer) mutable {
              group.id = std::stoll(host::TextOf(answer.response, "ID"));
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
    return {"AddPlan", PlanRequest(view), [&player, view](const test::ScriptClient::Answer& answer) mutable {
              view.id = std::stoll(host::TextOf(answer.response, "ID"));
              player.model.OwnViewAdded(view);
            }};
  }

  Edit ModifyView(Player& player, ViewRecord view) {
    if (Chance(700)) view.name = NewName();
    if (Chance(400)) view.group = PickFolder(player.model.Groups(), view.owner);
    view.cycleTime = static_cast<int>(Below(100));
    view.windows = 1 + static_cast<uint32_t>(Below(4));
    return {"UpdatePlan", PlanRequest(view), [&player, view](const auto&) { player.model.OwnViewModified(view); },
            view.shared};
  }

  static Edit DeleteView(Player& player, const ViewRecord& view) {
    return {"DeletePlan", R"({"ID":")" + Str(view.id) + R"("})",
            [&player, id = view.id](const auto&) { player.model.ViewRemoved(id); }, view.shared};
  }

  static Edit ShareView(const Player& player, const ViewRecord& view) {
    const std::string users = player.user == 1 ? "2,3" : "1,3";
    return {.function = "ViewShareUsers",
            .request = R"({"view_id":")" + Str(view.id) + R"(","share_users":")" + users + "\"}",
            .refused = view.owner != player.user,
            .least = 0};  // they may have it already
  }

  // An edit that the server must refuse.
  Edit RefusedEdit() {
    const std::string missing = R"({"ID":"4000000","Name":"x"})";
    return *PickFrom(std::vector<Edit>{
        {.function = "AddPlan", .request = R"({"Name":"","GroupID":"-1"})", .refused = true},
        {.function = "AddPlan", .request = R"({"Name":"x","GroupID":"4000000"})", .refused = true},
        {.function = "AddPlanGroup", .request = R"({"Name":"a\u0001b","ParentID":"-1"})", .refused = true},
        {.function = "AddPlanGroup", .request = R"({"Name":"x","ParentID":"4000000"})", .refused = true},
        {.function = "UpdatePlan", .request = missing, .refused = true},
        {.function = "DeletePlan", .request = missing, .refused = true},
        {.function = "UpdatePlanGroup", .request = missing, .refused = true},
        {.function = "DeletePlanGroup", .request = missing, .refused = true}});
  }

  Edit ChooseEdit(Player& player, size_t actor) {
    const auto group = PickMine(player.model.Groups(), actor);
    const auto view = PickMine(player.model.Views(), actor);
    const size_t dice = Below(100);
    const bool areMany = m_truth.views.size() > (m_crosses ? 12 : 70) && dice < 40;
    if (group && (areMany ? dice < 4 : dice >= 15 && dice < 31)) {
      // What a group held goes with it; nobody else may be putting something into it meanwhile.
      const bool deletes = m_actors == 1 && (areMany || dice >= 25);
      return deletes ? DeleteGroup(player, group->id) : RenameGroup(player, group->id);
    }
    if (areMany) return view ? DeleteView(player, *view) : RefusedEdit();
    if (dice < 15)
      return m_crosses && group && m_truth.groups.size() > 8 ? DeleteGroup(player, group->id) : AddGroup(player);
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

  const char* const kPages = R"(,"PlanPages":[{"PlanViewItem":[{"ResourceType":1001}]}])";

  const uint32_t m_seed;
  const bool m_crosses;
  std::mt19937 m_random;
  Truth m_truth;  // at the last quiet point
  Id m_turn = 0;
  size_t m_actors = 1;
  bool m_groupWent = false;  // in this turn
  int m_names = 0;
};
