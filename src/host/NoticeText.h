// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <utility>

#include "host/Notices.h"
#include "host/Plugin.h"
#include "host/ViewTree.h"

namespace host {

// Notices in words, with the names of what they are about. What has gone is called as it was before.
class NoticeText {
 public:
  // REQUIRES: the views are loaded. Throws Failure.
  explicit NoticeText(const Plugin& plugin) : m_plugin(plugin) { Refresh(); }

  // Reads the names anew. To be called before the notices that came together are told.
  void Refresh();
  // "view 110 public/Station/Forecourt: changed", safe to print.
  std::string Line(const Notice& notice) const;

 private:
  using Paths = std::map<std::pair<bool, std::string>, std::string>;  // by whether it is a view, and its id

  static Paths PathsOf(const ViewTree& tree);

  const Plugin& m_plugin;
  Paths m_before, m_now;
};

}  // namespace host
