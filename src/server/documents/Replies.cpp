// SPDX-License-Identifier: Apache-2.0
#include "server/documents/Replies.h"

#include "server/documents/Json.h"

namespace server {

namespace {

std::string Head(const View& view, int32_t groupId) {
  return '{' + wire::Members({{"ID", view.id},
                              {"GUID", view.guid},
                              {"Name", view.name},
                              {"ViewGroupID", groupId},
                              {"UserID", view.userId},
                              {"SequenceIndex", view.sequence},
                              {"AutoCycle", view.autoCycle},
                              {"CycleTime", view.cycleTime}});
}

std::string EnvelopeStart(int module, int code) {
  return R"({"ResponseStatus":{"ErrorModule":)" + std::to_string(module) + R"(,"ErrorCode":)" + std::to_string(code) +
         R"(,"CascadingErrorInfo":"","Data":)";
}

const char* ListStart(ObjectKind kind) {
  return kind == ObjectKind::kView ? R"("ViewList":{"View":[)" : R"("ViewGroupList":{"ViewGroup":[)";
}

}  // namespace

std::string GroupHead(const Group& group) {
  return '{' + wire::Members({{"ID", group.id},
                              {"Name", group.name},
                              {"ParentViewGroupID", group.folderId},
                              {"UserID", group.userId},
                              {"IsSharedView", group.sharedFolder && group.userId != kNobody ? 1 : -1},
                              {"SequenceIndex", group.sequence},
                              {kChangeNumber, std::to_string(group.changeNumber)}});
}

std::string ViewHead(const View& view) {
  return Head(view, view.folderId) + ',' + wire::Members({{kChangeNumber, std::to_string(view.changeNumber)}});
}

std::string SharedViewHead(const View& view, const std::string& ownerName) {
  return Head(view, kTopFolder) + ',' +
         wire::Members({{"SharedUserID", view.userId},
                        {"SharedUserName", ownerName},
                        {kChangeNumber, std::to_string(view.changeNumber)}});
}

std::string Envelope(const std::string& data) {
  return EnvelopeStart(0, 0) + data + "}}";
}

std::string Envelope(const Refusal& refusal) {
  return EnvelopeStart(refusal.module, refusal.code) + "{}}}";
}

std::string ListPrefix(ObjectKind kind, int64_t changeNumber) {
  return EnvelopeStart(0, 0) + '{' + wire::Members({{kChangeNumber, std::to_string(changeNumber)}}) + ',' +
         ListStart(kind);
}

std::string EventPrefix(ObjectKind kind) {
  return EnvelopeStart(0, 0) + '{' + ListStart(kind);
}

std::string ListSuffix() {
  return "]}}}}";
}

}  // namespace server
