// SPDX-License-Identifier: Apache-2.0
#include "server/documents/Requests.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include "server/documents/Json.h"
#include "server/documents/Replies.h"
#include "server/model/Refusal.h"
#include "server/permissions/Rules.h"

namespace server {

namespace {

using rapidjson::Value;
using Allocator = rapidjson::Document::AllocatorType;

// Members of a view that the server keeps by itself or does not take from clients; all others are the document.
constexpr std::string_view kServersOwn[] = {
    "ID",         "GUID",          "Name",      "ViewGroupID", "UserID", "SharedUserID", "SharedUserName",
    "SharedWith", "SequenceIndex", "AutoCycle", "CycleTime",   "Method", kChangeNumber};
constexpr std::string_view kTextsOfWindow[] = {"SequenceIndex", "Xtop", "Ytop", "Xbottom", "Ybottom"};

template <size_t n>
bool IsOneOf(const Value& name, const std::string_view (&names)[n]) {
  return std::find(std::begin(names), std::end(names), std::string_view(name.GetString(), name.GetStringLength())) !=
         std::end(names);
}

// The shortest decimal text of a number, whatever the locale.
std::string NumberText(const Value& number) {
  char text[40];
  char* const end = text + sizeof text;
  if (number.IsInt64()) return {text, std::to_chars(text, end, number.GetInt64()).ptr};
  if (number.IsUint64()) return {text, std::to_chars(text, end, number.GetUint64()).ptr};
  return {text, std::to_chars(text, end, number.GetDouble()).ptr};
}

void TurnIntoText(Value& value, Allocator& allocator) {
  if (value.IsString()) return;
  std::string text;
  if (value.IsNumber()) {
    text = NumberText(value);
  } else if (!value.IsNull()) {
    throw Refusal::Malformed("a window's order or digital zoom is neither a text nor a number");
  }
  value.SetString(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
}

// Calls `use` for each object of the array at `key`; an absent array has none.
template <class Use>
void ForEachObject(Value& object, const char* key, const Use& use) {
  const auto it = object.FindMember(key);
  if (it == object.MemberEnd() || it->value.IsNull()) return;
  if (!it->value.IsArray()) throw Refusal::Malformed("the pages or windows are not a list");
  for (Value& entry : it->value.GetArray()) {
    if (!entry.IsObject()) throw Refusal::Malformed("a page or window is not an object");
    use(entry);
  }
}

void NormaliseWindows(Value& view, Allocator& allocator) {
  ForEachObject(view, "PlanPages", [&allocator](Value& page) {
    ForEachObject(page, "PlanViewItem", [&allocator](Value& window) {
      for (auto& member : window.GetObject()) {
        if (IsOneOf(member.name, kTextsOfWindow)) TurnIntoText(member.value, allocator);
      }
    });
  });
}

std::string DocumentOf(const Value& view) {
  std::string document;
  for (const auto& member : view.GetObject()) {
    if (IsOneOf(member.name, kServersOwn)) continue;
    document.append(",").append(wire::Serialise(member.name)).append(":").append(wire::Serialise(member.value));
  }
  return document;
}

}  // namespace

ViewInput ReadView(Value& element, Allocator& allocator) {
  ViewInput view;
  view.name = wire::String(element, "Name");
  CheckName(view.name);
  view.folderId = wire::Int(element, "ViewGroupID", kTopFolder);
  view.userId = wire::Int(element, "UserID", kNobody);
  view.autoCycle = wire::Int(element, "AutoCycle", -1);
  view.cycleTime = wire::Int(element, "CycleTime", -1);
  NormaliseWindows(element, allocator);
  view.document = DocumentOf(element);
  return view;
}

std::string WithoutServersOwn(const std::string& document) try {
  return document.empty() ? document : DocumentOf(wire::Parse('{' + document.substr(1) + '}'));
} catch (const Refusal&) {
  return document;
}

GroupInput ReadGroup(const Value& element) {
  GroupInput group;
  group.name = wire::String(element, "Name");
  CheckName(group.name);
  group.folderId = wire::Int(element, "ParentViewGroupID", kTopFolder);
  group.userId = wire::Int(element, "UserID", kNobody);
  group.sharedFolder = wire::Int(element, "IsSharedView", -1) == 1;
  return group;
}

ViewInput ReadViewBody(const std::string& body) {
  rapidjson::Document document = wire::Parse(body);
  wire::ObjectMember(document, "View");  // there, and an object
  return ReadView(document.FindMember("View")->value, document.GetAllocator());
}

GroupInput ReadGroupBody(const std::string& body) {
  const rapidjson::Document document = wire::Parse(body);
  return ReadGroup(wire::ObjectMember(document, "ViewGroup"));
}

MoveInput ReadMoveBody(ObjectKind kind, const std::string& body) {
  const rapidjson::Document document = wire::Parse(body);
  const Value& request = wire::ObjectMember(document, "ViewMoveRequest");
  const int32_t type = kind == ObjectKind::kView ? 1 : 2;
  if (wire::Int(request, "Type", type) != type) throw Refusal::Malformed("the type of a move does not fit its path");
  wire::Int(request, "UserID", kNobody);  // the owner stays who it is; but a number it must be
  return {wire::Int(request, "ViewGroupID"), wire::IdList(wire::String(request, "IDs"))};
}

std::vector<int32_t> ReadShareBody(const std::string& body) {
  const rapidjson::Document document = wire::Parse(body);
  std::vector<int32_t> users = wire::IdList(wire::String(wire::ObjectMember(document, "ViewShare"), "ShareUsers"));
  if (users.size() > kMaxShareUsers) throw Refusal::TooLarge();
  return users;
}

DefaultView ReadDefaultViewBody(const std::string& body) {
  const rapidjson::Document document = wire::Parse(body);
  const Value& request = wire::ObjectMember(document, "ViewRequest");
  return {wire::Int(request, "Type"), wire::Int(request, "ID")};
}

LoginInput ReadLoginBody(const std::string& body) {
  const rapidjson::Document document = wire::Parse(body);
  const Value& session = wire::ObjectMember(document, "Session");
  return {wire::String(session, "UserName"), wire::String(session, "Password"),
          wire::String(session, "ClientName", "")};
}

}  // namespace server
