// SPDX-License-Identifier: Apache-2.0
// The session that shares a view with other users. Each object serves one call on one thread.
#pragma once

#include <string>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/document/ReplyEnvelope.h"

namespace QorviViewPlugin {

class CmsShareView {
 public:
  // A user who could not be given the view. Numbers that the reply does not say are -1.
  struct RefusedUser {
    int id = -1;
    std::string name;
    int errorModule = -1;
    int errorCode = -1;
  };

  // `userIds` are joined by ","; they and the view's id are sent as they stand. Whether the server accepted: false with
  // the reply's status in m_error, or with the transport's record where nothing was answered. A server that accepts may
  // have refused some of the users. The caller logs these and what was not answered, once it has their texts.
  bool ShareCmsView(const std::string& viewId, const std::string& userIds);

  ErrorCode m_error;
  bool m_isAnswered = false;
  std::vector<RefusedUser> m_refusedUsers;
};

}  // namespace QorviViewPlugin
