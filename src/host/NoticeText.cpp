// SPDX-License-Identifier: Apache-2.0
#include "host/NoticeText.h"

#include "host/Names.h"
#include "host/Terminal.h"

namespace host {
namespace {

bool IsOfChild(const Notice& notice) {
  return notice.enum_state == kChildAdded || notice.enum_state == kChildRemoved;
}

}  // namespace

NoticeText::Things NoticeText::ThingsOf(const ViewTree& tree) {
  Things things;
  for (size_t i = 0; i < tree.folders.size(); ++i) {
    const TreeFolder& folder = tree.folders[i];
    things[{false, folder.id}] = {PathText(tree, i), folder.name};
    for (const TreeView& view : folder.views) {
      things[{true, view.id}] = {PathText(tree, {true, view.id, i, view.name}), view.name};
    }
  }
  return things;
}

void NoticeText::Refresh() {
  m_before = std::exchange(m_now, ThingsOf(ReadViewTree(m_plugin)));
  for (const auto& [key, called] : m_now) m_told.emplace(key, called.name);
}

const NoticeText::Called* NoticeText::Find(const Key& key) const {
  for (const Things* things : {&m_now, &m_before}) {
    const auto found = things->find(key);
    if (found != things->end()) return &found->second;
  }
  return nullptr;
}

std::string NoticeText::Event(const Notice& notice, const Key& key) {
  switch (notice.enum_state) {
    case kRenamed:
      return Change(key, notice.name);
    case kChildAdded:
      return "came";
    case kChildRemoved:
      return "went";
    case kChanged: {
      const Called* called = Find(key);
      return called ? Change(key, called->name) : "changed";
    }
    default:
      return "event " + std::to_string(notice.enum_state);
  }
}

std::string NoticeText::Change(const Key& key, const std::string& name) {
  const std::string before = std::exchange(m_told.emplace(key, name).first->second, name);
  if (before == name) return "changed";
  return "renamed, \"" + before + "\" -> \"" + name + "\"";
}

std::string NoticeText::Line(const Notice& notice) {
  const bool isView =
      IsOfChild(notice) ? notice.child_type == ResourceData::ResourceTypeView : notice.enum_state == kChanged;
  const Key key(isView, IsOfChild(notice) ? notice.child_id : notice.id);
  const Called* called = Find(key);
  const std::string path = called ? " " + called->path : "";
  return Printable((isView ? "view " : "group ") + key.second + path + ": " + Event(notice, key));
}

}  // namespace host
