// SPDX-License-Identifier: Apache-2.0
// Compares what a client answers with what it should: every answer as predicted, or its cache with the server, where
// nothing may be missing, wrong or too much but the members that are documented to linger in lists by group.
#pragma once

#include <functional>

#include "../endtoend/ScriptClient.h"
#include "CacheModel.h"

class CacheCheck {
 public:
  using Listed = CacheModel::Listed;
  using List = CacheModel::List;

  explicit CacheCheck(test::ScriptClient& client) : m_client(client) {}

  // Each answers what is wrong, or nothing.

  // By the model, to the last entry.
  std::string AgainstModel(const CacheModel& model) {
    for (const int type : {0, 1, 2}) ExpectContent(kNone, type, model, model.WithoutGroup(type));
    for (const GroupRecord& group : model.Groups()) {
      for (const int type : {0, 1}) ExpectContent(group.id, type, model, model.Members(group.id));
    }
    for (const ViewRecord& view : model.Views()) ExpectDetail(view);
    return std::move(m_wrong);
  }
  struct OnServer {
    CacheModel loaded;       // what a load would make of it
    std::vector<Id> views;   // that are or were there: those that are not must not be known
    std::vector<Id> groups;  // likewise
    // Whether the view has been in the group, so that it may be listed there still, or once more.
    std::function<bool(Id group, Id view)> mayLinger;
    // Whether the view has been elsewhere before: where another client moves a view, its new group lists what it was
    // then, and what is changed later shows in the list of the group that it came from.
    std::function<bool(Id view)> mayHaveMoved;
  };
  std::string AgainstServer(const OnServer& server) {
    for (const Id parent : server.groups) {
      for (const int type : {0, 1}) {
        Expect(server.loaded.ChildGroups(parent, type), Groups(parent, type), "groups in " + std::to_string(parent));
      }
    }
    for (const int type : {0, 1, 2}) Expect(server.loaded.WithoutGroup(type), Plans(kNone, type), "plans in no group");
    for (const GroupRecord& group : server.loaded.Groups()) {
      List plans = Plans(group.id, 0);
      for (const Listed& member : server.loaded.Members(group.id)) {
        const Id view = std::get<1>(member);
        auto entry = plans.find(member);
        if (entry == plans.end() && server.mayHaveMoved(view)) {
          entry = std::find_if(plans.begin(), plans.end(), [&](const Listed& p) { return std::get<1>(p) == view; });
        }
        if (entry == plans.end()) {
          Wrong("not listed in " + std::to_string(group.id) + ": " + Text(member) + " of " + Text(plans));
        } else {
          plans.erase(entry);
        }
      }
      for (const Listed& plan : plans) {
        if (!server.mayLinger(group.id, std::get<1>(plan))) Wrong("lingers without cause: " + Text(plan));
      }
    }
    for (const ViewRecord& view : server.loaded.Views()) ExpectDetail(view);
    for (const Id view : server.views) {
      if (!server.loaded.HasView(view) && Detail(view).result) Wrong("knows view " + std::to_string(view));
    }
    return std::move(m_wrong);
  }

 private:
  void ExpectContent(Id group, int type, const CacheModel& model, const List& plans) {
    Expect(model.ChildGroups(group, type), Groups(group, type), "groups in " + std::to_string(group));
    Expect(plans, Plans(group, type), "plans in " + std::to_string(group));
  }
  static std::string Text(const Listed& entry) {
    const auto& [name, id, parent, type] = entry;
    return std::to_string(id) + " '" + name + "' in " + std::to_string(parent) + " of type " + std::to_string(type);
  }
  static std::string Text(const List& entries) {
    std::string text = "[";
    for (const Listed& entry : entries) text += (text.size() > 1 ? "; " : "") + Text(entry);
    return text + "]";
  }
  void Wrong(const std::string& what) { m_wrong += what + "\n"; }
  void Expect(const List& expected, const List& listed, const std::string& what) {
    if (listed != expected) Wrong(what + ": " + Text(listed) + " instead of " + Text(expected));
  }

  test::ScriptClient::Answer Detail(Id view) {
    return m_client.Call("GetPlanDetail", R"({"ID":")" + std::to_string(view) + R"(","NeedResourceName":false})");
  }
  void ExpectDetail(const ViewRecord& view) {
    const auto answer = Detail(view.id);
    const auto& pages = host::ListOf(answer.response, "PlanPages");
    const uint32_t windows = pages.Size() == 1 ? host::ListOf(pages[0], "PlanItems").Size() : 0;
    const auto told = std::tuple(host::TextOf(answer.response, "Name"), host::TextOf(answer.response, "GroupID"),
                                 host::NumberOf(answer.response, "RoundTime"), windows);
    const auto expected = std::tuple(view.name, std::to_string(view.group), view.cycleTime, view.windows);
    if (told == expected) return;
    Wrong("view " + std::to_string(view.id) + ": " + answer.text + " instead of '" + view.name + "' in " +
          std::to_string(view.group) + ", " + std::to_string(view.cycleTime) + " s, " + std::to_string(view.windows) +
          " windows");
  }

  // Groups and plans differ in the spelling of their names.
  List Groups(Id parent, int type) {
    return Ask("GetPlanGroups", "ParentID", parent, "GroupType", type, "PlanGroups", "Name");
  }
  List Plans(Id group, int type) { return Ask("GetPlansInGroup", "GroupID", group, "Type", type, "Plans", "name"); }
  List Ask(const char* function, const char* folderKey, Id folder, const char* typeKey, int type, const char* list,
           const char* name) {
    const auto answer =
        m_client.Call(function, host::ObjectText().Add(folderKey, std::to_string(folder)).Add(typeKey, type).Text());
    List listed;
    for (const auto& entry : host::ListOf(answer.response, list).GetArray()) {
      listed.emplace(host::TextOf(entry, name), std::stoll(host::TextOf(entry, "ID")),
                     std::stoll(host::TextOf(entry, "ParentID")), host::NumberOf(entry, "Type"));
    }
    return listed;
  }

  test::ScriptClient& m_client;
  std::string m_wrong;
};
