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
  // "view 110 public/Station/Forecourt: changed", safe to print. A new name is told once, beside the one that was told
  // last.
  std::string Line(const Notice& notice);

 private:
  using Key = std::pair<bool, std::string>;  // whether it is a view, and its id
  struct Called {
    std::string path;
    std::string name;
  };
  using Things = std::map<Key, Called>;

  static Things ThingsOf(const ViewTree& tree);
  const Called* Find(const Key& key) const;
  std::string Event(const Notice& notice, const Key& key);
  std::string Change(const Key& key, const std::string& name);

  const Plugin& m_plugin;
  Things m_before, m_now;
  std::map<Key, std::string> m_told;  // the names as they were told last
};

}  // namespace host
