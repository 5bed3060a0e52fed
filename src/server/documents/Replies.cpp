// SPDX-License-Identifier: Apache-2.0
#include "server/documents/Replies.h"

#include "server/documents/Json.h"

namespace server {

namespace {

std::string Head(const View& view, int32_t groupId) {
  std::string head = "{";
  json::AppendMember(head, "ID", view.id);
  json::AppendMember(head += ',', "GUID", view.guid);
  json::AppendMember(head += ',', "Name", view.name);
  json::AppendMember(head += ',', "ViewGroupID", groupId);
  json::AppendMember(head += ',', "UserID", view.userId);
  json::AppendMember(head += ',', "SequenceIndex", view.sequence);
  json::AppendMember(head += ',', "AutoCycle", view.autoCycle);
  json::AppendMember(head += ',', "CycleTime", view.cycleTime);
  return head;
}

std::string EnvelopeStart(int module, int code) {
  return R"({"ResponseStatus":{"ErrorModule":)" + std::to_string(module) + R"(,"ErrorCode":)" + std::to_string(code) +
         R"(,"CascadingErrorInfo":"","Data":)";
}

const char* ListStart(Kind kind) {
  return kind == Kind::kView ? R"("ViewList":{"View":[)" : R"("ViewGroupList":{"ViewGroup":[)";
}

}  // namespace

void AppendChangeNumber(std::string& out, int64_t number) {
  json::AppendMember(out, kChangeNumber, std::to_string(number));
}

std::string GroupHead(const Group& group) {
  std::string head = "{";
  json::AppendMember(head, "ID", group.id);
  json::AppendMember(head += ',', "Name", group.name);
  json::AppendMember(head += ',', "ParentViewGroupID", group.parentId);
  json::AppendMember(head += ',', "UserID", group.userId);
  json::AppendMember(head += ',', "IsSharedView", group.sharedFolder && group.userId != kNobody ? 1 : -1);
  json::AppendMember(head += ',', "SequenceIndex", group.sequence);
  AppendChangeNumber(head += ',', group.changeNumber);
  return head;
}

std::string ViewHead(const View& view) {
  std::string head = Head(view, view.groupId);
  AppendChangeNumber(head += ',', view.changeNumber);
  return head;
}

std::string SharedViewHead(const View& view, const std::string& ownerName) {
  std::string head = Head(view, kTopFolder);
  json::AppendMember(head += ',', "SharedUserID", view.userId);
  json::AppendMember(head += ',', "SharedUserName", ownerName);
  AppendChangeNumber(head += ',', view.changeNumber);
  return head;
}

std::string Envelope(const std::string& data) {
  return EnvelopeStart(0, 0) + data + "}}";
}

std::string Envelope(const Refusal& refusal) {
  return EnvelopeStart(refusal.module, refusal.code) + "{}}}";
}

std::string ListPrefix(Kind kind, int64_t changeNumber) {
  std::string prefix = EnvelopeStart(0, 0) + '{';
  AppendChangeNumber(prefix, changeNumber);
  return (prefix += ',') + ListStart(kind);
}

std::string EventPrefix(Kind kind) {
  return EnvelopeStart(0, 0) + '{' + ListStart(kind);
}

std::string ListSuffix() {
  return "]}}}}";
}

}  // namespace server
