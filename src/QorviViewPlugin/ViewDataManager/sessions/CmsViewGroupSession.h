// SPDX-License-Identifier: Apache-2.0
// The sessions that list, add, modify, delete and order (the server says "move") view groups on the server, and those
// of the client's default view. Each object serves one call on one thread; m_error holds why a call answered false,
// m_changeNumber which change the server made of it, 0 where it does not say. Listing and ordering exist for programs
// outside this repository only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "QorviViewPlugin/ViewDataManager/document/ReplyEnvelope.h"
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewSession.h"

namespace QorviViewPlugin {

class CmsViewGroupList {
 public:
  // Appends the server's groups to m_vcViewGroups in reply order.
  bool GetCmsViewGroupList(uint32_t clientResourceVersion);

  std::vector<ViewGroupInfo> m_vcViewGroups;
  ErrorCode m_error;
};

class CmsAddViewGroup : public EditOutcome {
 public:
  // On success m_idNew is the new group's id, or all ones when the reply names none.
  bool AddCmsViewGroup(const ViewGroupInfo& group);

  uint32_t m_idNew = kNoId;
};

class CmsModifyViewGroup : public EditOutcome {
 public:
  bool ModifyCmsViewGroup(const ViewGroupInfo& group);
};

class CmsDeleteViewGroup : public EditOutcome {
 public:
  bool DeleteCmsViewGroup(uint32_t id);
};

class CmsOrderViewGroup {
 public:
  // Throws std::out_of_range, before anything is sent, when there are no ids.
  bool OrderCmsViewGroup(const ViewMoveRequest& move);

  ErrorCode m_error;
};

// Reading: a reply with a body overwrites the outputs, even when it refuses; a value it lacks becomes all ones. Without
// a body they stay.
class CmsViewConfig {
 public:
  bool GetDefualtViewConfig(uint32_t& id, uint32_t& type, ErrorCode& error);
  bool SetDefualtViewConfig(const uint32_t& id, uint32_t type, ErrorCode& error);
};

// The body of OrderCmsViewGroup. Of the joined ids only the last character is sent, so any list travels as ",".
// Throws std::out_of_range when there are no ids.
std::string WriteViewGroupMoveRequest(const ViewMoveRequest& move);

}  // namespace QorviViewPlugin
