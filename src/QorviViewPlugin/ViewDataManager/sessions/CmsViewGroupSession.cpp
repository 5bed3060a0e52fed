// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewGroupSession.h"

#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "QorviViewPlugin/ViewDataManager/sessions/SessionFrame.h"
#include "QorviViewPlugin/base/LogLine.h"
#include "QorviViewPlugin/base/TextConversion.h"

namespace QorviViewPlugin {
namespace {

constexpr char kViewGroupsUrl[] = "/NXAPI/Vantorel/Platform/V0/ViewGroups";
constexpr char kDefaultConfigUrl[] = "/NXAPI/Vantorel/Platform/V1/View/Default/Config";

std::string ViewGroupUrl(uint32_t id) {
  return std::string(kViewGroupsUrl) + "/" + UIntToString(id);
}

std::string WriteViewGroupsRequest(uint32_t clientResourceVersion) {
  NetLink::CRapidJsonProto document;
  document.set_v("/ViewGroupsRequest/ClientResourceVersion", AsSigned(clientResourceVersion));
  return document.get_str(0);
}

void ParseViewGroupList(const NetLink::CRapidJsonProto& reply, std::vector<ViewGroupInfo>& groups) {
  ReadViewGroups(reply, DocumentOrigin::ListReply, groups);
}

}  // namespace

bool CmsViewGroupList::GetCmsViewGroupList(uint32_t clientResourceVersion) {
  static constexpr SessionTexts kTexts = {"QorviViewPlugin::CmsViewGroupList::GetCmsViewGroupList", ""};
  SessionRequest request{"GET", kViewGroupsUrl, WriteViewGroupsRequest(clientResourceVersion)};
  request.isListing = true;
  return RunDataSession(request, kTexts, CascadingText::Kept, m_error,
                        [this](const NetLink::CRapidJsonProto& reply) { ParseViewGroupList(reply, m_vcViewGroups); });
}

bool CmsAddViewGroup::AddCmsViewGroup(const ViewGroupInfo& group) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsAddViewGroup::AddCmsViewGroup");
  const SessionRequest request{"POST", kViewGroupsUrl, WriteViewGroupDocument(group)};
  QORVI_LOG_INFO(kTexts.function, "add plan group data: %s", request.body.c_str());
  return RunDataSession(request, kTexts, CascadingText::Ignored, m_error,
                        [this](const NetLink::CRapidJsonProto& reply) {
                          m_idNew = AsUnsigned(reply.get_int_v("/ResponseStatus/Data/ViewGroup/ID", -1));
                          m_changeNumber = ReadDataNumber(reply);
                        });
}

bool CmsModifyViewGroup::ModifyCmsViewGroup(const ViewGroupInfo& group) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsModifyViewGroup::ModifyCmsViewGroup");
  const SessionRequest request{"PUT", ViewGroupUrl(group.idViewGroup), WriteViewGroupDocument(group)};
  QORVI_LOG_INFO(kTexts.function, "update plan group data: %s", request.body.c_str());
  return RunStatusSession(request, kTexts, m_error, &m_changeNumber);
}

bool CmsDeleteViewGroup::DeleteCmsViewGroup(uint32_t id) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsDeleteViewGroup::DeleteCmsViewGroup", " ");
  return RunStatusSession({"DELETE", ViewGroupUrl(id), ""}, kTexts, m_error, &m_changeNumber);
}

bool CmsOrderViewGroup::OrderCmsViewGroup(const ViewMoveRequest& move) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsOrderViewGroup::OrderCmsViewGroup");
  return RunStatusSession({"PUT", std::string(kViewGroupsUrl) + "/Move", WriteViewGroupMoveRequest(move)}, kTexts,
                          m_error);
}

bool CmsViewConfig::GetDefualtViewConfig(uint32_t& id, uint32_t& type, ErrorCode& error) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsViewConfig::GetDefualtViewConfig");
  return RunConfigSession({"GET", kDefaultConfigUrl, ""}, kTexts, error, [&](const NetLink::CRapidJsonProto& reply) {
    type = AsUnsigned(reply.get_int_v("/ResponseStatus/Data/Config/Type", -1));
    id = AsUnsigned(reply.get_int_v("/ResponseStatus/Data/Config/ID", -1));
  });
}

bool CmsViewConfig::SetDefualtViewConfig(const uint32_t& id, uint32_t type, ErrorCode& error) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsViewConfig::SetDefualtViewConfig");
  NetLink::CRapidJsonProto document;
  document.set_v("/ViewRequest/Type", AsSigned(type));
  document.set_v("/ViewRequest/ID", AsSigned(id));
  return RunConfigSession({"PUT", kDefaultConfigUrl, document.get_str(0)}, kTexts, error, nullptr);
}

std::string WriteViewGroupMoveRequest(const ViewMoveRequest& move) {
  NetLink::CRapidJsonProto document;
  document.set_v("/ViewMoveRequest/Type", 2);
  document.set_v("/ViewMoveRequest/ViewGroupID", AsSigned(move.idTargetGroup));
  document.set_v("/ViewMoveRequest/UserID", AsSigned(move.idUser));
  std::string ids;
  for (unsigned int id : move.vcIDs) ids += UIntToString(id) + ",";
  // Unlike views, groups send the last character alone; of an empty text there is none.
  document.set_v("/ViewMoveRequest/IDs", ids.substr(ids.size() - 1));
  return document.get_str(0);
}

}  // namespace QorviViewPlugin
