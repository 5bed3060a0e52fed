// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewSession.h"

#include <atomic>

#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "QorviViewPlugin/ViewDataManager/sessions/SessionFrame.h"

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

void ParseViewList(NetLink::CRapidJsonProto& reply, std::vector<ViewInfo>& views) {
  const size_t first = views.size();
  PathCursor at(reply, "/ResponseStatus/Data/ViewList/");
  const int count = at.Count("View");
  for (int i = 1; i <= count; ++i) {
    const auto level = at.Enter("View", i);
    views.push_back(ReadView(at, DocumentOrigin::ListReply));
  }
  if (const ListedViewsCheck check = s_listedViewsCheck) check(std::span(views).subspan(first));
}

}  // namespace

void SetListedViewsCheck(ListedViewsCheck check) {
  s_listedViewsCheck = check;
}

bool CmsViewList::GetCmsViewList(uint32_t clientResourceVersion) {
  static constexpr SessionTexts kTexts = {
      "QorviViewPlugin::CmsViewList::GetCmsViewList", "[%s][CmsViewList::GetCmsViewList] success[%s(%d)]",
      "[%s][CmsViewList::GetCmsViewList] failed, [MainError: %d],[SubError: %d][%s(%d)]",
      "[%s][CmsViewList::GetCmsViewList] failed, [MainError: %d],[SubError: %d][%s(%d)]",
      "[%s][CmsViewList::GetCmsViewList] failed, strRawData empty[%s(%d)]"};
  SessionRequest request{"GET", kViewsUrl, WriteViewsRequest(clientResourceVersion)};
  request.isListing = true;
  return RunDataSession(request, kTexts, CascadingText::Kept, m_error,
                        [this](NetLink::CRapidJsonProto& reply) { ParseViewList(reply, m_vcViews); });
}

bool CmsAddView::AddCmsView(const ViewInfo& view) {
  static constexpr SessionTexts kTexts = {"QorviViewPlugin::CmsAddView::AddCmsView",
                                          "[%s][CmsAddView::AddCmsView] success[%s(%d)]",
                                          "[%s][CmsAddView::AddCmsView] failed, [MainError: %d],[SubError: %d][%s(%d)]",
                                          "[%s][CmsAddView::AddCmsView] failed, [MainError: %d],[SubError: %d][%s(%d)]",
                                          "[%s][CmsAddView::AddCmsView] failed, strRawData empty[%s(%d)]"};
  SessionRequest request{"POST", kViewsUrl, WriteViewDocument(view)};
  request.marksSubSystemEarly = true;
  return RunDataSession(request, kTexts, CascadingText::Ignored, m_error, [this](NetLink::CRapidJsonProto& reply) {
    m_idNew = AsUnsigned(reply.get_int_v("/ResponseStatus/Data/View/ID", -1));
    m_changeNumber = ReadDataNumber(reply);
  });
}

bool CmsModifyView::ModifyCmsView(const ViewInfo& view) {
  static constexpr SessionTexts kTexts = {
      "QorviViewPlugin::CmsModifyView::ModifyCmsView", "[%s][CmsModifyView::ModifyCmsView] success[%s(%d)]",
      "[%s]failed, [MainError: %d],[SubError: %d][%s(%d)]",
      "[%s][CmsModifyView::ModifyCmsView] failed, [MainError: %d],[SubError: %d][%s(%d)]", nullptr};
  return RunStatusSession({"PUT", ViewUrl(view.idView), WriteViewDocument(view)}, kTexts, m_error,
                          [this](NetLink::CRapidJsonProto& reply) { m_changeNumber = ReadDataNumber(reply); });
}

bool CmsDeleteView::DeleteCmsView(uint32_t id) {
  static constexpr SessionTexts kTexts = {
      "QorviViewPlugin::CmsDeleteView::DeleteCmsView", "[%s][CmsDeleteView::DeleteCmsView] success[%s(%d)]",
      "[%s][CmsDeleteView::DeleteCmsView] failed, [MainError: %d],[SubError: %d][%s(%d)]",
      "[%s][CmsDeleteView::DeleteCmsView] failed, [MainError: %d],[SubError: %d][%s(%d)]", nullptr};
  return RunStatusSession({"DELETE", ViewUrl(id), ""}, kTexts, m_error,
                          [this](NetLink::CRapidJsonProto& reply) { m_changeNumber = ReadDataNumber(reply); });
}

bool CmsOrderView::OrderCmsView(const ViewMoveRequest& move) {
  static constexpr SessionTexts kTexts = {
      "QorviViewPlugin::CmsOrderView::OrderCmsView", "[%s][CmsOrderView::OrderCmsView] success[%s(%d)]",
      "[%s][CmsOrderView::OrderCmsView] failed, [MainError: %d],[SubError: %d][%s(%d)]",
      "[%s][CmsOrderView::OrderCmsView] failed, [MainError: %d],[SubError: %d][%s(%d)]", nullptr};
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
