// SPDX-License-Identifier: Apache-2.0
// The sessions that list, add, modify, delete and order views on the server. Each object serves one call on one thread;
// m_error holds why a call answered false, m_changeNumber which change the server made of it, 0 where it does not say.
// Listing and ordering exist for programs outside this repository only: the library takes its views from the platform's
// download.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "QorviViewPlugin/ViewDataManager/document/ReplyEnvelope.h"

namespace QorviViewPlugin {

// Views or groups that move to a group, in their new order.
struct ViewMoveRequest {
  unsigned int idTargetGroup = kNoId;
  unsigned int idUser = kNoId;
  std::vector<unsigned int> vcIDs;
};

// Called with each list that was read, so that the manager can note pending checks. Set by the manager's constructor.
using ListedViewsCheck = void (*)(std::span<const ViewInfo> listed);
void SetListedViewsCheck(ListedViewsCheck check);

// Of a session that edits.
struct EditOutcome {
  ErrorCode m_error;
  ChangeNumber m_changeNumber = 0;
};

class CmsViewList {
 public:
  // Appends the server's views to m_vcViews in reply order, and has the cache check them.
  bool GetCmsViewList(uint32_t clientResourceVersion);

  std::vector<ViewInfo> m_vcViews;
  ErrorCode m_error;
};

class CmsAddView : public EditOutcome {
 public:
  // On success m_idNew is the new view's id, or all ones when the reply names none.
  bool AddCmsView(const ViewInfo& view);

  uint32_t m_idNew = kNoId;
};

class CmsModifyView : public EditOutcome {
 public:
  bool ModifyCmsView(const ViewInfo& view);
};

class CmsDeleteView : public EditOutcome {
 public:
  bool DeleteCmsView(uint32_t id);
};

class CmsOrderView {
 public:
  bool OrderCmsView(const ViewMoveRequest& move);

  ErrorCode m_error;
};

// The body of OrderCmsView: the ids joined by ",".
std::string WriteViewMoveRequest(const ViewMoveRequest& move);

}  // namespace QorviViewPlugin
