// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewSession.h"

#include <atomic>

#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "QorviViewPlugin/ViewDataManager/sessions/SessionFrame.h"
#include "QorviViewPlugin/base/TextConversion.h"

namespace QorviViewPlugin {
namespace {

std::atomic<ListedViewsCheck> s_listedViewsCheck{nullptr};

constexpr char kViewsUrl[] = "/NXAPI/Vantorel/Platform/V0/Views";

std::string ViewUrl(uint32_t id) {
  return std::string(kViewsUrl) + "/" + UIntToString(id);
}

std::string WriteViewsRequest(uint32_t clientResourceVersion) {
  NetLink::CRapidJsonProto document;
  document.set_v("/ViewsRequest/ClientResourceVersion", AsSigned(clientResourceVersion));
  return document.get_str(0);
}

void ParseViewList(const NetLink::CRapidJsonProto& reply, std::vector<ViewInfo>& views) {
  const size_t first = views.size();
  PathCursor at(reply, "/ResponseStatus/Data/ViewList/");
  ReadEach(at, "View", views, [&at](ViewInfo& view) { view = ReadView(at, DocumentOrigin::ListReply); });
  if (const ListedViewsCheck check = s_listedViewsCheck) check(std::span(views).subspan(first));
}

}  // namespace

void SetListedViewsCheck(ListedViewsCheck check) {
  s_listedViewsCheck = check;
}

bool CmsViewList::GetCmsViewList(uint32_t clientResourceVersion) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsViewList::GetCmsViewList");
  SessionRequest request{"GET", kViewsUrl, WriteViewsRequest(clientResourceVersion)};
  request.isListing = true;
  return RunDataSession(request, kTexts, CascadingText::Kept, m_error,
                        [this](const NetLink::CRapidJsonProto& reply) { ParseViewList(reply, m_vcViews); });
}

bool CmsAddView::AddCmsView(const ViewInfo& view) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsAddView::AddCmsView");
  SessionRequest request{"POST", kViewsUrl, WriteViewDocument(view)};
  request.marksSubSystemEarly = true;
  return RunDataSession(request, kTexts, CascadingText::Ignored, m_error,
                        [this](const NetLink::CRapidJsonProto& reply) {
                          m_idNew = AsUnsigned(reply.get_int_v("/ResponseStatus/Data/View/ID", -1));
                          m_changeNumber = ReadDataNumber(reply);
                        });
}

bool CmsModifyView::ModifyCmsView(const ViewInfo& view) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsModifyView::ModifyCmsView", "");
  return RunStatusSession({"PUT", ViewUrl(view.idView), WriteViewDocument(view)}, kTexts, m_error, &m_changeNumber);
}

bool CmsDeleteView::DeleteCmsView(uint32_t id) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsDeleteView::DeleteCmsView");
  return RunStatusSession({"DELETE", ViewUrl(id), ""}, kTexts, m_error, &m_changeNumber);
}

bool CmsOrderView::OrderCmsView(const ViewMoveRequest& move) {
  static constexpr SessionTexts kTexts = QORVI_SESSION_TEXTS("CmsOrderView::OrderCmsView");
  return RunStatusSession({"PUT", std::string(kViewsUrl) + "/Move", WriteViewMoveRequest(move)}, kTexts, m_error);
}

std::string WriteViewMoveRequest(const ViewMoveRequest& move) {
  NetLink::CRapidJsonProto document;
  document.set_v("/ViewMoveRequest/Type", 1);
  document.set_v("/ViewMoveRequest/ViewGroupID", AsSigned(move.idTargetGroup));
  document.set_v("/ViewMoveRequest/UserID", AsSigned(move.idUser));
  std::string ids;
  for (unsigned int id : move.vcIDs) ids += UIntToString(id) + ",";
  if (!ids.empty()) ids.pop_back();
  document.set_v("/ViewMoveRequest/IDs", ids);
  return document.get_str(0);
}

}  // namespace QorviViewPlugin
