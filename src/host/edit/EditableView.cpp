// SPDX-License-Identifier: Apache-2.0
#include "host/edit/EditableView.h"

#include "host/JsonText.h"
#include "host/PortableFile.h"

namespace host {
namespace {

// What adding and changing say alike.
void AddContent(const EditableView& view, ObjectText& request) {
  request.Add("GroupID", view.groupId)
      .Add("Name", view.name)
      .Add("Type", view.type)
      .Add("AutoCycle", view.autoCycle)
      .Add("RoundTime", view.roundTime)
      .AddRaw("PlanPages", view.pages);
}

std::string Reason(bool done, const rapidjson::Value& answer) {
  const std::string text = TextOf(answer, "ErrorInfo");
  return done ? "" : text.empty() ? "the server gave no reason" : text;
}

}  // namespace

EditableView ToEditable(const rapidjson::Value& detail) {
  EditableView view;
  view.id = TextOf(detail, "ID");
  view.name = TextOf(detail, "Name");
  view.groupId = TextOf(detail, "GroupID");
  view.type = NumberOf(detail, "Type");
  view.autoCycle = NumberOf(detail, "AutoCycle");
  view.roundTime = NumberOf(detail, "RoundTime");
  view.isShared = FlagOf(detail, "is_share_view");
  view.pages = KeepPages(ListOf(detail, "PlanPages"), "View " + view.id);
  return view;
}

std::optional<EditableView> ReadEditable(const Plugin& plugin, const std::string& id, std::string& error) {
  rapidjson::Document detail;
  const std::string request = ObjectText().Add("ID", id).Add("NeedResourceName", false).Text();
  error = Reason(plugin.Ask("GetPlanDetail", request, detail), detail);
  return error.empty() ? std::optional(ToEditable(detail)) : std::nullopt;
}

std::string Update(const Plugin& plugin, const EditableView& view) {
  rapidjson::Document answer;
  ObjectText request;
  AddContent(view, request);
  request.Add("ID", view.id).Add("is_share_view", view.isShared);
  return Reason(plugin.Ask("UpdatePlan", request.Text(), answer), answer);
}

std::string Add(const Plugin& plugin, const EditableView& view, std::string& newId) {
  rapidjson::Document answer;
  ObjectText request;
  AddContent(view, request);
  std::string reason = Reason(plugin.Ask("AddPlan", request.Text(), answer), answer);
  if (reason.empty()) newId = TextOf(answer, "ID");
  return reason;
}

}  // namespace host
