// SPDX-License-Identifier: Apache-2.0
#include "server/documents/Requests.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "server/documents/ElementReader.h"
#include "server/documents/Json.h"
#include "server/model/Refusal.h"
#include "server/permissions/Rules.h"

namespace server {

namespace {

using rapidjson::Value;

// The first member of that name, which must be an object.
ElementContent ReadMember(const std::string& body, const char* member, std::initializer_list<const char*> fields,
                          bool isView = false) {
  ElementReader reader(member, fields, isView);
  reader.Expect(body.size());
  wire::Parse(body, reader);
  ElementContent element = reader.Take();
  if (!element.isThere) throw Refusal::Malformed("an object that the request needs is missing");
  return element;
}

constexpr std::initializer_list<const char*> kViewFields = {"Name", "ViewGroupID", "UserID", "AutoCycle", "CycleTime"};

ViewInput ViewOf(ElementContent element) {
  ViewInput view;
  view.name = wire::String(element.fields, "Name");
  CheckName(view.name);
  view.folderId = wire::Int(element.fields, "ViewGroupID", kTopFolder);
  view.userId = wire::Int(element.fields, "UserID", kNobody);
  view.autoCycle = wire::Int(element.fields, "AutoCycle", -1);
  view.cycleTime = wire::Int(element.fields, "CycleTime", -1);
  if (element.fault) throw Refusal::Malformed(element.fault);
  view.document = std::move(element.document);
  return view;
}

// An event has each element on one line.
bool HasControls(const std::string& json) {
  return std::any_of(json.begin(), json.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

}  // namespace

ViewInput ReadView(const Value& element) {
  ElementReader reader("", kViewFields, true);
  element.Accept(reader);
  return ViewOf(reader.Take());
}

std::string WithoutServersOwn(const std::string& document) try {
  if (document.empty()) return document;
  ElementReader reader("", {}, true);
  wire::Parse('{' + document.substr(1) + '}', reader);
  const ElementContent element = reader.Take();
  return element.fault ? document : element.document;
} catch (const Refusal&) {
  return document;
}

bool IsHead(const std::string& text) try {
  return wire::Parse(text + '}').MemberCount() > 0 && !HasControls(text);
} catch (const Refusal&) {
  return false;
}

bool IsName(const std::string& text) try {
  CheckName(text);
  return wire::IsUtf8(text);
} catch (const Refusal&) {
  return false;
}

const char* WhyNoDocument(const std::string& document) try {
  if (document.empty()) return nullptr;
  if (HasControls(document)) return "a control character";
  ElementReader reader("", {}, true);
  wire::Parse('{' + document.substr(1) + '}', reader);
  const ElementContent element = reader.Take();
  if (document.front() != ',' || element.document.empty()) return "not what follows a head";
  if (element.hasServersOwn) return "a member that is the server's";
  return element.fault || !element.hasMadeTexts ? element.fault : "a window's order or digital zoom is not a text";
} catch (const Refusal& refusal) {
  return refusal.detail;
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
  return ViewOf(ReadMember(body, "View", kViewFields, true));
}

GroupInput ReadGroupBody(const std::string& body) {
  return ReadGroup(ReadMember(body, "ViewGroup", {"Name", "ParentViewGroupID", "UserID", "IsSharedView"}).fields);
}

MoveInput ReadMoveBody(ObjectKind kind, const std::string& body) {
  const ElementContent element = ReadMember(body, "ViewMoveRequest", {"Type", "ViewGroupID", "UserID", "IDs"});
  const Value& request = element.fields;
  const int32_t type = kind == ObjectKind::kView ? 1 : 2;
  if (wire::Int(request, "Type", type) != type) throw Refusal::Malformed("the type of a move does not fit its path");
  wire::Int(request, "UserID", kNobody);  // the owner stays who it is; but a number it must be
  return {wire::Int(request, "ViewGroupID"), wire::IdList(wire::String(request, "IDs"))};
}

std::vector<int32_t> ReadShareBody(const std::string& body) {
  std::vector<int32_t> users =
      wire::IdList(wire::String(ReadMember(body, "ViewShare", {"ShareUsers"}).fields, "ShareUsers"));
  if (users.size() > kMaxShareUsers) throw Refusal::TooLarge();
  return users;
}

DefaultView ReadDefaultViewBody(const std::string& body) {
  const ElementContent element = ReadMember(body, "ViewRequest", {"Type", "ID"});
  const Value& request = element.fields;
  return {wire::Int(request, "Type"), wire::Int(request, "ID")};
}

LoginInput ReadLoginBody(const std::string& body) {
  const ElementContent element = ReadMember(body, "Session", {"UserName", "Password", "ClientName"});
  const Value& session = element.fields;
  return {wire::String(session, "UserName"), wire::String(session, "Password"),
          wire::String(session, "ClientName", "")};
}

}  // namespace server
